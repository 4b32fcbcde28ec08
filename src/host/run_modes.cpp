#include "src/host/run_modes.h"

#include <string>

#include "src/common/unique_handle.h"
#include "src/control/pipe_server.h"
#include "src/host/host_internal.h"
#include "src/runtime/console_text.h"
#include "src/runtime/process_state.h"
#include "src/runtime/service_log.h"

namespace vpn {

int ConsoleMain() {
  UseUtf8Console();
  (void)SetConsoleCtrlHandler(ConsoleControlHandler, TRUE);  // without it, `shutdown` still works
  g_consoleEcho.exchange(1);
  g_stopRequested.exchange(0);
  g_shutdownAllowed.exchange(1);
  WriteLog(std::wstring(L"TavrinService console mode. Pipe ") + kControlPipeName);
  WriteLog(L"Runtime " + g_runtimeDir);
  WriteLog(L"Ctrl+C to stop.");
  ServeControlPipe();
  WriteLog(L"stopped.");
  return 0;
}

int DaemonMain() {
  g_consoleEcho.exchange(0);
  g_stopRequested.exchange(0);
  g_shutdownAllowed.exchange(1);
  (void)FreeConsole();  // there may be none
  WriteLog(L"daemon mode. runtime=" + g_runtimeDir);
  if (g_ownerPid != 0) {
    // A watch that can't be started leaves a daemon without an owner, which is accepted.
    const KernelHandle watch(CreateThread(nullptr, 0, OwnerWatch, nullptr, 0, nullptr));
  }
  ServeControlPipe();
  WriteLog(L"daemon stopped");
  return 0;
}

BOOL WINAPI ConsoleControlHandler(DWORD event) {
  if (event == CTRL_C_EVENT || event == CTRL_BREAK_EVENT || event == CTRL_CLOSE_EVENT) {
    WakeControlPipe();
    return TRUE;
  }
  return FALSE;
}

}  // namespace vpn
