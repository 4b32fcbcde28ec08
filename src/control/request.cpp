#include "src/control/request.h"

#include "src/common/key_scan.h"

namespace vpn {
namespace {

std::string ReadQuoted(std::string_view text, size_t at) {
  std::string value;
  for (; at < text.size() && text[at] != '"'; ++at) {
    if (text[at] == '\\' && at + 1 < text.size()) {
      ++at;
    }
    value += text[at];
  }
  return value;
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
