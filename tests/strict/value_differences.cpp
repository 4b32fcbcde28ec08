// How the scanners read a value otherwise than a parser, when both look at the same one.
#include <algorithm>
#include <cstdint>
#include <span>
#include <utility>

#include "tests/strict/readings.h"

namespace strict {
namespace {

using Found = std::optional<Class>;

// A value with all that the questions below are about.
struct Value {
  Kind kind;
  std::string_view raw;
  bool behindLineBreak;
  size_t depth;
  std::span<const Token> inside;  // of an object or an array
  const Document& document;
};

Value ValueOf(const Document& document, const Token& key) {
  const Token* const token = &key + 1;
  const std::string_view text = document.text;
  const std::string_view gap = text.substr(key.end, token->begin - key.end);
  const Token* const last = document.tokens.data() + document.tokens.size();
  const Token* const behind =
      std::find_if(token + 1, last, [&](const Token& other) { return other.begin >= token->end; });
  return {token->kind,
          Raw(text, *token),
          gap.find_first_of("\r\n", gap.find(':')) != std::string_view::npos,
          token->depth,
          {token + 1, behind},
          document};
}

// Whether a string's bytes hold one of these escapes; `u` is a surrogate's alone when asked so.
bool HasEscape(std::string_view raw, std::string_view letters, bool surrogatesOnly = false) {
  for (size_t at = raw.find('\\'); at != std::string_view::npos; at = raw.find('\\', at + 2)) {
    const char letter = raw[at + 1];
    const bool isSurrogate =
        letter == 'u' && (raw[at + 2] == 'd' || raw[at + 2] == 'D') &&
        std::string_view("89abcdefABCDEF").find(raw[at + 3]) != std::string_view::npos;
    if (letters.find(letter) != std::string_view::npos &&
        (letter != 'u' || !surrogatesOnly || isSurrogate)) {
      return true;
    }
  }
  return false;
}

// A string whose last byte is a backslash, of an escaped one.
bool EndsInBackslash(std::string_view raw) {
  return raw[raw.size() - 2] == '\\';
}

bool HasFraction(std::string_view raw) {
  return raw.find_first_of(".eE") != std::string_view::npos;
}

bool IsLiteral(Kind kind) {
  return kind == Kind::kTrue || kind == Kind::kFalse || kind == Kind::kNull;
}

template <class Integer>
bool IsBeyond(std::string_view raw) {
  const auto number = nlohmann::json::parse(raw);
  return number.is_number_unsigned()  ? !std::in_range<Integer>(number.get<std::uint64_t>())
         : number.is_number_integer() ? !std::in_range<Integer>(number.get<std::int64_t>())
                                      : true;
}

template <class Integer>
Found PlainNumber(std::string_view raw) {
  return HasFraction(raw)         ? Found(Class::kFraction)
         : IsBeyond<Integer>(raw) ? Found(Class::kBeyondRange)
                                  : std::nullopt;
}

Found RequestField(const Value& value) {
  return value.kind == Kind::kString && HasEscape(value.raw, "bfnrtu") ? Found(Class::kEscape)
                                                                       : std::nullopt;
}

Found FlatJsonString(const Value& value) {
  if (value.kind != Kind::kString) {
    return Class::kNoStringRunsOn;
  }
  return EndsInBackslash(value.raw)            ? Found(Class::kEndsInBackslash)
         : HasEscape(value.raw, "\"\\/bfnrtu") ? Found(Class::kEscape)
                                               : std::nullopt;
}

template <class Integer>
Found NumberOrZero(const Value& value) {
  return value.kind == Kind::kNumber ? PlainNumber<Integer>(value.raw)
                                     : Found(Class::kNoNumberIsZero);
}

Found JsonString(const Value& value) {
  if (value.kind != Kind::kString) {
    return std::nullopt;
  }
  return value.behindLineBreak                 ? Found(Class::kLineBreak)
         : EndsInBackslash(value.raw)          ? Found(Class::kEndsInBackslash)
         : HasEscape(value.raw, "bfrtu", true) ? Found(Class::kEscape)
                                               : std::nullopt;
}

Found JsonInt(const Value& value) {
  if (value.kind == Kind::kString) {
    return value.behindLineBreak ? Class::kLineBreak : Class::kQuotedNumber;
  }
  return NumberOrZero<std::int64_t>(value);
}

Found JsonOptionalInt(const Value& value) {
  if (value.kind == Kind::kNull) {
    return value.behindLineBreak ? Found(Class::kLineBreak) : std::nullopt;
  }
  return NumberOrZero<std::int64_t>(value);
}

Found JsonBool(const Value& value) {
  return value.kind == Kind::kNumber                          ? Found(Class::kNumberAsFlag)
         : value.kind == Kind::kTrue && value.behindLineBreak ? Found(Class::kLineBreak)
                                                              : std::nullopt;
}

bool HasBracketInString(const Value& value, std::string_view brackets) {
  return std::ranges::any_of(value.inside, [&](const Token& token) {
    return token.kind <= Kind::kString &&
           Raw(value.document.text, token).find_first_of(brackets) != std::string_view::npos;
  });
}

Found JsonObject(const Value& value) {
  return value.kind != Kind::kObject       ? Found(Class::kRunsOnToBracket)
         : HasBracketInString(value, "{}") ? Found(Class::kBracketInString)
                                           : std::nullopt;
}

Found JsonObjectArray(const Value& value) {
  if (value.kind != Kind::kArray) {
    return Class::kRunsOnToBracket;
  }
  if (HasBracketInString(value, "{}[]")) {
    return Class::kBracketInString;
  }
  const bool hasArray = std::ranges::any_of(value.inside, [&](const Token& token) {
    return token.kind == Kind::kArray && token.depth == value.depth + 1;
  });
  return hasArray ? Found(Class::kNestedArray) : std::nullopt;
}

Found JsonNumberArray(const Value& value) {
  if (value.kind != Kind::kArray) {
    return Class::kRunsOnToBracket;
  }
  constexpr double kExact = 9007199254740992.0;  // 2^53, to which the next number is rounded
  Found found;
  for (const Token& token : value.inside) {
    const std::string_view raw = Raw(value.document.text, token);
    if (token.kind != Kind::kNumber && !IsLiteral(token.kind)) {
      return Class::kDigitsAnywhere;
    }
    if (token.kind == Kind::kNumber && HasFraction(raw)) {
      found = Class::kFraction;
    } else if (token.kind == Kind::kNumber && !found) {
      const double number = nlohmann::json::parse(raw).get<double>();
      found = number >= kExact || number <= -kExact ? Found(Class::kThroughADouble) : found;
    }
  }
  return found;
}

Found ParseExpiredAt(const Value& value) {
  if (value.kind == Kind::kNumber) {
    return PlainNumber<std::int64_t>(value.raw);
  }
  if (value.kind != Kind::kString) {
    return std::nullopt;
  }
  return value.behindLineBreak                 ? Found(Class::kLineBreak)
         : EndsInBackslash(value.raw)          ? Found(Class::kEndsInBackslash)
         : HasEscape(value.raw, "\"\\/bfnrtu") ? Found(Class::kEscape)
                                               : std::nullopt;
}

}  // namespace

std::optional<Class> ValueClass(Reader reader, const Document& document, const Token& key) {
  constexpr std::array<Found (*)(const Value&), kReaders> kByReader = {
      RequestField,    FlatJsonString, NumberOrZero<std::int32_t>,
      JsonString,      JsonInt,        JsonOptionalInt,
      JsonBool,        JsonObject,     JsonObjectArray,
      JsonNumberArray, ParseExpiredAt};
  return kByReader.at(static_cast<size_t>(reader))(ValueOf(document, key));
}

}  // namespace strict
