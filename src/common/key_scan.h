// The steps that the substring readers of JSON text have in common: they look for a quoted key
// anywhere in the text, with no notion of nesting or of being inside a value.
#ifndef TAVRIN_SRC_COMMON_KEY_SCAN_H_
#define TAVRIN_SRC_COMMON_KEY_SCAN_H_

#include <cstddef>
#include <string_view>

namespace vpn {

// Position behind the first occurrence of the key in double quotes; npos when it is not there.
size_t FindBehindKey(std::string_view text, std::string_view key);

// Position behind the first colon that follows the quoted key, wherever it stands; npos when the
// key or the colon is missing.
size_t FindBehindColon(std::string_view text, std::string_view key);

// The first double quote at or behind `from` whose previous byte is no backslash, else the text's
// size. `from` is at least 1.
size_t FindClosingQuote(std::string_view text, size_t from);

// First position at or behind `from` that holds none of `skipped`, else the text's size.
size_t SkipBytes(std::string_view text, size_t from, std::string_view skipped);

}  // namespace vpn

#endif  // TAVRIN_SRC_COMMON_KEY_SCAN_H_
