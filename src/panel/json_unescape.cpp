#include <algorithm>
#include <cstdlib>

#include "src/common/text.h"
#include "src/panel/json_reader.h"

namespace vpn {
namespace {

bool IsHexDigit(char c) {
  return HexDigitValue(c) >= 0;
}

void AppendUtf8(unsigned unit, std::string& out) {
  if (unit < 0x80) {
    out += static_cast<char>(unit);
  } else if (unit < 0x800) {
    out += static_cast<char>(0xC0 | (unit >> 6));
    out += static_cast<char>(0x80 | (unit & 0x3F));
  } else {
    out += static_cast<char>(0xE0 | (unit >> 12));
    out += static_cast<char>(0x80 | ((unit >> 6) & 0x3F));
    out += static_cast<char>(0x80 | (unit & 0x3F));
  }
}

// Decodes the escape at the front of `rest` and returns its length in bytes. Every other byte is
// copied, and so is the backslash of an unknown escape.
size_t DecodeFront(std::string_view rest, std::string& out) {
  const char next = rest.front() == '\\' && rest.size() > 1 ? rest[1] : '\0';
  if (next == '"' || next == '/' || next == '\\') {
    out += next;
    return 2;
  }
  if (next == 'n') {
    out += '\n';
    return 2;
  }
  const std::string_view digits = rest.substr(std::min<size_t>(2, rest.size()), 4);
  if (next == 'u' && digits.size() == 4 && std::all_of(digits.begin(), digits.end(), IsHexDigit)) {
    AppendUtf8(static_cast<unsigned>(std::strtoul(std::string(digits).c_str(), nullptr, 16)), out);
    return 6;
  }
  out += rest.front();
  return 1;
}

}  // namespace

std::string JsonUnescape(std::string_view text) {
  std::string decoded;
  for (size_t at = 0; at < text.size();) {
    at += DecodeFront(text.substr(at), decoded);
  }
  return decoded;
}

}  // namespace vpn
