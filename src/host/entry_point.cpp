// One executable is a service, a hidden daemon, a console program and its own installer; the
// command line decides which.
#include "src/host/entry_point.h"

#include "src/host/options.h"
#include "src/host/run_modes.h"
#include "src/host/service_install.h"
#include "src/runtime/console_text.h"
#include "src/runtime/process_state.h"
#include "src/runtime/runtime_dir.h"

namespace vpn {
namespace {

int Run(int argc, const wchar_t* const* argv) {
  UseUtf8Console();
  const Options options = ParseOptions(argc, argv);
  g_ownerPid = options.ownerPid;
  SetRuntimeDir(options.runtimeDir ? *options.runtimeDir : FindRuntimeDir());
  if (options.install) {
    return InstallService();
  }
  if (options.uninstall) {
    return UninstallService();
  }
  if (options.daemon) {
    return DaemonMain();
  }
  if (options.console) {
    return ConsoleMain();
  }
  return RunUnderServiceManager();
}

}  // namespace
}  // namespace vpn

int wmain(int argc, wchar_t** argv) {
  return vpn::Run(argc, argv);
}
