#include "tests/sim/terminal.h"

#include "tests/sim/text.h"

namespace sim {
namespace {

// The East Asian blocks that names in tests are written with.
bool IsWide(wchar_t unit) {
  return (unit >= 0x2E80 && unit <= 0xA4CF) || (unit >= 0xAC00 && unit <= 0xD7A3) ||
         (unit >= 0xFF00 && unit <= 0xFF60);
}

}  // namespace

void Terminal::Write(const std::wstring& text) {
  for (const wchar_t unit : text) {
    if (unit == L'\r') {
      column_ = 0;
    } else if (unit == L'\n') {
      column_ = 0;
      if (++row_ == rows_.size()) {
        rows_.emplace_back();
      }
    } else {
      Put(unit, IsWide(unit) ? 2 : 1);
    }
  }
}

void Terminal::Put(wchar_t unit, int width) {
  if (column_ + static_cast<size_t>(width) > static_cast<size_t>(columns)) {
    Write(L"\n");
  }
  std::vector<Cell>& row = rows_[row_];
  if (row.size() < column_ + static_cast<size_t>(width)) {
    row.resize(column_ + static_cast<size_t>(width));
  }
  row[column_++] = {unit, attributes};
  if (width == 2) {
    row[column_++] = {L'\0', attributes};
  }
}

std::wstring Terminal::TextOf(const std::vector<Cell>& row) const {
  std::wstring text;
  for (const Cell& cell : row) {
    text += cell.unit == L'\0' ? std::wstring() : std::wstring(1, cell.unit);
  }
  text.erase(text.find_last_not_of(L' ') + 1);
  return text;
}

std::vector<std::string> Terminal::Lines() const {
  std::vector<std::string> lines;
  for (const auto& row : rows_) {
    lines.push_back(Narrow(TextOf(row)));
  }
  return lines;
}

std::uint16_t Terminal::ColourOf(const std::wstring& text) const {
  for (const auto& row : rows_) {
    std::wstring units;
    for (const Cell& cell : row) {
      units += cell.unit;
    }
    if (const size_t at = units.find(text); at != std::wstring::npos) {
      return row[at].attributes;
    }
  }
  return 0;
}

}  // namespace sim
