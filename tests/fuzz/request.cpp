// The request scanner, and the reply encoder read by it. The input's first line is the key, the
// rest is the text.
#include "src/control/request.h"

#include "src/control/reply.h"
#include "tests/fuzz/fuzz.h"

using fuzz::Require;

namespace {

// The same rules, told as a machine that eats the text byte by byte.
std::string FieldByByte(std::string_view text, const std::string& key) {
  enum class Wants { kColon, kValue, kMore, kAnyByte };
  const std::string quoted = '"' + key + '"';
  Wants wants = Wants::kColon;
  std::string value;
  size_t at = text.find(quoted);
  if (at == std::string_view::npos) {
    return value;
  }
  for (at += quoted.size(); at < text.size(); ++at) {
    const char byte = text[at];
    if (wants == Wants::kColon) {
      wants = byte == ':' ? Wants::kValue : Wants::kColon;
    } else if (wants == Wants::kValue) {
      if (byte == '"') {
        wants = Wants::kMore;
      } else if (byte != ' ' && byte != '\t' && byte != '\r' && byte != '\n') {
        return value;
      }
    } else if (wants == Wants::kMore && byte == '"') {
      return value;
    } else if (wants == Wants::kMore && byte == '\\' && at + 1 < text.size()) {
      wants = Wants::kAnyByte;
    } else {
      value += byte;
      wants = Wants::kMore;
    }
  }
  return value;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, size_t size) {
  static fuzz::SharedMachine machine;
  (void)machine.Get([](sim::Machine&) {});
  std::string_view text = fuzz::Bytes(data, size);
  const std::string key(fuzz::TakeUntil(text, '\n'));
  Require(vpn::RequestField(text, key) == FieldByByte(text, key), "the field is read by its rules");
  Require(vpn::RequestOp(text) == FieldByByte(text, "op"), "so is the operation");

  const std::wstring error = fuzz::Wide(text);
  const bool ok = size % 2 == 0;
  const bool running = size % 3 == 0;
  const std::string reply = vpn::EncodeReply(ok, running, error);
  const std::string front = std::string(R"({"ok":)") + (ok ? "true" : "false") + R"(,"running":)" +
                            (running ? "true" : "false") + R"(,"error":")";
  Require(reply.starts_with(front) && reply.ends_with("\"}"), "a reply has its fixed frame");
  Require(vpn::RequestField(reply, "error") == fuzz::Utf8(error), "the error text reads back");
  return 0;
}
