// Short-lived external commands.
#ifndef TAVRIN_SRC_NET_COMMAND_H_
#define TAVRIN_SRC_NET_COMMAND_H_

#include <windows.h>

#include <string>

#include "src/common/status.h"

namespace vpn {

// A success when the command ended by itself within `budget` milliseconds with exit code 0; one
// that outlives the budget is ended. No shell is involved and no output captured. Blocks for up to
// the budget and a second.
Status RunCommand(const std::wstring& commandLine, DWORD budget);

}  // namespace vpn

#endif  // TAVRIN_SRC_NET_COMMAND_H_
