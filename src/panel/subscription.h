// Decodes a subscription: a text of vless:// links, normally as one base64 block. No networking, no
// error texts: what can't be read is skipped. Texts are UTF-8 until they become a node's field.
#ifndef TAVRIN_SRC_PANEL_SUBSCRIPTION_H_
#define TAVRIN_SRC_PANEL_SUBSCRIPTION_H_

#include <string>
#include <vector>

#include "src/common/node_info.h"

namespace vpn {

// Appends the usable nodes in the order of the lines. Links whose name carries a panel's notice to
// the user are dropped.
void ParseSubscription(const std::string& text, std::vector<NodeInfo>& nodes);

}  // namespace vpn

#endif  // TAVRIN_SRC_PANEL_SUBSCRIPTION_H_
