// The steps of the decoding of a subscription, for its tests.
#ifndef TAVRIN_SRC_PANEL_SUBSCRIPTION_INTERNAL_H_
#define TAVRIN_SRC_PANEL_SUBSCRIPTION_INTERNAL_H_

#include <optional>
#include <string>
#include <string_view>

#include "src/common/node_info.h"

namespace vpn {

// The node of a usable link. Trims the end of `line` in place.
std::optional<NodeInfo> ParseVlessLink(std::string& line);

// Percent-decoded value of the first pair of this key; empty when there is none.
std::string QueryParam(std::string_view query, std::string_view key);

// %XX and "+" for a blank. A percent sign in the last two positions is never decoded.
std::string PercentDecode(std::string_view text);

// By the platform's decoder, line breaks allowed.
std::optional<std::string> DecodeBase64(const std::string& text);

}  // namespace vpn

#endif  // TAVRIN_SRC_PANEL_SUBSCRIPTION_INTERNAL_H_
