// Short-lived external commands, and the hidden child processes that they and the helpers are.
#ifndef TAVRIN_SRC_NET_COMMAND_H_
#define TAVRIN_SRC_NET_COMMAND_H_

#include <windows.h>

#include <string>

#include "src/common/unique_handle.h"

namespace vpn {

// A child without a window, that inherits the environment and no handles. Closes the thread's
// handle before the process's.
struct HiddenProcess {
  // `application` null: the first word of the command line is looked up by the platform's search
  // rules. `workingDirectory` null: this process's own. False with the platform's code in `error`.
  bool create(const wchar_t* application, const std::wstring& commandLine, DWORD creationFlags,
              const wchar_t* workingDirectory, DWORD& error);

  KernelHandle process;
  KernelHandle thread;
};

// True when the command ended by itself within `budget` milliseconds with exit code 0; one that
// outlives the budget is ended. No shell is involved and no output captured. `error` is set on
// failure only. Blocks for up to the budget and a second.
bool RunCommand(const std::wstring& commandLine, std::wstring& error, DWORD budget);

// For what is best effort.
void RunCommandQuiet(const std::wstring& commandLine, DWORD budget);

}  // namespace vpn

#endif  // TAVRIN_SRC_NET_COMMAND_H_
