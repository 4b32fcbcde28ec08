// Reads fields out of a request's JSON text by searching for the quoted key. A deliberately small
// scanner: whatever it does not understand is the empty text, never an error.
#ifndef TAVRIN_SRC_CONTROL_REQUEST_H_
#define TAVRIN_SRC_CONTROL_REQUEST_H_

#include <string>
#include <string_view>

namespace vpn {

// String value behind the first occurrence of the quoted key and the next colon; empty for every
// kind of miss. A backslash is dropped and the byte behind it copied as it stands, so `\n` gives
// the letter n. A value without its closing quote is returned as far as it goes.
std::string RequestField(std::string_view text, std::string_view key);

// The field `op`.
std::string RequestOp(std::string_view text);

}  // namespace vpn

#endif  // TAVRIN_SRC_CONTROL_REQUEST_H_
