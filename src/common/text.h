// Text conversions at the edges, and the small text tools that several rooms share.
//
// Inside the system text is wide, one UTF-16 unit per wchar_t. Files, pipe payloads and panel
// bodies are UTF-8 byte strings.
#ifndef TAVRIN_SRC_COMMON_TEXT_H_
#define TAVRIN_SRC_COMMON_TEXT_H_

#include <string>
#include <string_view>

namespace vpn {

// Code page 65001, flags 0: what is ill-formed becomes whatever the platform makes of it. The whole
// text is converted, NULs included. Empty in, empty out, and so is a failed conversion.
std::wstring Utf8ToWide(std::string_view bytes);
std::string WideToUtf8(std::wstring_view text);

// `towlower` on each unit; the program never leaves the "C" locale.
std::wstring ToLowerText(std::wstring text);

// The empty needle is contained in everything.
bool ContainsNoCase(const std::wstring& haystack, const std::wstring& needle);

// Puts a backslash in front of each double quote and each backslash; every other byte passes.
std::string EscapeQuotes(std::string_view bytes);

// A source that gives no value leaves what stands in the field.
void AssignIfGiven(std::string_view bytes, std::wstring& field);

// 0 to 15, or -1 for a byte that is no hexadecimal digit of either case.
int HexDigitValue(char digit);

// By its shape alone: digits and dots with exactly three dots. "..." passes, and so does
// "999.0.0.1".
bool IsIpv4Literal(std::string_view text);
bool IsIpv4Literal(std::wstring_view text);

}  // namespace vpn

#endif  // TAVRIN_SRC_COMMON_TEXT_H_
