// Reads the panel's account and server replies.
#ifndef TAVRIN_SRC_PANEL_ACCOUNT_REPLY_H_
#define TAVRIN_SRC_PANEL_ACCOUNT_REPLY_H_

#include <cstdint>
#include <string>
#include <vector>

#include "src/common/node_info.h"

namespace vpn {

// The value of "expired_at" as Unix seconds: a number of seconds or milliseconds, a date (whose
// last second counts, UTC), or a number in quotes. 0 when absent; may be negative.
std::int64_t ParseExpiredAt(const std::string& text);

// UTC calendar date of a second, "%04u-%02u-%02u"; empty for 0, for a negative number, and for one
// beyond the platform's calendar.
std::wstring DateText(std::int64_t unixSeconds);

// Unix seconds of the present time.
std::int64_t NowSeconds();

// One server of the list. The uuid is the account's.
NodeInfo NodeFromServer(const std::string& serverJson, const std::wstring& uuid);

// The usable nodes of a server list, in its order: VLESS by type or without a type, with an
// address, a port, the account's uuid and a public key.
std::vector<NodeInfo> NodesFromServers(const std::vector<std::string>& servers,
                                       const std::wstring& uuid);

}  // namespace vpn

#endif  // TAVRIN_SRC_PANEL_ACCOUNT_REPLY_H_
