// Numbers and times as a person reads them.
#ifndef TAVRIN_CLIENT_TEXT_AMOUNTS_H_
#define TAVRIN_CLIENT_TEXT_AMOUNTS_H_

#include <cstdint>
#include <string>

namespace vpn {

// "5 004": a blank in front of each group of three digits.
std::wstring GroupedNumber(std::uint64_t value);

// "139 ms".
std::wstring MillisecondsText(std::uint64_t milliseconds);

// "0.61 s" below ten seconds, "12.3 s" below a minute, else "2 min 5 s".
std::wstring SecondsText(std::uint64_t milliseconds);

// "42 s", "5 min", "2 h 14 min", "3 d 4 h".
std::wstring DurationText(std::uint64_t seconds);

// "¥12.50" of hundredths.
std::wstring MoneyText(std::int64_t cents);

// "9.5 GB".
std::wstring GigabytesText(std::int64_t bytes);

// A bar of `width` columns, of which `part` out of `whole` is filled.
std::wstring BarText(std::int64_t part, std::int64_t whole, size_t width);

// One of the two words behind the number: "1 problem", "2 problems".
std::wstring CountText(std::uint64_t count, const wchar_t* one, const wchar_t* many);

}  // namespace vpn

#endif  // TAVRIN_CLIENT_TEXT_AMOUNTS_H_
