// Conversions at the rim of the stand-ins: Win32 is wide, the shared state is UTF-8.
#ifndef TAVRIN_TESTS_STANDINS_TEXT_H_
#define TAVRIN_TESTS_STANDINS_TEXT_H_

#include <string>
#include <string_view>

namespace standins {

std::string ToUtf8(std::wstring_view text);
std::wstring ToWide(std::string_view text);

}  // namespace standins

#endif  // TAVRIN_TESTS_STANDINS_TEXT_H_
