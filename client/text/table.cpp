#include "client/text/table.h"

#include <algorithm>

#include "client/text/display_width.h"

namespace vpn {
namespace {

constexpr wchar_t kGap[] = L"   ";

}  // namespace

std::vector<size_t> Table::widths() const {
  std::vector<size_t> widths;
  for (size_t column = 0; column < columns_.size(); ++column) {
    size_t width = DisplayWidth(columns_[column].title);
    for (const auto& row : rows_) {
      width = std::max(width, column < row.size() ? DisplayWidth(row[column]) : 0);
    }
    widths.push_back(width);
  }
  return widths;
}

std::wstring Table::line(const std::vector<std::wstring>& cells,
                         const std::vector<size_t>& widths) const {
  std::wstring text;
  for (size_t at = 0; at < std::max(cells.size(), columns_.size()); ++at) {
    const std::wstring cell = at < cells.size() ? cells[at] : std::wstring();
    text += at == 0 ? L"" : kGap;
    if (at >= columns_.size()) {
      text += cell;
    } else {
      text += columns_[at].align == Align::kLeft ? PadRight(cell, widths[at])
                                                 : PadLeft(cell, widths[at]);
    }
  }
  text.erase(text.find_last_not_of(L' ') + 1);
  return text;
}

std::vector<std::wstring> Table::lines() const {
  const std::vector<size_t> columnWidths = widths();
  std::vector<std::wstring> titles;
  for (const Column& column : columns_) {
    titles.push_back(column.title);
  }
  std::vector<std::wstring> result = {line(titles, columnWidths)};
  for (const auto& row : rows_) {
    result.push_back(line(row, columnWidths));
  }
  return result;
}

}  // namespace vpn
