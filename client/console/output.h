// One of the two streams that the program writes on: a console, a file or a pipe.
#ifndef TAVRIN_CLIENT_CONSOLE_OUTPUT_H_
#define TAVRIN_CLIENT_CONSOLE_OUTPUT_H_

#include <windows.h>

#include <string>

namespace vpn {

enum class Ink { kPlain, kGood, kBad, kCaution, kFaint };

// Colours are set by the console's own calls, and moving lines use the carriage return alone: both
// work on every console of Windows 10 and on Wine's, which has no escape sequences.
class Output {
 public:
  // STD_OUTPUT_HANDLE or STD_ERROR_HANDLE.
  explicit Output(DWORD standardHandle);

  // To a console as wide text, to anything else as UTF-8. What can't be written is lost.
  void write(const std::wstring& text, Ink ink = Ink::kPlain);
  void line(const std::wstring& text = L"", Ink ink = Ink::kPlain) { write(text + L'\n', ink); }

  // What somebody else wrote: to a console as the UTF-8 that it should be, to anything else as it
  // is.
  void writeBytes(const std::string& bytes);

  // A long line: on a console broken at blanks, its further lines `hang` columns in.
  void paragraph(const std::wstring& text, size_t hang);

  // A console, and the user has not asked for plain output with NO_COLOR.
  bool isLively() const { return isConsole_ && !isPlain_; }

  // Columns of a console's window, else 80.
  size_t columns() const { return columns_; }

  // While lines move; `RestoreCursor` brings it back.
  void hideCursor() const;

 private:
  void writeConsole(const std::wstring& text) const;

  HANDLE handle_ = nullptr;
  bool isConsole_ = false;
  bool isPlain_ = false;
  WORD attributes_ = 0;  // the console's own colours
  size_t columns_ = 80;
};

// The two streams of a command: the answer on `out`, what concerns the person alone on `err`.
struct Screen {
  Output out{STD_OUTPUT_HANDLE};
  Output err{STD_ERROR_HANDLE};
};

}  // namespace vpn

#endif  // TAVRIN_CLIENT_CONSOLE_OUTPUT_H_
