// An empty program that stays, so that its memory can be looked at.
#include <windows.h>

int wmain() {
  Sleep(INFINITE);
  return 0;
}
