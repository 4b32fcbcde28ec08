// The reply's JSON text: a fixed concatenation, the keys always in the same order.
#ifndef TAVRIN_SRC_CONTROL_REPLY_H_
#define TAVRIN_SRC_CONTROL_REPLY_H_

#include <string>
#include <string_view>

namespace vpn {

// {"ok":…,"running":…,"error":"…"} with no white space outside the error text.
std::string EncodeReply(bool ok, bool running, const std::wstring& error);

// Escapes double quotes and backslashes only; control bytes and line feeds pass through raw.
std::string EscapeReplyText(std::string_view bytes);

}  // namespace vpn

#endif  // TAVRIN_SRC_CONTROL_REPLY_H_
