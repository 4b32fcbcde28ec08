#include "src/panel/request_text.h"

#include "src/common/text.h"

namespace vpn {

JsonBody& JsonBody::addText(std::string_view key, std::wstring_view text) {
  return addUtf8(key, WideToUtf8(text));
}

JsonBody& JsonBody::addUtf8(std::string_view key, std::string_view text) {
  return addRaw(key, '"' + JsonEscape(text) + '"');
}

JsonBody& JsonBody::addNumber(std::string_view key, std::int64_t number) {
  return addRaw(key, std::to_string(number));
}

JsonBody& JsonBody::addRaw(std::string_view key, const std::string& value) {
  fields_ += fields_.empty() ? "\"" : ",\"";
  fields_ += key;
  fields_ += "\":" + value;
  return *this;
}

std::string JsonEscape(std::string_view text) {
  std::string escaped;
  for (const char byte : EscapeQuotes(text)) {
    if (byte == '\n') {
      escaped += "\\n";
    } else {
      escaped += byte;
    }
  }
  return escaped;
}

std::string UrlEncode(std::string_view bytes) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  constexpr std::string_view kPlainBytes =
      "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-._@";
  std::string encoded;
  for (const char byte : bytes) {
    if (kPlainBytes.find(byte) != std::string_view::npos) {
      encoded += byte;
      continue;
    }
    const auto value = static_cast<unsigned char>(byte);
    encoded += '%';
    encoded += kDigits[value >> 4];
    encoded += kDigits[value & 0x0F];
  }
  return encoded;
}

}  // namespace vpn
