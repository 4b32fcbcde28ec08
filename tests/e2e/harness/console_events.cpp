#include "tests/e2e/harness/console_events.h"

#include <stdexcept>
#include <string>

namespace e2e {
namespace {

// The event reaches every process at that console, and so this one.
BOOL WINAPI Survive(DWORD /*event*/) {
  return TRUE;
}

}  // namespace

void PressCtrlC(DWORD processId) {
  FreeConsole();
  if (AttachConsole(processId) == 0) {
    throw std::runtime_error("no console to attach to err=" + std::to_string(GetLastError()));
  }
  SetConsoleCtrlHandler(Survive, TRUE);
  const bool sent = GenerateConsoleCtrlEvent(CTRL_C_EVENT, 0) != 0;
  const DWORD code = GetLastError();
  FreeConsole();
  if (!sent) throw std::runtime_error("no Ctrl+C err=" + std::to_string(code));
}

}  // namespace e2e
