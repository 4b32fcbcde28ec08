// Columns that line up, also with East Asian names in them.
#ifndef TAVRIN_CLIENT_TEXT_TABLE_H_
#define TAVRIN_CLIENT_TEXT_TABLE_H_

#include <string>
#include <vector>

namespace vpn {

class Table {
 public:
  enum class Align { kLeft, kRight };
  struct Column {
    std::wstring title;
    Align align = Align::kLeft;
  };

  explicit Table(std::vector<Column> columns) : columns_(std::move(columns)) {}

  // Cells that are missing are empty; those beyond the columns stand behind the row as they are.
  void addRow(std::vector<std::wstring> cells) { rows_.push_back(std::move(cells)); }

  // The line of titles first; no blanks at the end of a line.
  std::vector<std::wstring> lines() const;

 private:
  std::vector<size_t> widths() const;
  std::wstring line(const std::vector<std::wstring>& cells,
                    const std::vector<size_t>& widths) const;

  std::vector<Column> columns_;
  std::vector<std::vector<std::wstring>> rows_;
};

}  // namespace vpn

#endif  // TAVRIN_CLIENT_TEXT_TABLE_H_
