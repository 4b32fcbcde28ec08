#include "src/common/number_text.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace vpn {
namespace {

constexpr int kMantissaBits = 53;
constexpr int kNoBitLeft = 62;  // of 53 bits and two decimals, which makes fewer than 60

// `number` * 2^-bits, rounded to the nearest; from the middle to the even one.
std::uint64_t ShiftRounded(std::uint64_t number, int bits) {
  if (bits >= kNoBitLeft) {
    return 0;
  }
  const std::uint64_t whole = number >> bits;
  const std::uint64_t rest = number - (whole << bits);
  const std::uint64_t middle = (std::uint64_t{1} << bits) / 2;
  const bool up = rest > middle || (rest == middle && whole % 2 == 1);
  return whole + (bits > 0 && up ? 1 : 0);
}

}  // namespace

std::wstring DecimalText(std::uint64_t number, size_t width, wchar_t filler) {
  const std::string digits = std::to_string(number);
  std::wstring text(width - std::min(width, digits.size()), filler);
  return text.append(digits.begin(), digits.end());
}

std::wstring FixedText(double number, size_t decimals) {
  int exponent = 0;
  const double fraction = std::frexp(std::abs(number), &exponent);
  const auto mantissa = static_cast<std::uint64_t>(std::ldexp(fraction, kMantissaBits));
  const std::uint64_t scaled = mantissa * (decimals == 2 ? 100U : decimals == 1 ? 10U : 1U);
  exponent -= kMantissaBits;
  std::wstring text = DecimalText(
      exponent > 0 ? scaled << exponent : ShiftRounded(scaled, -exponent), decimals + 1);
  if (decimals > 0) {
    text.insert(text.size() - decimals, 1, L'.');
  }
  return (std::signbit(number) ? L"-" : L"") + text;
}

std::optional<std::array<int, 3>> ReadDate(const std::string& text) {
  std::array<int, 3> date{};
  const char* at = text.c_str();
  for (int& number : date) {
    if (&number != date.data() && *at++ != '-') {
      return std::nullopt;
    }
    char* end = nullptr;
    number = static_cast<int>(std::strtol(at, &end, 10));
    if (end == at) {
      return std::nullopt;
    }
    at = end;
  }
  return date;
}

}  // namespace vpn
