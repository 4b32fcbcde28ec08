// Reads the hand-written `account.json` and the small `session.json` beside it: flat text search,
// no nesting, no decoding of escapes.
#ifndef TAVRIN_SRC_ACCOUNT_LOCAL_ACCOUNT_H_
#define TAVRIN_SRC_ACCOUNT_LOCAL_ACCOUNT_H_

#include <string>
#include <string_view>

#include "src/common/status.h"

namespace vpn {

// The whole file, less its first three bytes when the first is 0xEF (a byte-order mark; the other
// two are not looked at). Fails, with `text` untouched, when it can't be opened.
Status ReadTextFile(const std::wstring& path, std::string& text);

// Replaces the file's content. Fails when it can't be opened; whether the write itself worked is
// not tested.
Status WriteTextFile(const std::wstring& path, std::string_view text);

// The text between the first two double quotes behind the key's colon, as it stands. For a value
// that is no string this runs on to the next string in the file.
std::string FlatJsonString(const std::string& json, std::string_view key);

// What `atoi` reads behind the key's colon; `fallback` only for a missing key or colon.
int FlatJsonInt(const std::string& json, std::string_view key, int fallback);

// True when the day "year-month-day" lies before today in UTC; a text with fewer than three numbers
// counts as past. Ranges are not checked.
bool IsDatePast(const std::string& text);

}  // namespace vpn

#endif  // TAVRIN_SRC_ACCOUNT_LOCAL_ACCOUNT_H_
