// Numbers as text, and dates from text. The C runtime's formatted input and output does it too, but
// mingw's own, which the platform's differs from in its rounding, weighs 70 KiB.
#ifndef TAVRIN_SRC_COMMON_NUMBER_TEXT_H_
#define TAVRIN_SRC_COMMON_NUMBER_TEXT_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

namespace vpn {

// Decimal digits, filled up in front to at least `width` characters.
std::wstring DecimalText(std::uint64_t number, size_t width = 1, wchar_t filler = L'0');

// The text of printf's "%.*f": the exact value is rounded to the nearest text, from the middle
// between two to the one with the even digit. For up to two decimals, and numbers whose digits,
// decimals included, are less than 2^64.
std::wstring FixedText(double number, size_t decimals);

// Year, month and day, read as sscanf's "%d-%d-%d" does: blanks may stand in front of each number,
// signs are taken, no range is checked, and what follows the day is not looked at.
std::optional<std::array<int, 3>> ReadDate(const std::string& text);

}  // namespace vpn

#endif  // TAVRIN_SRC_COMMON_NUMBER_TEXT_H_
