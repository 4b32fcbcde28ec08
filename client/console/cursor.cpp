#include "client/console/cursor.h"

#include "src/common/mutex.h"

namespace vpn {
namespace {

Mutex g_cursorLock;  // against the thread on which Ctrl+C arrives; a leaf
HANDLE g_hiddenOn VPN_GUARDED_BY(g_cursorLock) = nullptr;
CONSOLE_CURSOR_INFO g_before VPN_GUARDED_BY(g_cursorLock) = {};

}  // namespace

void HideCursor(HANDLE console) {
  const MutexLock lock(g_cursorLock);
  CONSOLE_CURSOR_INFO before = {};
  if (g_hiddenOn != nullptr || GetConsoleCursorInfo(console, &before) == FALSE) {
    return;
  }
  const CONSOLE_CURSOR_INFO hidden = {before.dwSize, FALSE};
  if (SetConsoleCursorInfo(console, &hidden) != FALSE) {
    g_before = before;
    g_hiddenOn = console;
  }
}

bool RestoreCursor() {
  const MutexLock lock(g_cursorLock);
  if (g_hiddenOn == nullptr) {
    return false;
  }
  (void)SetConsoleCursorInfo(g_hiddenOn, &g_before);  // nothing else could be done about it
  g_hiddenOn = nullptr;
  return true;
}

}  // namespace vpn
