// Standard handles and the calls of a console's screen.
#ifndef TAVRIN_TESTS_SIM_INCLUDE_WIN_TERMINAL_H_
#define TAVRIN_TESTS_SIM_INCLUDE_WIN_TERMINAL_H_

#include <win/base.h>

#define STD_INPUT_HANDLE (static_cast<DWORD>(-10))
#define STD_OUTPUT_HANDLE (static_cast<DWORD>(-11))
#define STD_ERROR_HANDLE (static_cast<DWORD>(-12))
#define FOREGROUND_BLUE 0x0001
#define FOREGROUND_GREEN 0x0002
#define FOREGROUND_RED 0x0004
#define FOREGROUND_INTENSITY 0x0008
#define ENABLE_PROCESSED_INPUT 0x0001u
#define ENABLE_LINE_INPUT 0x0002u
#define ENABLE_ECHO_INPUT 0x0004u

struct COORD {
  SHORT X;
  SHORT Y;
};
struct SMALL_RECT {
  SHORT Left;
  SHORT Top;
  SHORT Right;
  SHORT Bottom;
};
struct CONSOLE_SCREEN_BUFFER_INFO {
  COORD dwSize;
  COORD dwCursorPosition;
  WORD wAttributes;
  SMALL_RECT srWindow;
  COORD dwMaximumWindowSize;
};
struct CONSOLE_CURSOR_INFO {
  DWORD dwSize;
  BOOL bVisible;
};

HANDLE GetStdHandle(DWORD which);
BOOL GetConsoleMode(HANDLE console, DWORD* mode);
BOOL SetConsoleMode(HANDLE console, DWORD mode);
BOOL GetConsoleScreenBufferInfo(HANDLE console, CONSOLE_SCREEN_BUFFER_INFO* info);
BOOL SetConsoleTextAttribute(HANDLE console, WORD attributes);
BOOL GetConsoleCursorInfo(HANDLE console, CONSOLE_CURSOR_INFO* info);
BOOL SetConsoleCursorInfo(HANDLE console, const CONSOLE_CURSOR_INFO* info);
BOOL WriteConsoleW(HANDLE console, LPCVOID text, DWORD count, DWORD* written, LPVOID reserved);
BOOL ReadConsoleW(HANDLE console, LPVOID text, DWORD count, DWORD* read, LPVOID control);

#endif  // TAVRIN_TESTS_SIM_INCLUDE_WIN_TERMINAL_H_
