#include <atomic>
#include <string>

#include "src/control/pipe_server.h"
#include "src/host/host_internal.h"
#include "src/host/run_modes.h"
#include "src/runtime/process_state.h"
#include "src/runtime/service_log.h"

namespace vpn {
namespace {

// The handler may run on the dispatcher's thread while the service's own thread reports.
std::atomic<SERVICE_STATUS_HANDLE> g_serviceStatusHandle{nullptr};

constexpr DWORD kStopAndShutdown = SERVICE_ACCEPT_STOP | SERVICE_ACCEPT_SHUTDOWN;

// `waitHint` is in milliseconds. The check point is never used.
void ReportStatus(DWORD state, DWORD acceptedControls, DWORD waitHint) {
  SERVICE_STATUS record = {};
  record.dwServiceType = SERVICE_WIN32_OWN_PROCESS;
  record.dwCurrentState = state;
  record.dwControlsAccepted = acceptedControls;
  record.dwWin32ExitCode = NO_ERROR;
  record.dwWaitHint = waitHint;
  (void)SetServiceStatus(g_serviceStatusHandle.load(), &record);  // nobody else to tell
}

}  // namespace

int RunUnderServiceManager() {
  std::wstring name = kServiceName;  // the table wants it writable
  const SERVICE_TABLE_ENTRYW table[] = {{name.data(), ServiceMain}, {nullptr, nullptr}};
  const BOOL served = StartServiceCtrlDispatcherW(table);
  const DWORD dispatchError = GetLastError();
  if (served != FALSE) {
    return 0;
  }
  return dispatchError == ERROR_FAILED_SERVICE_CONTROLLER_CONNECT ? ConsoleMain() : 1;
}

void WINAPI ServiceMain(DWORD /*argc*/, LPWSTR* /*argv*/) {
  g_serviceStatusHandle.exchange(
      RegisterServiceCtrlHandlerExW(kServiceName, ServiceControlHandler, nullptr));
  if (g_serviceStatusHandle.load() == nullptr) {
    return;
  }
  ReportStatus(SERVICE_START_PENDING, 0, 2000);
  g_stopRequested.exchange(0);
  WriteLog(L"service running. runtime=" + g_runtimeDir);
  ReportStatus(SERVICE_RUNNING, kStopAndShutdown, 0);
  ServeControlPipe();
  WriteLog(L"service stopped");
  ReportStatus(SERVICE_STOPPED, kStopAndShutdown, 0);
}

DWORD WINAPI ServiceControlHandler(DWORD control, DWORD /*eventType*/, void* /*eventData*/,
                                   void* /*context*/) {
  if (control == SERVICE_CONTROL_STOP || control == SERVICE_CONTROL_SHUTDOWN) {
    if (g_serviceStatusHandle.load() != nullptr) {
      ReportStatus(SERVICE_STOP_PENDING, kStopAndShutdown, 4000);
    }
    WakeControlPipe();
  }
  return NO_ERROR;
}

}  // namespace vpn
