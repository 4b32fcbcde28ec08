// Reads panel JSON, `panel.json` and the panel's `session.json` without a parser: each function
// looks for the first occurrence of the quoted key anywhere in the text, at any depth and even
// inside a value, and reads what follows. Malformed input reads as empty, a default or false. Byte
// strings are UTF-8. Pure functions, any thread.
#ifndef TAVRIN_SRC_PANEL_JSON_READER_H_
#define TAVRIN_SRC_PANEL_JSON_READER_H_

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vpn {

// The balanced object from the first brace behind `"data"`, else the whole body. Braces inside
// strings count like all others, here and below.
std::string JsonDataObject(const std::string& body);

// The balanced object from the first brace behind the key, else empty.
std::string JsonObject(const std::string& text, std::string_view key);

// The top-level objects of the first array behind the key, or behind `"data"` when the key is not
// there. An array that never closes runs to the end of the text.
std::vector<std::string> JsonObjectArray(const std::string& text, std::string_view key);

// The numbers between the first `[` behind the key and the next `]`, truncated toward zero.
std::vector<std::int64_t> JsonNumberArray(const std::string& text, std::string_view key);

// The decoded string; empty for every other kind of value. A value that ends in an escaped
// backslash runs on past its end.
std::string JsonString(const std::string& text, std::string_view key);

// Reads like strtoll, in quotes or not; what holds no number gives 0. `fallback` only for a missing
// key or colon.
std::int64_t JsonInt(const std::string& text, std::string_view key, std::int64_t fallback);

// A number of 0 or more; nothing for a negative one, for `null` and for a missing value. A quoted
// number reads as 0.
std::optional<std::int64_t> JsonOptionalInt(const std::string& text, std::string_view key);

// `true`, or a number other than 0.
bool JsonBool(const std::string& text, std::string_view key);

// Undoes \" \/ \\ \n and \uXXXX (each unit by itself, surrogates included); every other escape
// stays as it is.
std::string JsonUnescape(std::string_view text);

}  // namespace vpn

#endif  // TAVRIN_SRC_PANEL_JSON_READER_H_
