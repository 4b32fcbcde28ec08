// Short-lived external commands.
#ifndef TAVRIN_SRC_NET_COMMAND_H_
#define TAVRIN_SRC_NET_COMMAND_H_

#include <windows.h>

#include <string>

#include "src/common/status.h"

namespace vpn {

// For what is best effort.
void RunCommandQuiet(const std::wstring& commandLine, DWORD budget);

}  // namespace vpn

#endif  // TAVRIN_SRC_NET_COMMAND_H_
