// The panel's JSON scanners. The input's first line is the key, the rest is the text.
#include "src/panel/json_reader.h"

#include <algorithm>
#include <nlohmann/json.hpp>

#include "src/panel/request_text.h"
#include "tests/fuzz/fuzz.h"

using fuzz::Require;

namespace {

// Opens with a brace, and the braces balance at its end and nowhere before.
bool IsObject(std::string_view text) {
  int depth = 0;
  for (size_t at = 0; at < text.size(); ++at) {
    depth += text[at] == '{' ? 1 : text[at] == '}' ? -1 : 0;
    if (depth <= 0) {
      return depth == 0 && at + 1 == text.size();
    }
  }
  return false;
}

void CheckEscapes(const std::string& text) {
  const std::string escaped = vpn::JsonEscape(text);
  Require(vpn::JsonUnescape(escaped) == text, "what was escaped reads back as it was");
  Require(vpn::JsonUnescape(text).size() <= text.size(), "decoding makes nothing longer");
  if (text.empty() || text.back() != '\\') {
    Require(vpn::JsonString("{\"a\":1,\"k\":\"" + escaped + "\",\"b\":\"c\"}", "k") == text,
            "a written string reads back as it was");
  }
}

void CheckObjects(const std::string& text, const std::string& key) {
  const std::string object = vpn::JsonObject(text, key);
  Require(object.empty() || (IsObject(object) && text.find(object) != std::string::npos),
          "an object is a balanced piece of the text");
  const std::string data = vpn::JsonObject(text, "data");
  Require(vpn::JsonDataObject(text) == (data.empty() ? text : data),
          "the data object is that of the key `data`, else the whole text");
  const std::vector<std::string> array = vpn::JsonObjectArray(text, key);
  size_t from = 0;
  for (const std::string& element : array) {
    Require(IsObject(element), "an element is a balanced object");
    const size_t at = text.find(element, from);
    Require(at != std::string::npos, "elements stand in the text in their order, side by side");
    from = at + element.size();
  }
  if (text.find('"' + key + '"') == std::string::npos) {
    Require(object.empty(), "no key, no object");
    Require(array == vpn::JsonObjectArray(text, "data"), "no key, so the key `data` serves");
    Require(vpn::JsonNumberArray(text, key).empty(), "no key, no numbers");
  }
}

void CheckNumbers(const std::string& text, const std::string& key) {
  const std::int64_t one = vpn::JsonInt(text, key, 1);
  const std::int64_t two = vpn::JsonInt(text, key, 2);
  const size_t found = text.find('"' + key + '"');
  const size_t colon = found == std::string::npos ? found : text.find(':', found + key.size() + 2);
  const std::optional<std::int64_t> optional = vpn::JsonOptionalInt(text, key);
  if (colon == std::string::npos) {
    Require(one == 1 && two == 2, "without key and colon the fallback serves");
    Require(!optional, "without key and colon there is no number");
    Require(!vpn::JsonBool(text, key) && vpn::JsonString(text, key).empty(),
            "without key and colon there is neither flag nor text");
    return;
  }
  Require(one == two, "with key and colon the fallback is out of play");
  const size_t at = std::min(text.find_first_not_of(" \t", colon + 1), text.size());
  const bool quoted = at < text.size() && text[at] == '"';
  Require(!optional || *optional >= 0, "a number is given when it is not negative");
  Require(quoted || !optional || optional == one, "both readers see one number");
  Require(quoted || vpn::JsonBool(text, key) || one == 0, "a number other than 0 is true");
  Require(quoted || vpn::JsonString(text, key).empty(), "what is not quoted is no text");
  const size_t digits = static_cast<size_t>(std::count_if(text.begin(), text.end(), [](char c) {
    return c == '-' || c == '.' || (c >= '0' && c <= '9');
  }));
  Require(vpn::JsonNumberArray(text, key).size() <= digits, "each number has a digit of its own");
}

// Where the text is proper JSON and the key stands in it once, a strict parser sees the same.
void CompareWithParser(const std::string& text, const std::string& key) {
  const std::string quoted = '"' + key + '"';
  const size_t first = text.find(quoted);
  if (!text.starts_with('{') || text.find_first_of("\\\r\n") != std::string::npos ||
      first == std::string::npos || text.find(quoted, first + 1) != std::string::npos) {
    return;
  }
  const auto parsed = nlohmann::json::parse(text, nullptr, false);
  const auto value = parsed.is_object() ? parsed.find(key) : parsed.end();
  if (!parsed.is_object() || value == parsed.end()) {
    return;
  }
  if (value->is_string()) {
    Require(vpn::JsonString(text, key) == value->get_ref<const std::string&>(), "the same string");
  } else if (value->is_number_integer() && !value->is_number_unsigned()) {
    Require(vpn::JsonInt(text, key, 1) == value->get<std::int64_t>(), "the same negative number");
  } else if (value->is_number_unsigned() && value->get<std::uint64_t>() <= INT64_MAX) {
    Require(vpn::JsonInt(text, key, 1) == value->get<std::int64_t>(), "the same number");
  } else if (value->is_boolean()) {
    Require(vpn::JsonBool(text, key) == value->get<bool>(), "the same flag");
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, size_t size) {
  std::string_view rest = fuzz::Bytes(data, size);
  const std::string key(fuzz::TakeUntil(rest, '\n'));
  const std::string text(rest);
  CheckEscapes(text);
  CheckObjects(text, key);
  CheckNumbers(text, key);
  CompareWithParser(text, key);
  return 0;
}
