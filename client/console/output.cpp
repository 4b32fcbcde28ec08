#include "client/console/output.h"

#include <algorithm>

#include "client/console/cursor.h"
#include "client/text/display_width.h"
#include "src/common/environment.h"
#include "src/common/text.h"

namespace vpn {
namespace {

constexpr size_t kChunk = 8000;  // units; a console takes no more than 64 KiB at a time
constexpr WORD kBackground = 0x00F0;

WORD Foreground(Ink ink) {
  switch (ink) {
    case Ink::kGood:
      return FOREGROUND_GREEN | FOREGROUND_INTENSITY;
    case Ink::kBad:
      return FOREGROUND_RED | FOREGROUND_INTENSITY;
    case Ink::kCaution:
      return FOREGROUND_RED | FOREGROUND_GREEN | FOREGROUND_INTENSITY;
    case Ink::kFaint:
      return FOREGROUND_INTENSITY;
    default:
      return 0;
  }
}

void WriteBytes(HANDLE handle, const std::string& bytes) {
  for (size_t done = 0; done < bytes.size();) {
    DWORD count = 0;
    if (WriteFile(handle, bytes.data() + done, static_cast<DWORD>(bytes.size() - done), &count,
                  nullptr) == FALSE ||
        count == 0) {
      return;
    }
    done += count;
  }
}

}  // namespace

Output::Output(DWORD standardHandle)
    : handle_(GetStdHandle(standardHandle)), isPlain_(ReadEnvironment(L"NO_COLOR", 2).has_value()) {
  DWORD mode = 0;
  CONSOLE_SCREEN_BUFFER_INFO info = {};
  if (GetConsoleMode(handle_, &mode) == FALSE ||
      GetConsoleScreenBufferInfo(handle_, &info) == FALSE) {
    return;
  }
  isConsole_ = true;
  attributes_ = info.wAttributes;
  columns_ = static_cast<size_t>(std::max(info.srWindow.Right - info.srWindow.Left + 1, 20));
}

void Output::write(const std::wstring& text, Ink ink) {
  if (!isConsole_) {
    WriteBytes(handle_, WideToUtf8(text));
    return;
  }
  if (ink == Ink::kPlain || isPlain_) {
    writeConsole(text);
    return;
  }
  (void)SetConsoleTextAttribute(handle_,
                                static_cast<WORD>((attributes_ & kBackground) | Foreground(ink)));
  writeConsole(text);
  (void)SetConsoleTextAttribute(handle_, attributes_);
}

void Output::writeBytes(const std::string& bytes) {
  if (isConsole_) {
    writeConsole(Utf8ToWide(bytes));
  } else {
    WriteBytes(handle_, bytes);
  }
}

void Output::paragraph(const std::wstring& text, size_t hang) {
  if (!isConsole_) {
    line(text);
    return;
  }
  for (const std::wstring& part : WrapText(text, columns_ - 1, hang)) {
    line(part);
  }
}

void Output::writeConsole(const std::wstring& text) const {
  for (size_t at = 0; at < text.size(); at += kChunk) {
    const auto count = static_cast<DWORD>(std::min(kChunk, text.size() - at));
    DWORD written = 0;
    (void)WriteConsoleW(handle_, text.data() + at, count, &written, nullptr);
  }
}

void Output::hideCursor() const {
  if (isLively()) {
    HideCursor(handle_);
  }
}

}  // namespace vpn
