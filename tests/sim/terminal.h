// The screen of a console window: what a person would see after everything that was written.
#ifndef TAVRIN_TESTS_SIM_TERMINAL_H_
#define TAVRIN_TESTS_SIM_TERMINAL_H_

#include <cstdint>
#include <string>
#include <vector>

namespace sim {

// Cells of one column each; an East Asian character takes two. It knows line feed and carriage
// return, wraps at its right edge, and never scrolls.
class Terminal {
 public:
  int columns = 80;
  std::uint16_t attributes = 7;  // of what is written next
  bool cursorVisible = true;
  std::uint32_t cursorSize = 25;  // percent of a cell

  void Write(const std::wstring& text);
  // UTF-8, without the blanks at their ends; the line of the cursor is the last one.
  std::vector<std::string> Lines() const;
  // The colours in which the first occurrence of `text` within one line stands; 0 when it is
  // nowhere.
  std::uint16_t ColourOf(const std::wstring& text) const;

 private:
  struct Cell {
    wchar_t unit = L' ';  // 0 in the second half of a wide character
    std::uint16_t attributes = 7;
  };
  void Put(wchar_t unit, int width);
  std::wstring TextOf(const std::vector<Cell>& row) const;

  std::vector<std::vector<Cell>> rows_{1};
  size_t row_ = 0;
  size_t column_ = 0;
};

}  // namespace sim

#endif  // TAVRIN_TESTS_SIM_TERMINAL_H_
