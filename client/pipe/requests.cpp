#include "client/pipe/requests.h"

#include "src/common/text.h"
#include "src/control/request.h"

namespace vpn {
namespace {

// Takes `word` from the front of `text`.
bool Take(std::string_view& text, std::string_view word) {
  if (!text.starts_with(word)) {
    return false;
  }
  text.remove_prefix(word.size());
  return true;
}

bool TakeFlag(std::string_view& text, bool& value) {
  value = Take(text, "true");
  return value || Take(text, "false");
}

}  // namespace

std::string ConnectRequest(const std::wstring& node) {
  if (node.empty()) {
    return R"({"op":"connect"})";
  }
  return R"({"op":"connect","node":")" + EscapeQuotes(WideToUtf8(node)) + R"("})";
}

bool ParseReply(std::string_view text, Reply& reply) {
  std::string_view rest = text;
  if (!Take(rest, R"({"ok":)") || !TakeFlag(rest, reply.ok) || !Take(rest, R"(,"running":)") ||
      !TakeFlag(rest, reply.running) || !Take(rest, R"(,"error":")") || !rest.ends_with("\"}")) {
    return false;
  }
  reply.error = Utf8ToWide(RequestField(text, "error"));
  return true;
}

}  // namespace vpn
