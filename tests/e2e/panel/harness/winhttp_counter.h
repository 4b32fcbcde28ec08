// Counts the WinHTTP handles that this program opens and closes, by standing in the import table
// between the program and the platform.
#ifndef TAVRIN_TESTS_E2E_PANEL_HARNESS_WINHTTP_COUNTER_H_
#define TAVRIN_TESTS_E2E_PANEL_HARNESS_WINHTTP_COUNTER_H_

namespace e2e {

struct WinHttpCounts {
  int sessions = 0;  // opened since the program has started
  int connections = 0;
  int requests = 0;
  int closed = 0;  // of all kinds
};

// Counts from here on. `openDelayMs` slows every opening of a session down, so that two that begin
// at once overlap.
void CountWinHttpHandles(unsigned long openDelayMs);
WinHttpCounts CountedWinHttpHandles();

// The handles of this process in the platform's own books, of every kind.
int CountProcessHandles();

}  // namespace e2e

#endif  // TAVRIN_TESTS_E2E_PANEL_HARNESS_WINHTTP_COUNTER_H_
