// Windows, and the service on it.
#include <windows.h>

#include "client/doctor/checks.h"
#include "client/text/amounts.h"

namespace vpn {
namespace {

// Windows 10 2004 brought the call that sets name servers.
constexpr DWORD kLeastBuild = 19041;

constexpr wchar_t kRestart[] =
    L"try again in a minute; if it stays so, restart the service, or end the process "
    L"TavrinService.exe";

std::wstring HowItRuns(const Patient& patient) {
  return patient.installed.state == SERVICE_RUNNING ? L"running as a Windows service"
                                                    : L"running in a console or as a daemon";
}

// Nothing stands behind the pipe.
Finding TellAbsence(const InstalledService& installed) {
  if (!installed.isReadable) {
    return Problem(L"not running, and the service manager tells nothing about it",
                   L"run this with administrator's rights");
  }
  return installed.isInstalled
             ? Problem(L"installed, but not running",
                       L"run \"sc start TavrinService\" with administrator's rights")
             : Problem(L"not installed and not running",
                       L"run TavrinService.exe --install with administrator's rights");
}

}  // namespace

Finding CheckWindows(const Patient& /*patient*/) {
  OSVERSIONINFOW version = {};
  version.dwOSVersionInfoSize = sizeof(version);
  if (GetVersionExW(&version) == FALSE) {
    return Remark(L"the version can't be read", L"use Windows 10 2004 or newer");
  }
  const std::wstring text = L"version " + std::to_wstring(version.dwMajorVersion) + L"." +
                            std::to_wstring(version.dwMinorVersion) + L", build " +
                            std::to_wstring(version.dwBuildNumber);
  if (version.dwMajorVersion < 10 || version.dwBuildNumber < kLeastBuild) {
    return Problem(text, L"update Windows to version 10 2004 (build 19041) or newer");
  }
  return Good(text);
}

Finding CheckService(const Patient& patient) {
  switch (patient.end) {
    case ExchangeEnd::kReplied:
      return Good(HowItRuns(patient) + L", answers in " + MillisecondsText(patient.answerTime) +
                  L", " + patient.place.runtimeDir);
    case ExchangeEnd::kBusy:
      return Remark(L"busy with another client", L"wait until its connect is over, then try again");
    case ExchangeEnd::kNoPipe:
      return Problem(L"running without a pipe: it starts, or it hangs", kRestart);
    case ExchangeEnd::kTimedOut:
      return Problem(L"takes a request and does not answer", kRestart);
    case ExchangeEnd::kHalfReply:
      return Problem(L"its reply broke off in the middle", kRestart);
    case ExchangeEnd::kRefused:
      return Problem(L"its pipe may not be opened by this user",
                     L"sign in to Windows with an account of this machine");
    case ExchangeEnd::kBroken:
      return Problem(L"something answers on its pipe that is not the service",
                     L"end the program that holds the pipe TavrinService, or restart the service");
    default:
      return TellAbsence(patient.installed);
  }
}

}  // namespace vpn
