#include "src/control/reply.h"

#include <string_view>

#include "src/common/text.h"

namespace vpn {
namespace {

// By `ok`, then by `running`, with an empty error.
constexpr std::string_view kReplies[2][2] = {
    {R"({"ok":false,"running":false,"error":""})", R"({"ok":false,"running":true,"error":""})"},
    {R"({"ok":true,"running":false,"error":""})", R"({"ok":true,"running":true,"error":""})"}};
constexpr size_t kBehindError = 2;  // the closing quote and brace

}  // namespace

std::string EncodeReply(bool ok, bool running, const std::wstring& error) {
  std::string reply(kReplies[ok ? 1 : 0][running ? 1 : 0]);
  if (!error.empty()) {
    reply.insert(reply.size() - kBehindError, EscapeQuotes(WideToUtf8(error)));
  }
  return reply;
}

}  // namespace vpn
