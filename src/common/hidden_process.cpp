#include "src/common/hidden_process.h"

namespace vpn {

bool HiddenProcess::create(const wchar_t* application, std::wstring commandLine,
                           DWORD creationFlags, const wchar_t* workingDirectory) {
  STARTUPINFOW startup = {};
  startup.cb = sizeof(startup);
  startup.dwFlags = STARTF_USESHOWWINDOW;
  startup.wShowWindow = SW_HIDE;
  PROCESS_INFORMATION information = {};
  // The command line is a copy, since the platform may write into it.
  if (CreateProcessW(application, commandLine.data(), nullptr, nullptr, FALSE, creationFlags,
                     nullptr, workingDirectory, &startup, &information) == FALSE) {
    return false;
  }
  process.reset(information.hProcess);
  thread.reset(information.hThread);
  return true;
}

bool IsProcessRunning(HANDLE process) {
  return process != nullptr && WaitForSingleObject(process, 0) == WAIT_TIMEOUT;
}

}  // namespace vpn
