#include "src/xrayconf/xray_template.h"

#include <algorithm>

namespace vpn {

// The first outbound is the default, so what no rule matches goes through the node. Of the rules
// the first match wins: DNS from the inbound; broadcast, multicast and link-local, all IPv6, and
// QUIC are blocked; the listed services are proxied ahead of the rules for mainland China; private
// networks, domestic resolvers, the panel, the node itself and mainland China go direct.
const std::string_view kXrayTemplate = R"json({
  "log": { "loglevel": "warning", "error": "%errorLog%" },
  "dns": {
    "servers": [
      { "address": "223.5.5.5", "domains": ["geosite:cn", "domain:%panelDomain%"], "expectIPs": ["geoip:cn"], "skipFallback": true },
      "1.1.1.1"
    ],
    "queryStrategy": "UseIPv4"
  },
  "inbounds": [
    {
      "tag": "socks",
      "port": %socksPort%,
      "listen": "127.0.0.1",
      "protocol": "socks",
      "settings": { "udp": true },
      "sniffing": { "enabled": true, "destOverride": ["http", "tls", "quic"] }
    }
  ],
  "outbounds": [
    {
      "tag": "proxy",
      "protocol": "vless",
      "settings": {
        "vnext": [{
          "address": "%outboundAddress%",
          "port": %port%,
          "users": [{ "id": "%uuid%", "encryption": "none", "flow": "%flow%" }]
        }]
      },
      "streamSettings": {
        "network": "tcp",
        "security": "reality",
        "realitySettings": {
          "serverName": "%sni%",
          "fingerprint": "%fingerprint%",
          "publicKey": "%publicKey%",
          "shortId": "%shortId%"
        },
        "sockopt": {
          "interface": "%interfaceAlias%",
          "tcpKeepAliveIdle": 30,
          "tcpKeepAliveInterval": 15
        }
      }
    },
    { "tag": "direct", "protocol": "freedom", "settings": { "domainStrategy": "UseIPv4" }, "streamSettings": { "sockopt": { "interface": "%interfaceAlias%" } } },
    { "tag": "dns-out", "protocol": "dns", "settings": { "nonIPQuery": "skip" } },
    { "tag": "block", "protocol": "blackhole" }
  ],
  "routing": {
    "domainStrategy": "AsIs",
    "rules": [
      { "type": "field", "inboundTag": ["socks"], "port": 53, "outboundTag": "dns-out" },
      { "type": "field", "ip": ["255.255.255.255/32", "224.0.0.0/4", "169.254.0.0/16"], "outboundTag": "block" },
      { "type": "field", "ip": ["::/0"], "outboundTag": "block" },
      { "type": "field", "network": "udp", "port": "443", "outboundTag": "block" },
      { "type": "field", "domain": ["geosite:google", %proxyDomains%], "outboundTag": "proxy" },
      { "type": "field", "ip": ["geoip:private"], "outboundTag": "direct" },
      { "type": "field", "ip": ["223.5.5.5", "223.6.6.6", "119.29.29.29", "119.28.28.28", "180.76.76.76"], "outboundTag": "direct" },
      { "type": "field", "domain": ["domain:%panelDomain%"], "outboundTag": "direct" },
%nodeDirectRules%      { "type": "field", "ip": ["geoip:cn"], "outboundTag": "direct" },
      { "type": "field", "domain": ["geosite:cn"], "outboundTag": "direct" }
    ]
  }
}
)json";

std::string FillTemplate(std::string_view text, const std::vector<TemplateValue>& values) {
  std::string filled;
  size_t at = 0;
  for (;;) {
    const size_t open = text.find('%', at);
    const size_t close = open == std::string_view::npos ? open : text.find('%', open + 1);
    if (close == std::string_view::npos) {
      return filled.append(text.substr(at));
    }
    const std::string_view name = text.substr(open + 1, close - open - 1);
    const auto value = std::find_if(values.begin(), values.end(),
                                    [&](const TemplateValue& entry) { return entry.name == name; });
    filled += text.substr(at, open - at);
    filled += value == values.end() ? std::string() : value->value;
    at = close + 1;
  }
}

}  // namespace vpn
