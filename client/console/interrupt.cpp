#include "client/console/interrupt.h"

#include <windows.h>

#include <atomic>

namespace vpn {
namespace {

// Set on the thread that the console makes for the event.
std::atomic<bool> g_interrupted{false};

BOOL WINAPI NoteInterrupt(DWORD event) {
  const bool isInterrupt = event == CTRL_C_EVENT || event == CTRL_BREAK_EVENT;
  return isInterrupt && !g_interrupted.exchange(true) ? TRUE : FALSE;
}

}  // namespace

InterruptWatch::InterruptWatch() {
  g_interrupted = false;
  (void)SetConsoleCtrlHandler(NoteInterrupt, TRUE);  // without it, Ctrl+C just ends the program
}

InterruptWatch::~InterruptWatch() {
  (void)SetConsoleCtrlHandler(NoteInterrupt, FALSE);
}

// What is noted belongs to the program, but counts only while somebody watches.
// NOLINTNEXTLINE(readability-convert-member-functions-to-static)
bool InterruptWatch::wasInterrupted() const {
  return g_interrupted.load();
}

}  // namespace vpn
