// The one JSON object that --json prints.
#ifndef TAVRIN_CLIENT_JSON_JSON_TEXT_H_
#define TAVRIN_CLIENT_JSON_JSON_TEXT_H_

#include <cstdint>
#include <string>

#include <nlohmann/json.hpp>

namespace vpn {

using Json = nlohmann::ordered_json;

// With the number of the format's version as its first key: raised when a key changes its meaning.
Json NewJson();

// Values of the client's own texts.
std::string JsonValue(const std::wstring& text);

// A key with its value, behind those that are there. One function for each kind, since the
// library's own way makes much more code at each place.
void PutText(Json& object, const char* key, const std::wstring& text);
void PutNumber(Json& object, const char* key, std::int64_t number);
void PutFlag(Json& object, const char* key, bool flag);
// The empty value, to be filled; an object that stays empty is null.
Json& PutObject(Json& object, const char* key);
Json& PutList(Json& object, const char* key);
// A new object at the end of a list.
Json& AppendObject(Json& list);
void AppendText(Json& list, const std::wstring& text);

// Indented, with a line feed at its end. Bytes that are no UTF-8 are replaced.
std::wstring JsonText(const Json& object);

}  // namespace vpn

#endif  // TAVRIN_CLIENT_JSON_JSON_TEXT_H_
