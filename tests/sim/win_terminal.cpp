// Standard handles, and the calls of a console's screen.
#include "tests/sim/call.h"
#include "tests/sim/text.h"

#include <windows.h>

using sim::Arg;
using sim::Call;

namespace {

// False with the last error set when the handle is none of a console.
bool IsConsole(const Call& call, HANDLE console) {
  if (!call->console.isTerminal || !sim::Console::IsStandard(console)) {
    return call.Fail(false, ERROR_INVALID_HANDLE);
  }
  return true;
}

// The same for the handle of a keyboard.
bool IsKeyboard(const Call& call, HANDLE console) {
  if (!call->console.hasKeyboard || console != sim::Console::InputHandle()) {
    return call.Fail(false, ERROR_INVALID_HANDLE);
  }
  return true;
}

}  // namespace

HANDLE GetStdHandle(DWORD which) {
  Call call("GetStdHandle", {static_cast<int>(which)});
  if (call.failed()) {
    return call.Fail(INVALID_HANDLE_VALUE);
  }
  if (which == STD_INPUT_HANDLE) {
    return sim::Console::InputHandle();
  }
  return which == STD_OUTPUT_HANDLE ? sim::Console::OutputHandle() : sim::Console::ErrorHandle();
}

BOOL GetConsoleMode(HANDLE console, DWORD* mode) {
  Call call("GetConsoleMode");
  if (call.failed()) {
    return call.Fail(FALSE);
  }
  if (console == sim::Console::InputHandle()) {
    *mode = call->console.inputMode;
    return IsKeyboard(call, console) ? TRUE : FALSE;
  }
  *mode = 3;
  return IsConsole(call, console) ? TRUE : FALSE;
}

// Of a keyboard; the mode of a screen is not modelled.
BOOL SetConsoleMode(HANDLE console, DWORD mode) {
  Call call("SetConsoleMode", {mode});
  if (call.failed()) {
    return call.Fail(FALSE);
  }
  if (!IsKeyboard(call, console)) {
    return FALSE;
  }
  call->console.inputMode = mode;
  return TRUE;
}

BOOL GetConsoleScreenBufferInfo(HANDLE console, CONSOLE_SCREEN_BUFFER_INFO* info) {
  Call call("GetConsoleScreenBufferInfo");
  if (call.failed()) {
    return call.Fail(FALSE);
  }
  if (!IsConsole(call, console)) {
    return FALSE;
  }
  *info = {};
  info->wAttributes = call->console.terminal.attributes;
  info->srWindow.Right = static_cast<SHORT>(call->console.terminal.columns - 1);
  return TRUE;
}

BOOL SetConsoleTextAttribute(HANDLE console, WORD attributes) {
  Call call("SetConsoleTextAttribute", {static_cast<int>(attributes)});
  if (call.failed()) {
    return call.Fail(FALSE);
  }
  if (!IsConsole(call, console)) {
    return FALSE;
  }
  call->console.terminal.attributes = attributes;
  return TRUE;
}

BOOL GetConsoleCursorInfo(HANDLE console, CONSOLE_CURSOR_INFO* info) {
  Call call("GetConsoleCursorInfo");
  if (call.failed()) {
    return call.Fail(FALSE);
  }
  if (!IsConsole(call, console)) {
    return FALSE;
  }
  *info = {call->console.terminal.cursorSize, call->console.terminal.cursorVisible ? TRUE : FALSE};
  return TRUE;
}

BOOL SetConsoleCursorInfo(HANDLE console, const CONSOLE_CURSOR_INFO* info) {
  Call call("SetConsoleCursorInfo", {info->bVisible});
  if (call.failed()) {
    return call.Fail(FALSE);
  }
  if (!IsConsole(call, console)) {
    return FALSE;
  }
  call->console.terminal.cursorVisible = info->bVisible != FALSE;
  call->console.terminal.cursorSize = info->dwSize;
  return TRUE;
}

BOOL WriteConsoleW(HANDLE console, LPCVOID text, DWORD count, DWORD* written, LPVOID /*reserved*/) {
  Call call("WriteConsoleW", {count});
  if (call.failed()) {
    return call.Fail(FALSE);
  }
  if (!IsConsole(call, console)) {
    return FALSE;
  }
  call->console.terminal.Write(std::wstring(static_cast<const wchar_t*>(text), count));
  *written = count;
  return TRUE;
}

// Whole lines only. At Ctrl+C nothing has been read, and the last error says why; a person who has
// nothing more to type ends the input.
BOOL ReadConsoleW(HANDLE console, LPVOID text, DWORD count, DWORD* read, LPVOID /*control*/) {
  Call call("ReadConsoleW", {count});
  *read = 0;
  if (call.failed()) {
    return call.Fail(FALSE);
  }
  if (!IsKeyboard(call, console)) {
    return FALSE;
  }
  sim::Console& keyboard = call->console;
  if (keyboard.typed.empty()) {
    return TRUE;
  }
  const std::wstring line = sim::Units(keyboard.typed.front());
  keyboard.typed.pop_front();
  if (line == L"\x03") {
    keyboard.Send(CTRL_C_EVENT);
    return call.Fail(TRUE, ERROR_OPERATION_ABORTED);
  }
  if ((keyboard.inputMode & ENABLE_ECHO_INPUT) != 0) {
    keyboard.terminal.Write(line + L"\n");
  }
  const std::wstring given = (line + L"\r\n").substr(0, count);
  given.copy(static_cast<wchar_t*>(text), given.size());
  *read = static_cast<DWORD>(given.size());
  return TRUE;
}
