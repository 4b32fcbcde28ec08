// The console's cursor, which blinks about while a line moves.
#ifndef TAVRIN_CLIENT_CONSOLE_CURSOR_H_
#define TAVRIN_CLIENT_CONSOLE_CURSOR_H_

#include <windows.h>

namespace vpn {

// Remembers how it was. Does nothing while it is hidden already.
void HideCursor(HANDLE console);

// As it was; nothing when it has not been hidden. From any thread. True when it was hidden: then
// the line that moved still stands there.
bool RestoreCursor();

}  // namespace vpn

#endif  // TAVRIN_CLIENT_CONSOLE_CURSOR_H_
