// The one JSON object that --json prints.
#ifndef TAVRIN_CLIENT_JSON_JSON_TEXT_H_
#define TAVRIN_CLIENT_JSON_JSON_TEXT_H_

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include <nlohmann/json.hpp>

namespace vpn {

using Json = nlohmann::ordered_json;

// With the number of the format's version as its first key: raised when a key changes its meaning.
Json NewJson();

// A key with its value, behind those that are there. One function for each kind, since the
// library's own way makes much more code at each place.
void PutText(Json& object, const char* key, const std::wstring& text);
void PutUtf8(Json& object, const char* key, std::string_view text);
void PutNumber(Json& object, const char* key, std::int64_t number);
void PutFlag(Json& object, const char* key, bool flag);
// Null without a value.
void PutIfAny(Json& object, const char* key, const std::optional<std::uint64_t>& number);
void PutNull(Json& object, const char* key);
// The empty value, to be filled; an object that stays empty is null. The place is good until the
// next key or entry is put beside it.
Json& PutObject(Json& object, const char* key);
Json& PutList(Json& object, const char* key);
// A new object at the end of a list.
Json& AppendObject(Json& list);
void AppendText(Json& list, const std::wstring& text);

// Indented, with a line feed at its end. Bytes that are no UTF-8 are replaced.
std::wstring JsonText(const Json& object);
// In one line, without a line feed.
std::wstring JsonLine(const Json& object);

}  // namespace vpn

#endif  // TAVRIN_CLIENT_JSON_JSON_TEXT_H_
