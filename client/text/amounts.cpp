#include "client/text/amounts.h"

#include <algorithm>
#include <cmath>

namespace vpn {
namespace {

// `value` with at least `digits` digits.
std::wstring Padded(std::uint64_t value, size_t digits) {
  std::wstring text = std::to_wstring(value);
  return text.size() < digits ? std::wstring(digits - text.size(), L'0') + text : text;
}

std::wstring Pair(std::uint64_t large, const wchar_t* largeUnit, std::uint64_t small,
                  const wchar_t* smallUnit) {
  return std::to_wstring(large) + largeUnit + std::to_wstring(small) + smallUnit;
}

}  // namespace

std::wstring GroupedNumber(std::uint64_t value) {
  std::wstring text = std::to_wstring(value);
  for (size_t at = text.size(); at > 3;) {
    at -= 3;
    text.insert(at, 1, L' ');
  }
  return text;
}

std::wstring MillisecondsText(std::uint64_t milliseconds) {
  return GroupedNumber(milliseconds) + L" ms";
}

std::wstring SecondsText(std::uint64_t milliseconds) {
  if (milliseconds < 10'000) {
    const std::uint64_t hundredths = (milliseconds + 5) / 10;
    return std::to_wstring(hundredths / 100) + L"." + Padded(hundredths % 100, 2) + L" s";
  }
  const std::uint64_t tenths = (milliseconds + 50) / 100;
  if (tenths < 600) {
    return std::to_wstring(tenths / 10) + L"." + std::to_wstring(tenths % 10) + L" s";
  }
  const std::uint64_t seconds = (milliseconds + 500) / 1000;
  return Pair(seconds / 60, L" min ", seconds % 60, L" s");
}

std::wstring DurationText(std::uint64_t seconds) {
  const std::uint64_t minutes = seconds / 60;
  const std::uint64_t hours = minutes / 60;
  if (minutes == 0) {
    return std::to_wstring(seconds) + L" s";
  }
  if (hours == 0) {
    return std::to_wstring(minutes) + L" min";
  }
  if (hours < 24) {
    return Pair(hours, L" h ", minutes % 60, L" min");
  }
  return Pair(hours / 24, L" d ", hours % 24, L" h");
}

std::wstring MoneyText(std::int64_t cents) {
  const bool isNegative = cents < 0;
  const std::uint64_t amount =
      isNegative ? 0 - static_cast<std::uint64_t>(cents) : static_cast<std::uint64_t>(cents);
  return std::wstring(isNegative ? L"-¥" : L"¥") + std::to_wstring(amount / 100) + L"." +
         Padded(amount % 100, 2);
}

std::wstring GigabytesText(std::int64_t bytes) {
  constexpr std::uint64_t kTenth = 107374182;  // of a gigabyte, 1024^3 bytes
  const std::uint64_t tenths =
      (static_cast<std::uint64_t>(bytes < 0 ? 0 : bytes) + kTenth / 2) / kTenth;
  return std::to_wstring(tenths / 10) + L"." + std::to_wstring(tenths % 10) + L" GB";
}

std::wstring BarText(std::int64_t part, std::int64_t whole, size_t width) {
  const double share =
      whole <= 0 ? 0.0
                 : std::clamp(static_cast<double>(part) / static_cast<double>(whole), 0.0, 1.0);
  const auto filled = static_cast<size_t>(std::lround(share * static_cast<double>(width)));
  return std::wstring(filled, L'█') + std::wstring(width - filled, L'░');
}

std::wstring CountText(std::uint64_t count, const wchar_t* one, const wchar_t* many) {
  return std::to_wstring(count) + L" " + (count == 1 ? one : many);
}

}  // namespace vpn
