// Stand-in for netsh.exe: carries its command line out on the shared machine.
#include <windows.h>

#include "tests/standins/helper_process.h"
#include "tests/standins/shared_machine.h"
#include "tests/standins/text.h"

namespace standins {
namespace {

bool Hangs(const NetshBehaviour& behaviour, const std::string& line) {
  return !behaviour.hangsOn.empty() && line.find(behaviour.hangsOn) != std::string::npos;
}

int Run(const std::string& line) {
  const NetshBehaviour behaviour = LogOwnStart().netsh;
  if (Hangs(behaviour, line)) SleepFor(kNever);
  if (behaviour.exitCode != 0) return static_cast<int>(behaviour.exitCode);
  return static_cast<int>(SharedMachine().state().network.RunNetsh(line));
}

}  // namespace
}  // namespace standins

int wmain() {
  return standins::Run(standins::ToUtf8(GetCommandLineW()));
}
