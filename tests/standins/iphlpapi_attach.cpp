// The service manager starts a process with an environment of its own. There the machine's
// directory is read from a file beside this library, and handed to the process and its children.
#include <windows.h>

#include "tests/standins/files.h"
#include "tests/standins/shared_machine.h"
#include "tests/standins/text.h"

namespace standins {
namespace {

std::wstring NeighbourOf(HINSTANCE library, const wchar_t* name) {
  wchar_t buffer[MAX_PATH] = {};
  const std::wstring path(buffer, GetModuleFileNameW(library, buffer, MAX_PATH));
  return path.substr(0, path.find_last_of(L"\\/") + 1) + name;
}

void AdoptMachine(HINSTANCE library) {
  if (!MachineDirectoryFromEnvironment().empty()) return;
  const auto directory = ReadWholeFile(NeighbourOf(library, kMachineFile));
  if (directory) SetEnvironmentVariableW(kMachineVariable, ToWide(*directory).c_str());
}

}  // namespace
}  // namespace standins

BOOL WINAPI DllMain(HINSTANCE self, DWORD reason, LPVOID /*reserved*/) {
  if (reason == DLL_PROCESS_ATTACH) standins::AdoptMachine(self);
  return TRUE;
}
