// The keyboard of another process's console.
#ifndef TAVRIN_TESTS_E2E_HARNESS_CONSOLE_EVENTS_H_
#define TAVRIN_TESTS_E2E_HARNESS_CONSOLE_EVENTS_H_

#include <windows.h>

namespace e2e {

// As if somebody pressed Ctrl+C in the console of this process. Throws std::runtime_error when the
// process has none. This program's own console, if it had one, is gone afterwards.
void PressCtrlC(DWORD processId);

}  // namespace e2e

#endif  // TAVRIN_TESTS_E2E_HARNESS_CONSOLE_EVENTS_H_
