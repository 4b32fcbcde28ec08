#include "client/text/display_width.h"

#include <algorithm>
#include <cstdint>
#include <iterator>

namespace vpn {
namespace {

struct Range {
  std::uint32_t first;
  std::uint32_t last;
};

// What East Asian Width calls wide or full width, in broad strokes.
constexpr Range kWide[] = {{0x1100, 0x115F},   {0x231A, 0x231B},   {0x2E80, 0x303E},
                           {0x3041, 0x33FF},   {0x3400, 0x4DBF},   {0x4E00, 0x9FFF},
                           {0xA000, 0xA4CF},   {0xA960, 0xA97F},   {0xAC00, 0xD7A3},
                           {0xF900, 0xFAFF},   {0xFE30, 0xFE6F},   {0xFF00, 0xFF60},
                           {0xFFE0, 0xFFE6},   {0x1F1E6, 0x1F1FF}, {0x1F300, 0x1F64F},
                           {0x1F680, 0x1F6FF}, {0x1F900, 0x1F9FF}, {0x20000, 0x3FFFD}};

constexpr Range kInvisible[] = {{0x0300, 0x036F}, {0x200B, 0x200F}, {0x20D0, 0x20FF},
                                {0xFE00, 0xFE0F}, {0xFE20, 0xFE2F}, {0xFEFF, 0xFEFF}};

template <size_t Count>
bool IsIn(const Range (&ranges)[Count], std::uint32_t character) {
  return std::any_of(std::begin(ranges), std::end(ranges), [character](const Range& range) {
    return character >= range.first && character <= range.last;
  });
}

size_t WidthOf(std::uint32_t character) {
  if (IsIn(kInvisible, character)) {
    return 0;
  }
  return IsIn(kWide, character) ? 2 : 1;
}

bool IsPairAt(std::wstring_view text, size_t at) {
  return at + 1 < text.size() && text[at] >= 0xD800 && text[at] <= 0xDBFF &&
         text[at + 1] >= 0xDC00 && text[at + 1] <= 0xDFFF;
}

// The character at `at`, which is moved behind it.
std::uint32_t NextCharacter(std::wstring_view text, size_t& at) {
  std::uint32_t character = static_cast<char16_t>(text[at]);
  if (IsPairAt(text, at)) {
    ++at;
    character =
        0x10000 + ((character - 0xD800) << 10) + (static_cast<char16_t>(text[at]) - 0xDC00U);
  }
  ++at;
  return character;
}

std::wstring Blanks(size_t width, size_t taken) {
  std::wstring blanks;
  blanks.assign(width > taken ? width - taken : 0, L' ');
  return blanks;
}

}  // namespace

size_t DisplayWidth(std::wstring_view text) {
  size_t width = 0;
  for (size_t at = 0; at < text.size();) {
    width += WidthOf(NextCharacter(text, at));
  }
  return width;
}

std::wstring PadRight(std::wstring_view text, size_t width) {
  return std::wstring(text) + Blanks(width, DisplayWidth(text));
}

std::wstring PadLeft(std::wstring_view text, size_t width) {
  return Blanks(width, DisplayWidth(text)) + std::wstring(text);
}

std::wstring CutToWidth(std::wstring_view text, size_t width) {
  if (DisplayWidth(text) <= width) {
    return std::wstring(text);
  }
  size_t taken = 0;
  size_t end = 0;
  for (size_t at = 0; at < text.size();) {
    taken += WidthOf(NextCharacter(text, at));
    if (taken + 1 > width) {
      break;
    }
    end = at;
  }
  return std::wstring(text.substr(0, end)) + (width == 0 ? L"" : L"…");
}

std::vector<std::wstring> WrapText(const std::wstring& text, size_t width, size_t hang) {
  std::vector<std::wstring> lines;
  std::wstring line;
  for (size_t at = 0; at < text.size();) {
    const size_t start = std::min(text.find_first_not_of(L' ', at), text.size());
    const size_t end = std::min(text.find(L' ', start), text.size());
    const std::wstring piece = text.substr(at, end - at);  // with the blanks in front of it
    if (start > at && !line.empty() && DisplayWidth(line) + DisplayWidth(piece) > width) {
      lines.push_back(line);
      line = std::wstring(hang, L' ') + text.substr(start, end - start);
    } else {
      line += piece;
    }
    at = end;
  }
  lines.push_back(line);
  return lines;
}

std::wstring PlainLine(std::wstring text) {
  std::replace_if(
      text.begin(), text.end(), [](wchar_t unit) { return unit < 0x20 || unit == 0x7F; }, L' ');
  return text;
}

}  // namespace vpn
