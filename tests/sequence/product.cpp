// Compiled twice: see tests/sequence/CMakeLists.txt.
#include "tests/sequence/product.h"

#include <windows.h>

#include "src/host/host_internal.h"
#include "src/host/run_modes.h"
#include "src/runtime/process_state.h"
#include "tests/fault/process.h"

namespace sequence {
namespace {

void Begin(std::uint32_t ownerId) {
  fault::BeginProcess();
  vpn::g_ownerPid = ownerId;
  vpn::g_consoleEcho = 0;
  vpn::g_shutdownAllowed = 0;
}

void Run(Mode mode) {
  switch (mode) {
    case Mode::kService:
      (void)vpn::RunUnderServiceManager();
      break;
    case Mode::kConsole:
      (void)vpn::ConsoleMain();
      break;
    case Mode::kDaemon:
      (void)vpn::DaemonMain();
      break;
  }
}

void PressCtrlC() {
  (void)vpn::ConsoleControlHandler(CTRL_C_EVENT);
}

}  // namespace

Product TAVRIN_PRODUCT() {
  return {Begin, Run, fault::EndProcess, PressCtrlC};
}

}  // namespace sequence
