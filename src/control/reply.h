// The reply's JSON text: a fixed concatenation, the keys always in the same order.
#ifndef TAVRIN_SRC_CONTROL_REPLY_H_
#define TAVRIN_SRC_CONTROL_REPLY_H_

#include <string>

namespace vpn {

// {"ok":…,"running":…,"error":"…"} with no white space outside the error text, in which double
// quotes and backslashes are escaped; control bytes and line feeds pass through raw.
std::string EncodeReply(bool ok, bool running, const std::wstring& error);

}  // namespace vpn

#endif  // TAVRIN_SRC_CONTROL_REPLY_H_
