#include "src/common/text.h"

#include <windows.h>

#include <algorithm>
#include <cwctype>

namespace vpn {
namespace {

template <class Text>
bool HasDottedQuadShape(const Text& text) {
  const auto isDigitOrDot = [](typename Text::value_type c) {
    return c == '.' || (c >= '0' && c <= '9');
  };
  return std::all_of(text.begin(), text.end(), isDigitOrDot) &&
         std::count(text.begin(), text.end(), '.') == 3;
}

}  // namespace

std::wstring Utf8ToWide(std::string_view bytes) {
  if (bytes.empty()) {
    return {};
  }
  std::wstring text(bytes.size(), L'\0');  // no text has more units than bytes
  const int room = static_cast<int>(bytes.size());
  const int written = MultiByteToWideChar(CP_UTF8, 0, bytes.data(), room, text.data(), room);
  text.resize(written > 0 ? static_cast<size_t>(written) : 0);
  return text;
}

std::string WideToUtf8(std::wstring_view text) {
  if (text.empty()) {
    return {};
  }
  const int units = static_cast<int>(text.size());
  const int byteCount =
      WideCharToMultiByte(CP_UTF8, 0, text.data(), units, nullptr, 0, nullptr, nullptr);
  if (byteCount <= 0) {
    return {};
  }
  std::string bytes(static_cast<size_t>(byteCount), '\0');
  const int written = WideCharToMultiByte(CP_UTF8, 0, text.data(), units, bytes.data(), byteCount,
                                          nullptr, nullptr);
  bytes.resize(written > 0 ? static_cast<size_t>(written) : 0);
  return bytes;
}

std::wstring ToLowerText(std::wstring text) {
  for (wchar_t& unit : text) {
    unit = static_cast<wchar_t>(std::towlower(static_cast<std::wint_t>(unit)));
  }
  return text;
}

bool ContainsNoCase(const std::wstring& haystack, const std::wstring& needle) {
  return ToLowerText(haystack).find(ToLowerText(needle)) != std::wstring::npos;
}

void AssignIfGiven(std::string_view bytes, std::wstring& field) {
  if (!bytes.empty()) {
    field = Utf8ToWide(bytes);
  }
}

int HexDigitValue(char digit) {
  if (digit >= '0' && digit <= '9') {
    return digit - '0';
  }
  const char lower = static_cast<char>(digit | 0x20);
  return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

bool IsIpv4Literal(std::string_view text) {
  return HasDottedQuadShape(text);
}

bool IsIpv4Literal(std::wstring_view text) {
  return HasDottedQuadShape(text);
}

std::string EscapeQuotes(std::string_view bytes) {
  std::string escaped;
  escaped.reserve(bytes.size());
  for (const char byte : bytes) {
    if (byte == '"' || byte == '\\') {
      escaped += '\\';
    }
    escaped += byte;
  }
  return escaped;
}

}  // namespace vpn
