// The one JSON object that --json prints.
#ifndef TAVRIN_CLIENT_JSON_JSON_TEXT_H_
#define TAVRIN_CLIENT_JSON_JSON_TEXT_H_

#include <string>

#include <nlohmann/json.hpp>

namespace vpn {

using Json = nlohmann::ordered_json;

// With the number of the format's version as its first key: raised when a key changes its meaning.
Json NewJson();

// Values of the client's own texts.
std::string JsonValue(const std::wstring& text);

// Indented, with a line feed at its end. Bytes that are no UTF-8 are replaced.
std::wstring JsonText(const Json& object);

}  // namespace vpn

#endif  // TAVRIN_CLIENT_JSON_JSON_TEXT_H_
