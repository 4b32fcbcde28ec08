// The configuration that one node gives, written out, and the fixture that generates it.
#ifndef TAVRIN_TESTS_UNIT_XRAYCONF_EXPECTED_CONFIG_H_
#define TAVRIN_TESTS_UNIT_XRAYCONF_EXPECTED_CONFIG_H_

#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "src/xrayconf/xray_config.h"
#include "tests/sim/fixture.h"
#include "tests/unit/status.h"

namespace vpn {

using Texts = std::vector<std::string>;

// The file for the node of the fixture: 66 lines and the one of the node's own rule.
inline constexpr char kExpected[] = R"json({
  "log": { "loglevel": "warning", "error": "C:\\run\\xray-error.log" },
  "dns": {
    "servers": [
      { "address": "223.5.5.5", "domains": ["geosite:cn", "domain:panel.example"], "expectIPs": ["geoip:cn"], "skipFallback": true },
      "1.1.1.1"
    ],
    "queryStrategy": "UseIPv4"
  },
  "inbounds": [
    {
      "tag": "socks",
      "port": 17593,
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
          "address": "203.0.113.9",
          "port": 443,
          "users": [{ "id": "0b0b0b0b-1111-2222-3333-444444444444", "encryption": "none", "flow": "xtls-rprx-vision" }]
        }]
      },
      "streamSettings": {
        "network": "tcp",
        "security": "reality",
        "realitySettings": {
          "serverName": "www.example.org",
          "fingerprint": "chrome",
          "publicKey": "KEY-of_the-node-with-43-characters-AAAAAAAA",
          "shortId": "0a1b2c3d"
        },
        "sockopt": {
          "interface": "Ethernet",
          "tcpKeepAliveIdle": 30,
          "tcpKeepAliveInterval": 15
        }
      }
    },
    { "tag": "direct", "protocol": "freedom", "settings": { "domainStrategy": "UseIPv4" }, "streamSettings": { "sockopt": { "interface": "Ethernet" } } },
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
      { "type": "field", "domain": ["geosite:google", "domain:google.com", "domain:anthropic.com", "domain:claude.ai", "domain:claude.com", "domain:cursor.com", "domain:cursor.sh", "domain:cursorapi.com"], "outboundTag": "proxy" },
      { "type": "field", "ip": ["geoip:private"], "outboundTag": "direct" },
      { "type": "field", "ip": ["223.5.5.5", "223.6.6.6", "119.29.29.29", "119.28.28.28", "180.76.76.76"], "outboundTag": "direct" },
      { "type": "field", "domain": ["domain:panel.example"], "outboundTag": "direct" },
      { "type": "field", "ip": ["203.0.113.9"], "outboundTag": "direct" },
      { "type": "field", "ip": ["geoip:cn"], "outboundTag": "direct" },
      { "type": "field", "domain": ["geosite:cn"], "outboundTag": "direct" }
    ]
  }
}
)json";

// Lines of that text, counted from 1.
enum Line {
  kErrorLog = 2,
  kAddress = 26,
  kPort = 27,
  kUser = 28,
  kServerName = 35,
  kFingerprint = 36,
  kPublicKey = 37,
  kShortId = 38,
  kProxyInterface = 41,
  kDirectOutbound = 47,
  kNodeRule = 62,
};

// The expected text with other lines in place of some; a replacement may hold several.
inline std::string ExpectedWith(const std::map<int, std::string>& changes) {
  std::istringstream lines(kExpected);
  std::string text;
  std::string line;
  for (int number = 1; std::getline(lines, line); ++number) {
    const auto change = changes.find(number);
    text += (change == changes.end() ? line : change->second) + '\n';
  }
  return text;
}

class XrayConfigTest : public sim::MachineTest {
 protected:
  void SetUp() override {
    machine.files.PutDirectory(L"C:\\run");
    node.name = L"東京";
    node.address = L"203.0.113.9";
    node.port = 443;
    node.uuid = L"0b0b0b0b-1111-2222-3333-444444444444";
    node.sni = L"www.example.org";
    node.publicKey = L"KEY-of_the-node-with-43-characters-AAAAAAAA";
    node.shortId = L"0a1b2c3d";
  }

  std::string Generate(const std::wstring& path = L"C:\\run\\session.json.xray.json") {
    EXPECT_TRUE(unit::Succeeds(GenerateXrayConfig(node, alias, path), error));
    EXPECT_EQ(error, L"earlier");
    return machine.files.Read(path).value_or("no file");
  }

  NodeInfo node;
  std::wstring alias = L"Ethernet";
  std::wstring error = L"earlier";
};

}  // namespace vpn

#endif  // TAVRIN_TESTS_UNIT_XRAYCONF_EXPECTED_CONFIG_H_
