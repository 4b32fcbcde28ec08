#include "src/control/request.h"

#include "src/common/key_scan.h"

namespace vpn {
namespace {

// Up to the closing quote or the end of the text. A backslash gives way to the byte behind it.
std::string ReadQuoted(std::string_view text, size_t at) {
  std::string value;
  for (;;) {
    const size_t from = at;
    while (at < text.size() && text[at] != '"' && text[at] != '\\') {
      ++at;
    }
    value += text.substr(from, at - from);
    if (at == text.size() || text[at] == '"') {
      return value;
    }
    at += at + 1 < text.size() ? 1 : 0;
    value += text[at];
    ++at;
  }
}

}  // namespace

std::string RequestField(std::string_view text, std::string_view key) {
  const size_t behindColon = FindBehindColon(text, key);
  if (behindColon == std::string_view::npos) {
    return {};
  }
  const size_t at = SkipBytes(text, behindColon, " \t\r\n");
  if (at >= text.size() || text[at] != '"') {
    return {};
  }
  return ReadQuoted(text, at + 1);
}

std::string RequestOp(std::string_view text) {
  return RequestField(text, "op");
}

}  // namespace vpn
