#ifndef TAVRIN_SRC_COMMON_HIDDEN_PROCESS_H_
#define TAVRIN_SRC_COMMON_HIDDEN_PROCESS_H_

#include <windows.h>

#include <string>

#include "src/common/unique_handle.h"

namespace vpn {

// A child without a window, that inherits the environment and no handles. Closes the thread's
// handle before the process's.
struct HiddenProcess {
  // `application` null: the first word of the command line is looked up by the platform's search
  // rules. `workingDirectory` null: this process's own. False with the platform's last error.
  bool create(const wchar_t* application, std::wstring commandLine, DWORD creationFlags,
              const wchar_t* workingDirectory);

  KernelHandle process;
  KernelHandle thread;
};

// False for null.
bool IsProcessRunning(HANDLE process);

}  // namespace vpn

#endif  // TAVRIN_SRC_COMMON_HIDDEN_PROCESS_H_
