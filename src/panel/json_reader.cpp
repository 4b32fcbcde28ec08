#include "src/panel/json_reader.h"

#include <algorithm>
#include <cstdlib>

#include "src/common/key_scan.h"
#include "src/common/text.h"
#include "src/common/word_scan.h"

namespace vpn {
namespace {

constexpr size_t kNone = std::string::npos;

// Position of the first bracket or brace at or behind `from`, or `kNone`. One bit makes a bracket
// the brace of its side.
size_t FindBracket(std::string_view text, size_t from) {
  constexpr std::uint64_t kFold = kEachByte * 0x20;
  return FindByWords<0>(
      text, from,
      [](const char* word) {
        const std::uint64_t folded = Differences(word, '\0') | kFold;
        return ZeroBytes(folded ^ kEachByte * '{') | ZeroBytes(folded ^ kEachByte * '}');
      },
      [text](size_t at) { return (text[at] | 0x20) == '{' || (text[at] | 0x20) == '}'; });
}

// Position behind the brace that closes the one at `open`, or `kNone`.
size_t FindBalance(std::string_view text, size_t open) {
  size_t depth = 0;
  for (size_t at = open; at != kNone; at = FindBracket(text, at + 1)) {
    if (text[at] == '{') {
      ++depth;
    } else if (text[at] == '}' && --depth == 0) {
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

// The objects at depth 0 of the array that begins at `open`; anything between them is passed over.
std::vector<std::string> SplitObjects(std::string_view text, size_t open) {
  std::vector<std::string> objects;
  size_t arrays = 0;
  size_t depth = 0;
  size_t start = 0;
  for (size_t at = open; at != kNone; at = FindBracket(text, at + 1)) {
    const char bracket = text[at];
    if (bracket == '[') {
      ++arrays;
    } else if (bracket == ']' && --arrays == 0) {
      break;
    } else if (bracket == '{') {
      start = depth == 0 ? at : start;
      ++depth;
    } else if (bracket == '}' && depth > 0 && --depth == 0) {
      objects.emplace_back(text.substr(start, at + 1 - start));
    }
  }
  return objects;
}

// The unit that the four digits at the front of `digits` give, or -1.
int ReadUnit(std::string_view digits) {
  constexpr size_t kDigits = 4;
  int unit = digits.size() < kDigits ? -1 : 0;
  for (size_t i = 0; i < kDigits && unit >= 0; ++i) {
    const int value = HexDigitValue(digits[i]);
    unit = value < 0 ? -1 : unit * 16 + value;
  }
  return unit;
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

// Decodes the escape whose backslash is the front of `rest`, and returns its length in bytes. Of an
// unknown one the backslash is copied, and nothing else.
size_t DecodeEscape(std::string_view rest, std::string& out) {
  const char next = rest.size() > 1 ? rest[1] : '\0';
  if (next == '"' || next == '/' || next == '\\' || next == 'n') {
    out += next == 'n' ? '\n' : next;
    return 2;
  }
  const int unit = next == 'u' ? ReadUnit(rest.substr(2)) : -1;
  if (unit >= 0) {
    AppendUtf8(static_cast<unsigned>(unit), out);
    return 6;
  }
  out += '\\';
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
  const size_t end = open == kNone ? kNone : FindBalance(text, open);
  return end == kNone ? std::string() : text.substr(open, end - open);
}

std::vector<std::string> JsonObjectArray(const std::string& text, std::string_view key) {
  size_t behindKey = FindBehindKey(text, key);
  if (behindKey == kNone) {
    behindKey = FindBehindKey(text, "data");
  }
  const size_t open = behindKey == kNone ? kNone : text.find('[', behindKey);
  return SplitObjects(text, open);
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
  decoded.reserve(text.size());
  while (!text.empty()) {
    const size_t plain = std::min(text.find('\\'), text.size());
    decoded += text.substr(0, plain);
    text.remove_prefix(plain);
    if (!text.empty()) {
      text.remove_prefix(DecodeEscape(text, decoded));
    }
  }
  return decoded;
}

}  // namespace vpn
