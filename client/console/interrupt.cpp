#include "client/console/interrupt.h"

#include <windows.h>

#include <atomic>

#include "client/console/cursor.h"
#include "client/exit_codes.h"

namespace vpn {
namespace {

// Read and set on the thread that the console makes for the event.
std::atomic<int> g_watches{0};
std::atomic<bool> g_interrupted{false};

void LeaveConsole() {
  if (RestoreCursor()) {
    DWORD written = 0;
    // Whoever writes next begins behind the line that moved.
    (void)WriteConsoleW(GetStdHandle(STD_ERROR_HANDLE), L"\n", 1, &written, nullptr);
  }
}

BOOL WINAPI HandleEvent(DWORD event) {
  if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT) {
    LeaveConsole();
    return FALSE;  // the platform ends the program
  }
  if (g_watches > 0 && !g_interrupted.exchange(true)) {
    return TRUE;
  }
  LeaveConsole();
  ExitProcess(kExitInterrupted);
}

}  // namespace

InterruptGuard::InterruptGuard() {
  g_watches = 0;
  // Without it, Ctrl+C ends the program all the same, with the platform's own exit code.
  (void)SetConsoleCtrlHandler(HandleEvent, TRUE);
}

InterruptGuard::~InterruptGuard() {
  (void)SetConsoleCtrlHandler(HandleEvent, FALSE);
}

InterruptWatch::InterruptWatch() {
  if (g_watches == 0) {
    g_interrupted = false;
  }
  ++g_watches;
}

InterruptWatch::~InterruptWatch() {
  --g_watches;
}

// What is noted belongs to the program, but counts only while somebody watches.
// NOLINTNEXTLINE(readability-convert-member-functions-to-static)
bool InterruptWatch::wasInterrupted() const {
  return g_interrupted.load();
}

}  // namespace vpn
