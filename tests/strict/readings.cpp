#include "tests/strict/readings.h"

#include <algorithm>
#include <cstdint>

#include "src/account/local_account.h"
#include "src/control/request.h"
#include "src/panel/account_reply.h"
#include "src/panel/json_reader.h"

namespace strict {
namespace {

using nlohmann::json;

// A number, or `fallback` where it decides.
template <class Read>
std::string Number(const Read& read) {
  const auto one = read(1);
  return one == read(2) ? std::to_string(one) : "fallback";
}

std::string Objects(const std::vector<std::string>& objects) {
  std::string written = "[";
  for (const std::string& object : objects) {
    const json parsed = json::parse(object, nullptr, false);
    written += (written.size() > 1 ? "," : "") +
               (parsed.is_discarded() ? "no JSON: " + object : parsed.dump());
  }
  return written + "]";
}

std::string Object(const std::string& object) {
  return object.empty() ? "none" : Objects({object});
}

std::string OptionalNumber(const std::optional<std::int64_t>& number) {
  return number ? std::to_string(*number) : "none";
}

template <class Integer>
bool Fits(const json& value) {
  return value.is_number_unsigned()
             ? std::in_range<Integer>(value.get<std::uint64_t>())
             : value.is_number_integer() && std::in_range<Integer>(value.get<std::int64_t>());
}

template <class Integer>
std::string ParsedNumber(const json* value, const char* otherwise) {
  return value != nullptr && Fits<Integer>(*value) ? std::to_string(value->get<Integer>())
                                                   : otherwise;
}

std::string ParsedNatural(const json* value) {
  const std::string number = ParsedNumber<std::int64_t>(value, "none");
  return number.starts_with('-') ? "none" : number;
}

template <class Wanted>
std::string ParsedElements(const json* value, const Wanted& isWanted) {
  json elements = json::array();
  if (value != nullptr && value->is_array()) {
    std::ranges::copy_if(*value, std::back_inserter(elements), isWanted);
  }
  return elements.dump();
}

// Read by the product too, so that only the place and the form of the value can differ.
std::string ParsedExpiry(const json* value) {
  const std::string alone = value == nullptr ? "{}" : R"({"expired_at":)" + value->dump() + "}";
  return std::to_string(vpn::ParseExpiredAt(alone));
}

// Where the scanners find the key, and where it stands as a member of the whole; npos for neither.
struct Places {
  size_t scanned = std::string::npos;
  const Token* parsed = nullptr;
};

Places PlacesOf(const Document& document, const std::string& key) {
  Places places;
  places.scanned = document.text.find('"' + key + '"');
  for (const Token& token : document.tokens) {
    if (token.kind == Kind::kKey && token.depth == 1 && Decoded(document.text, token) == key) {
      places.parsed = &token;
    }
  }
  return places;
}

Class PlaceClass(const Document& document, size_t scanned) {
  const auto behind = std::ranges::find_if(document.tokens, [&](const Token& token) {
    return token.begin <= scanned && scanned < token.end && token.kind <= Kind::kString;
  });
  if (behind->begin != scanned) {
    return Class::kTailOfAString;
  }
  if (behind->kind == Kind::kString) {
    return Class::kKeyAsValue;
  }
  return behind->depth == 1 ? Class::kFirstOfTwo : Class::kNestedKey;
}

}  // namespace

const char* Name(Class difference) {
  constexpr std::array<const char*, kClasses> kNames = {
      "nested key",        "key as value",       "tail of a string", "first of two",
      "escaped key",       "data stands in",     "line break",       "escape",
      "ends in backslash", "no string runs on",  "quoted number",    "no number is zero",
      "fraction",          "beyond range",       "through a double", "number as flag",
      "bracket in string", "runs on to bracket", "nested array",     "digits anywhere"};
  return kNames.at(static_cast<size_t>(difference));
}

Document::Document(std::string json)
    : text(std::move(json)), parsed(nlohmann::json::parse(text)), tokens(Tokens(text)) {}

std::string Scanned(Reader reader, const Document& document, const std::string& key) {
  const std::string& text = document.text;
  switch (reader) {
    case Reader::kRequestField:
      return vpn::RequestField(text, key);
    case Reader::kFlatJsonString:
      return vpn::FlatJsonString(text, key);
    case Reader::kFlatJsonInt:
      return Number([&](int fallback) { return vpn::FlatJsonInt(text, key, fallback); });
    case Reader::kJsonString:
      return vpn::JsonString(text, key);
    case Reader::kJsonInt:
      return Number([&](std::int64_t fallback) { return vpn::JsonInt(text, key, fallback); });
    case Reader::kJsonOptionalInt:
      return OptionalNumber(vpn::JsonOptionalInt(text, key));
    case Reader::kJsonBool:
      return vpn::JsonBool(text, key) ? "true" : "false";
    case Reader::kJsonObject:
      return Object(vpn::JsonObject(text, key));
    case Reader::kJsonObjectArray:
      return Objects(vpn::JsonObjectArray(text, key));
    case Reader::kJsonNumberArray:
      return json(vpn::JsonNumberArray(text, key)).dump();
    case Reader::kParseExpiredAt:
      return std::to_string(vpn::ParseExpiredAt(text));
  }
  return "no such reader";
}

std::string Parsed(Reader reader, const Document& document, const std::string& key) {
  const json& whole = document.parsed;
  const json* value = whole.is_object() && whole.contains(key) ? &whole[key] : nullptr;
  switch (reader) {
    case Reader::kRequestField:
    case Reader::kFlatJsonString:
    case Reader::kJsonString:
      return value != nullptr && value->is_string() ? value->get<std::string>() : "";
    case Reader::kFlatJsonInt:
      return ParsedNumber<std::int32_t>(value, "fallback");
    case Reader::kJsonInt:
      return ParsedNumber<std::int64_t>(value, "fallback");
    case Reader::kJsonOptionalInt:
      return ParsedNatural(value);
    case Reader::kJsonBool:
      return value != nullptr && value->is_boolean() && value->get<bool>() ? "true" : "false";
    case Reader::kJsonObject:
      return value != nullptr && value->is_object() ? Object(value->dump()) : "none";
    case Reader::kJsonObjectArray:
      return ParsedElements(value, [](const json& element) { return element.is_object(); });
    case Reader::kJsonNumberArray:
      return ParsedElements(value, Fits<std::int64_t>);
    case Reader::kParseExpiredAt:
      return ParsedExpiry(value);
  }
  return "no such reader";
}

std::optional<Class> ClassOf(Reader reader, const Document& document, const std::string& key) {
  const Places places = PlacesOf(document, key);
  if (places.scanned == std::string::npos) {
    if (reader == Reader::kJsonObjectArray && document.text.find("\"data\"") != std::string::npos) {
      return Class::kDataStandsIn;
    }
    return places.parsed != nullptr ? std::optional(Class::kEscapedKey) : std::nullopt;
  }
  if (places.parsed == nullptr || places.parsed->begin != places.scanned) {
    return PlaceClass(document, places.scanned);
  }
  return ValueClass(reader, document, *places.parsed);
}

}  // namespace strict
