#include "src/panel/json_reader.h"

#include <algorithm>
#include <cstdlib>

#include "src/common/key_scan.h"
#include "src/common/text.h"

namespace vpn {
namespace {

constexpr size_t kNone = std::string::npos;

// Position behind the bracket that closes the one at `open`, or `kNone`.
size_t FindBalance(const std::string& text, size_t open, char opening, char closing) {
  size_t depth = 0;
  for (size_t at = open; at < text.size(); ++at) {
    if (text[at] == opening) {
      ++depth;
    } else if (text[at] == closing && --depth == 0) {
      return at + 1;
    }
  }
  return kNone;
}

// Position of the value behind the key's colon and the blanks and tabs there, or `kNone`.
size_t FindValue(const std::string& text, std::string_view key) {
  const size_t behindColon = FindBehindColon(text, key);
  return behindColon == kNone ? kNone : SkipBytes(text, behindColon, " \t");
}

std::int64_t ReadNumber(const std::string& text, size_t at) {
  return std::strtoll(text.c_str() + at, nullptr, 10);
}

// Toward zero; what does not fit reads as the lowest number, as the processor's conversion has it.
std::int64_t Truncate(double number) {
  constexpr double kLimit = 9223372036854775808.0;  // 2^63
  return number >= -kLimit && number < kLimit ? static_cast<std::int64_t>(number) : INT64_MIN;
}

// The objects at depth 0 of `span`; anything between them is passed over.
std::vector<std::string> SplitObjects(std::string_view span) {
  std::vector<std::string> objects;
  size_t depth = 0;
  size_t start = 0;
  for (size_t at = 0; at < span.size(); ++at) {
    if (span[at] == '{') {
      start = depth == 0 ? at : start;
      ++depth;
    } else if (span[at] == '}' && depth > 0 && --depth == 0) {
      objects.emplace_back(span.substr(start, at + 1 - start));
    }
  }
  return objects;
}

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

std::string JsonDataObject(const std::string& body) {
  const std::string data = JsonObject(body, "data");
  return data.empty() ? body : data;
}

std::string JsonObject(const std::string& text, std::string_view key) {
  const size_t behindKey = FindBehindKey(text, key);
  const size_t open = behindKey == kNone ? kNone : text.find('{', behindKey);
  const size_t end = open == kNone ? kNone : FindBalance(text, open, '{', '}');
  return end == kNone ? std::string() : text.substr(open, end - open);
}

std::vector<std::string> JsonObjectArray(const std::string& text, std::string_view key) {
  size_t behindKey = FindBehindKey(text, key);
  if (behindKey == kNone) {
    behindKey = FindBehindKey(text, "data");
  }
  const size_t open = behindKey == kNone ? kNone : text.find('[', behindKey);
  if (open == kNone) {
    return {};
  }
  const size_t end = FindBalance(text, open, '[', ']');
  return SplitObjects(std::string_view(text).substr(open, end == kNone ? kNone : end - open));
}

std::vector<std::int64_t> JsonNumberArray(const std::string& text, std::string_view key) {
  const size_t behindKey = FindBehindKey(text, key);
  const size_t open = behindKey == kNone ? kNone : text.find('[', behindKey);
  const size_t close = open == kNone ? kNone : text.find(']', open);
  if (close == kNone) {
    return {};
  }
  constexpr std::string_view kBytes = "0123456789-.";
  const std::string list = text.substr(open, close + 1 - open);
  std::vector<std::int64_t> numbers;
  for (size_t at = list.find_first_of(kBytes); at != kNone;) {
    const size_t end = list.find_first_not_of(kBytes, at);
    numbers.push_back(Truncate(std::atof(list.substr(at, end - at).c_str())));
    at = list.find_first_of(kBytes, end);
  }
  return numbers;
}

std::string JsonString(const std::string& text, std::string_view key) {
  const size_t at = FindValue(text, key);
  if (at == kNone || at >= text.size() || text[at] != '"') {
    return {};
  }
  const size_t close = FindClosingQuote(text, at + 1);
  return JsonUnescape(std::string_view(text).substr(at + 1, close - at - 1));
}

std::int64_t JsonInt(const std::string& text, std::string_view key, std::int64_t fallback) {
  const size_t at = FindValue(text, key);
  if (at == kNone) {
    return fallback;
  }
  return ReadNumber(text, at < text.size() && text[at] == '"' ? at + 1 : at);
}

std::optional<std::int64_t> JsonOptionalInt(const std::string& text, std::string_view key) {
  const size_t at = FindValue(text, key);
  if (at == kNone || at >= text.size() || text.compare(at, 4, "null") == 0) {
    return std::nullopt;
  }
  const std::int64_t number = ReadNumber(text, at);
  return number >= 0 ? std::optional(number) : std::nullopt;
}

bool JsonBool(const std::string& text, std::string_view key) {
  const size_t at = FindValue(text, key);
  if (at == kNone) {
    return false;
  }
  return text.compare(at, 4, "true") == 0 || ReadNumber(text, at) != 0;
}

std::string JsonUnescape(std::string_view text) {
  std::string decoded;
  for (size_t at = 0; at < text.size();) {
    at += DecodeFront(text.substr(at), decoded);
  }
  return decoded;
}

}  // namespace vpn
