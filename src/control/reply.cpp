#include "src/control/reply.h"

#include "src/common/text.h"

namespace vpn {
namespace {

const char* Word(bool value) {
  return value ? "true" : "false";
}

}  // namespace

std::string EncodeReply(bool ok, bool running, const std::wstring& error) {
  return std::string(R"({"ok":)") + Word(ok) + R"(,"running":)" + Word(running) + R"(,"error":")" +
         EscapeQuotes(WideToUtf8(error)) + R"("})";
}

}  // namespace vpn
