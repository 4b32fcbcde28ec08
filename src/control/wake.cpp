#include "src/control/wake.h"

#include <windows.h>

#include "src/common/unique_handle.h"
#include "src/control/pipe_server.h"
#include "src/runtime/process_state.h"

namespace vpn {

void WakeControlPipe() {
  g_stopRequested.exchange(1);
  const KernelHandle client(CreateFileW(kControlPipeName, GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                                        OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
}

}  // namespace vpn
