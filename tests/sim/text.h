// Text of the simulated machine: wide text holds one UTF-16 unit per wchar_t, test-side text is
// UTF-8. The two conversions behave as the platform's do with code page 65001 and flags 0.
#ifndef TAVRIN_TESTS_SIM_TEXT_H_
#define TAVRIN_TESTS_SIM_TEXT_H_

#include <string>
#include <string_view>

namespace sim {

// Ill-formed input gives one U+FFFD for a lead byte with the continuation bytes that it used up,
// and one for every other byte that can't be read.
std::wstring Widen(std::string_view bytes);
// An unpaired surrogate gives the three bytes of U+FFFD.
std::string Narrow(std::wstring_view units);

// A wide literal of a test (32 bits a character on this host) as UTF-16 units. Text that is in
// units already passes unchanged.
std::wstring Units(std::wstring_view text);

// Case folding as the machine's file names, variables and registry keys use it.
std::wstring Fold(std::wstring text);

// `*` and `?` as FindFirstFile takes them, ignoring case.
bool MatchesWildcards(const std::wstring& pattern, const std::wstring& name);

}  // namespace sim

#endif  // TAVRIN_TESTS_SIM_TEXT_H_
