// Where the strings of a text of JSON end, damaged or not.
#ifndef TAVRIN_CLIENT_JSON_JSON_STRINGS_H_
#define TAVRIN_CLIENT_JSON_JSON_STRINGS_H_

#include <cstddef>
#include <string_view>

namespace vpn {

// Position behind the closing quote of the string that begins at `open`; the text's end when it is
// never closed.
size_t EndOfString(std::string_view json, size_t open);

// The string that ends at `end` is a key: a colon follows.
bool IsKeyBefore(std::string_view json, size_t end);

}  // namespace vpn

#endif  // TAVRIN_CLIENT_JSON_JSON_STRINGS_H_
