#include "client/console/input.h"

#include <windows.h>

#include <algorithm>

#include "src/common/text.h"

namespace vpn {
namespace {

constexpr size_t kLongestAnswer = 4096;  // units, with the line ending

HANDLE StandardInput() {
  return GetStdHandle(STD_INPUT_HANDLE);
}

// The console's mode for as long as the object lives.
class ConsoleMode {
 public:
  ConsoleMode(HANDLE console, DWORD mode) : console_(console) {
    (void)GetConsoleMode(console, &before_);
    (void)SetConsoleMode(console, mode);
  }
  ~ConsoleMode() { (void)SetConsoleMode(console_, before_); }
  ConsoleMode(const ConsoleMode&) = delete;
  ConsoleMode& operator=(const ConsoleMode&) = delete;

 private:
  HANDLE console_;
  DWORD before_ = 0;
};

std::wstring WithoutLineEnding(std::wstring text) {
  text.erase(std::min(text.find_first_of(L"\r\n"), text.size()));
  return text;
}

}  // namespace

bool HasKeyboard() {
  DWORD mode = 0;
  return GetConsoleMode(StandardInput(), &mode) != FALSE;
}

Answer AskPerson(const std::wstring& question, Echo echo, const InterruptWatch& interrupt,
                 Output& output) {
  constexpr DWORD kLines = ENABLE_PROCESSED_INPUT | ENABLE_LINE_INPUT;
  output.write(question);
  HANDLE console = StandardInput();
  std::wstring text(kLongestAnswer, L'\0');
  DWORD count = 0;
  {
    const ConsoleMode mode(console, kLines | (echo == Echo::kShown ? ENABLE_ECHO_INPUT : 0));
    (void)ReadConsoleW(console, text.data(), static_cast<DWORD>(text.size()), &count, nullptr);
    // The read ends a moment before the console tells of its Ctrl+C.
    for (int wait = 0; count == 0 && !interrupt.wasInterrupted() && wait < 10; ++wait) {
      Sleep(10);
    }
  }
  if (echo == Echo::kHidden || count == 0) {
    output.line();  // the person's own line feed was not echoed
  }
  if (interrupt.wasInterrupted()) {
    return {Answer::Kind::kInterrupted, {}};
  }
  text.resize(count);
  return {count == 0 ? Answer::Kind::kEnd : Answer::Kind::kLine, WithoutLineEnding(text)};
}

Answer ReadInputLine() {
  HANDLE input = StandardInput();
  std::string bytes;
  char byte = 0;
  DWORD count = 0;
  bool isEnd = false;
  while (byte != '\n' && !isEnd) {
    isEnd = ReadFile(input, &byte, 1, &count, nullptr) == FALSE || count == 0;
    if (!isEnd) {
      bytes += byte;
    }
  }
  if (bytes.empty()) {
    return {};
  }
  if (bytes.starts_with("\xEF\xBB\xBF")) {
    bytes.erase(0, 3);
  }
  return {Answer::Kind::kLine, WithoutLineEnding(Utf8ToWide(bytes))};
}

}  // namespace vpn
