#include "client/report/secrets.h"

#include <algorithm>
#include <cctype>

#include "client/account/masked.h"
#include "client/json/json_strings.h"
#include "src/common/text.h"
#include "src/panel/json_reader.h"

namespace vpn {
namespace {

constexpr const char* kSecretKeys[] = {
    "password",  "auth_data", "token",      "uuid",          "id",
    "publicKey", "shortId",   "serverName", "subscribe_url", "sni"};
constexpr char kMask[] = "***";
constexpr size_t kLeastInside = 4;   // bytes; a shorter secret counts as a whole word alone
constexpr size_t kTokenLength = 24;  // letters and digits in a row

bool IsEmailByte(char byte) {
  return std::isalnum(static_cast<unsigned char>(byte)) != 0 ||
         std::string_view("._%+-").find(byte) != std::string_view::npos ||
         static_cast<unsigned char>(byte) >= 0x80;
}

bool IsTokenByte(char byte) {
  return std::isalnum(static_cast<unsigned char>(byte)) != 0 || byte == '-' || byte == '_';
}

// How far the run of bytes of a kind reaches from `at`.
template <class Predicate>
size_t EndOfRun(const std::string& text, size_t at, const Predicate& isKind) {
  while (at < text.size() && isKind(text[at])) {
    ++at;
  }
  return at;
}

void MaskEmails(std::string& text) {
  for (size_t sign = text.find('@'); sign != std::string::npos; sign = text.find('@', sign + 1)) {
    if (std::string_view(text).substr(0, sign).ends_with(kMask)) {
      continue;  // masked already
    }
    size_t start = sign;
    while (start > 0 && IsEmailByte(text[start - 1])) {
      --start;
    }
    const size_t end = EndOfRun(text, sign + 1, IsEmailByte);
    const std::string masked = WideToUtf8(MaskedEmail(Utf8ToWide(text.substr(start, end - start))));
    text.replace(start, end - start, masked);
    sign = start + masked.size() - 1;
  }
}

// A word of letters and digits both, too long to be anything but a key. Words with neither are
// names.
bool LooksLikeToken(std::string_view word) {
  const auto isDigit = [](char byte) { return byte >= '0' && byte <= '9'; };
  return word.size() >= kTokenLength && std::any_of(word.begin(), word.end(), isDigit) &&
         !std::all_of(word.begin(), word.end(), isDigit);
}

void MaskTokens(std::string& text) {
  for (size_t at = 0; at < text.size();) {
    const size_t end = EndOfRun(text, at, IsTokenByte);
    if (LooksLikeToken(std::string_view(text).substr(at, end - at))) {
      text.replace(at, end - at, kMask);
      at += sizeof(kMask) - 1;
    } else {
      at = std::max(end, at + 1);
    }
  }
}

bool IsWordAt(const std::string& text, size_t at, size_t size) {
  return (at == 0 || !IsTokenByte(text[at - 1])) &&
         (at + size == text.size() || !IsTokenByte(text[at + size]));
}

void MaskSecret(const std::string& secret, std::string& text) {
  for (size_t at = text.find(secret); at != std::string::npos; at = text.find(secret, at)) {
    if (secret.size() >= kLeastInside || IsWordAt(text, at, secret.size())) {
      text.replace(at, secret.size(), kMask);
      at += sizeof(kMask) - 1;
    } else {
      ++at;
    }
  }
}

}  // namespace

std::vector<std::string> SecretsIn(const std::string& json) {
  std::vector<std::string> secrets;
  for (const char* key : kSecretKeys) {
    secrets.push_back(JsonString(json, key));
  }
  std::string name = JsonString(json, "email");
  if (name.find('@') == std::string::npos) {
    secrets.push_back(std::move(name));  // nothing else would mask it
  }
  std::erase(secrets, "");
  return secrets;
}

std::string Scrub(std::string text, std::vector<std::string> secrets) {
  // A short one inside a longer one would leave the rest of it.
  std::stable_sort(
      secrets.begin(), secrets.end(),
      [](const std::string& left, const std::string& right) { return left.size() > right.size(); });
  for (const std::string& secret : secrets) {
    MaskSecret(secret, text);
  }
  MaskEmails(text);
  MaskTokens(text);
  return text;
}

std::string ShapeOfJson(std::string_view json) {
  std::string shape;
  for (size_t at = 0; at < json.size();) {
    const char byte = json[at];
    if (byte == '"') {
      const size_t end = EndOfString(json, at);
      shape += IsKeyBefore(json, end) ? json.substr(at, end - at) : "\"***\"";
      at = end;
    } else if (std::string_view("{}[],: \t\r\n").find(byte) != std::string_view::npos) {
      shape += byte;
      ++at;
    } else {
      const size_t end = json.find_first_of("{}[],: \t\r\n\"", at);
      shape += '*';
      at = end == std::string_view::npos ? json.size() : end;
    }
  }
  return shape;
}

}  // namespace vpn
