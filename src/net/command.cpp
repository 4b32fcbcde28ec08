#include "src/net/command.h"

#include "src/common/hidden_process.h"
#include "src/common/number_text.h"

namespace vpn {

constexpr DWORD kKillWait = 1000;  // milliseconds

Status RunCommand(const std::wstring& commandLine, DWORD budget) {
  HiddenProcess child;
  if (!child.create(nullptr, commandLine, CREATE_NO_WINDOW, nullptr)) {
    const DWORD createError = GetLastError();
    return Status::failure(L"CreateProcess failed for: " + commandLine + L" err=" +
                           DecimalText(createError));
  }
  if (WaitForSingleObject(child.process.get(), budget) != WAIT_OBJECT_0) {
    (void)TerminateProcess(child.process.get(), 1);
    (void)WaitForSingleObject(child.process.get(), kKillWait);
    return Status::failure(L"command timed out: " + commandLine);
  }
  DWORD exitCode = 1;
  (void)GetExitCodeProcess(child.process.get(), &exitCode);  // unread, it stays a failure
  if (exitCode != 0) {
    return Status::failure(L"command exit " + DecimalText(exitCode) + L": " + commandLine);
  }
  return Status::success();
}

}  // namespace vpn
