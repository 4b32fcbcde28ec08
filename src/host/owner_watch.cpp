// Ties the daemon to the process that started it.
#include "src/common/number_text.h"
#include "src/host/host_internal.h"

#include <string>

#include "src/common/unique_handle.h"
#include "src/control/pipe_server.h"
#include "src/runtime/process_state.h"
#include "src/runtime/service_log.h"

namespace vpn {

DWORD WINAPI OwnerWatch(void* /*unused*/) {
  if (g_ownerPid == 0) {
    return 0;
  }
  KernelHandle owner(OpenProcess(SYNCHRONIZE, FALSE, g_ownerPid));
  const DWORD openError = GetLastError();
  if (!owner) {
    WriteLog(L"owner pid open failed err=" + DecimalText(openError));
    return 0;
  }
  (void)WaitForSingleObject(owner.get(), INFINITE);  // whatever ends the wait ends the process
  owner.reset();
  WriteLog(L"ui process exited; stopping helper");
  WakeControlPipe();
  return 0;
}

}  // namespace vpn
