#include "src/host/service_install.h"

#include <cstdio>
#include <optional>
#include <string>

#include "src/common/environment.h"
#include "src/common/number_text.h"
#include "src/common/unique_handle.h"
#include "src/host/host_internal.h"
#include "src/host/run_modes.h"
#include "src/runtime/console_text.h"
#include "src/runtime/process_state.h"

namespace vpn {
namespace {

struct ServiceHandleTraits : NullIsEmpty<SC_HANDLE> {
  static void close(SC_HANDLE value) { (void)CloseServiceHandle(value); }
};
using ServiceHandle = UniqueHandle<ServiceHandleTraits>;

int Fail(const wchar_t* text, DWORD error, const wchar_t* ending) {
  WriteConsoleText(stderr, text + DecimalText(error) + ending);
  return 1;
}

std::wstring ServiceCommandLine() {
  return L"\"" + ModulePath() + L"\" --runtime \"" + g_runtimeDir + L"\"";
}

// The result of the deletion; nothing when the service does not exist or can't be opened. A service
// that hangs on its stop is deleted all the same, and goes when its process does.
std::optional<DWORD> StopAndDeleteService(SC_HANDLE manager) {
  const ServiceHandle service(
      OpenServiceW(manager, kServiceName, DELETE | SERVICE_STOP | SERVICE_QUERY_STATUS));
  if (!service) {
    return std::nullopt;
  }
  (void)StopServiceAndWait(service.get());
  return DeleteService(service.get()) == FALSE ? GetLastError() : NO_ERROR;
}

void DescribeService(SC_HANDLE service) {
  std::wstring text = L"Tavrin数据通道：Xray + tun2socks。界面通过命名管道连接。";
  SERVICE_DESCRIPTIONW description = {text.data()};
  (void)ChangeServiceConfig2W(service, SERVICE_CONFIG_DESCRIPTION,
                              &description);  // it works without one
}

}  // namespace

DWORD StopServiceAndWait(SC_HANDLE service) {
  SERVICE_STATUS status = {};
  (void)ControlService(service, SERVICE_CONTROL_STOP, &status);  // it may have stopped already
  for (int attempt = 0; attempt < 40; ++attempt) {
    const BOOL queried = QueryServiceStatus(service, &status);
    const DWORD queryError = GetLastError();
    if (queried == FALSE) {
      return queryError;
    }
    if (status.dwCurrentState == SERVICE_STOPPED) {
      return 0;
    }
    Sleep(250);
  }
  return ERROR_TIMEOUT;
}

int InstallService() {
  const std::wstring commandLine = ServiceCommandLine();
  const ServiceHandle manager(OpenSCManagerW(nullptr, nullptr, SC_MANAGER_CREATE_SERVICE));
  const DWORD managerError = GetLastError();
  if (!manager) {
    return Fail(L"OpenSCManager failed err=", managerError, L" (need Administrator)\n");
  }
  if (StopAndDeleteService(manager.get())) {
    Sleep(400);  // the name is free only after the manager has dropped the old entry
  }
  const ServiceHandle service(
      CreateServiceW(manager.get(), kServiceName, L"Tavrin连接服务", SERVICE_ALL_ACCESS,
                     SERVICE_WIN32_OWN_PROCESS, SERVICE_AUTO_START, SERVICE_ERROR_NORMAL,
                     commandLine.c_str(), nullptr, nullptr, nullptr, nullptr, nullptr));
  const DWORD createError = GetLastError();
  if (!service) {
    return Fail(L"CreateService failed err=", createError, L"\n");
  }
  DescribeService(service.get());
  const BOOL started = StartServiceW(service.get(), 0, nullptr);
  const DWORD startError = GetLastError();
  if (started == FALSE && startError != ERROR_SERVICE_ALREADY_RUNNING) {
    return Fail(L"StartService failed err=", startError, L"\n");
  }
  WriteConsoleText(stdout, std::wstring(L"Installed and started ") + kServiceName + L"\nbinPath " +
                               commandLine + L"\n");
  return 0;
}

int UninstallService() {
  const ServiceHandle manager(OpenSCManagerW(nullptr, nullptr, SC_MANAGER_CONNECT));
  const DWORD managerError = GetLastError();
  if (!manager) {
    return Fail(L"OpenSCManager failed err=", managerError, L" (need Administrator)\n");
  }
  const std::optional<DWORD> deleted = StopAndDeleteService(manager.get());
  if (!deleted) {
    WriteConsoleText(stdout, L"Service not installed.\n");
    return 0;
  }
  if (*deleted != NO_ERROR) {
    return Fail(L"DeleteService failed err=", *deleted, L"\n");
  }
  WriteConsoleText(stdout, std::wstring(L"Uninstalled ") + kServiceName + L"\n");
  return 0;
}

}  // namespace vpn
