#include "src/net/command.h"

namespace vpn {
namespace {

constexpr DWORD kKillWait = 1000;  // milliseconds

}  // namespace

bool HiddenProcess::create(const wchar_t* application, const std::wstring& commandLine,
                           DWORD creationFlags, const wchar_t* workingDirectory, DWORD& error) {
  std::wstring writableLine = commandLine;  // the platform may write into it
  STARTUPINFOW startup = {};
  startup.cb = sizeof(startup);
  startup.dwFlags = STARTF_USESHOWWINDOW;
  startup.wShowWindow = SW_HIDE;
  PROCESS_INFORMATION information = {};
  if (CreateProcessW(application, writableLine.data(), nullptr, nullptr, FALSE, creationFlags,
                     nullptr, workingDirectory, &startup, &information) == FALSE) {
    error = GetLastError();
    return false;
  }
  process.reset(information.hProcess);
  thread.reset(information.hThread);
  return true;
}

bool RunCommand(const std::wstring& commandLine, std::wstring& error, DWORD budget) {
  HiddenProcess child;
  DWORD createError = 0;
  if (!child.create(nullptr, commandLine, CREATE_NO_WINDOW, nullptr, createError)) {
    error = L"CreateProcess failed for: " + commandLine + L" err=" + std::to_wstring(createError);
    return false;
  }
  if (WaitForSingleObject(child.process.get(), budget) != WAIT_OBJECT_0) {
    (void)TerminateProcess(child.process.get(), 1);
    (void)WaitForSingleObject(child.process.get(), kKillWait);
    error = L"command timed out: " + commandLine;
    return false;
  }
  DWORD exitCode = 1;
  (void)GetExitCodeProcess(child.process.get(), &exitCode);  // unread, it stays a failure
  if (exitCode == 0) {
    return true;
  }
  error = L"command exit " + std::to_wstring(exitCode) + L": " + commandLine;
  return false;
}

void RunCommandQuiet(const std::wstring& commandLine, DWORD budget) {
  std::wstring ignored;
  (void)RunCommand(commandLine, ignored, budget);
}

}  // namespace vpn
