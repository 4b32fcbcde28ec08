// Decodes a subscription: a text of vless:// links, normally as one base64 block. No networking, no
// error texts: what can't be read is skipped. Texts are UTF-8 until they become a node's field.
#ifndef TAVRIN_SRC_PANEL_SUBSCRIPTION_H_
#define TAVRIN_SRC_PANEL_SUBSCRIPTION_H_

#include <string>
#include <string_view>
#include <vector>

#include "src/common/node_info.h"

namespace vpn {

// Appends the usable nodes in the order of the lines. Links whose name carries a panel's notice to
// the user are dropped.
void ParseSubscription(const std::string& text, std::vector<NodeInfo>& nodes);

// Trims the end of `line` in place. `node`, with its defaults on entry, is filled only on true.
bool ParseVlessLink(std::string& line, NodeInfo& node);

// Percent-decoded value of the first pair of this key; empty when there is none.
std::string QueryParam(std::string_view query, std::string_view key);

// %XX and "+" for a blank. A percent sign in the last two positions is never decoded.
std::string PercentDecode(std::string_view text);

// By the platform's decoder, line breaks allowed. `out` is set on true only.
bool DecodeBase64(const std::string& text, std::string& out);

}  // namespace vpn

#endif  // TAVRIN_SRC_PANEL_SUBSCRIPTION_H_
