#include "client/console/moving_line.h"

#include "client/console/cursor.h"
#include "client/text/display_width.h"

namespace vpn {
namespace {

constexpr wchar_t kWheel[] = L"⠋⠙⠹⠸⠼⠴⠦⠧⠇⠏";
constexpr std::uint64_t kWheelStep = 80;  // milliseconds

}  // namespace

void MovingLine::show(const std::wstring& text) {
  if (!output_.isLively()) {
    return;
  }
  // One column stays free, since a full line would move the cursor to the next.
  const std::wstring line = CutToWidth(text, output_.columns() - 1);
  if (line == shown_) {
    return;
  }
  if (shown_.empty()) {
    output_.hideCursor();
  }
  output_.write(L"\r" + PadRight(line, DisplayWidth(shown_)));
  shown_ = line;
}

void MovingLine::clear() {
  if (shown_.empty()) {
    return;
  }
  output_.write(L"\r" + std::wstring(DisplayWidth(shown_), L' ') + L"\r");
  (void)RestoreCursor();
  shown_.clear();
}

wchar_t WheelAt(std::uint64_t milliseconds) {
  return kWheel[milliseconds / kWheelStep % 10];
}

}  // namespace vpn
