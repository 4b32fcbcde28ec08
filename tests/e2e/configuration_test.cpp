// The configuration that a connect writes for Xray, byte for byte.
#include "tests/e2e/harness/expect.h"
#include "tests/e2e/harness/service_test.h"
#include "tests/standins/text.h"

namespace e2e {
namespace {

class Configuration : public ServiceTest {
 protected:
  std::string Written() const { return ReadText(box.runtime() + L"\\session.json.xray.json"); }
  // What the file should be; the parts that differ between the tests are given.
  std::string Expected(const std::string& address, const std::string& nodeRules) const;
};

constexpr char kUpToAddress[] = R"(  "dns": {
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
          "address": ")";

constexpr char kUpToRules[] = R"(",
          "port": 443,
          "users": [{ "id": "7b1f6c0e-3a52-4d6b-9a53-6a1f9d3a2c11", "encryption": "none", "flow": "xtls-rprx-vision" }]
        }]
      },
      "streamSettings": {
        "network": "tcp",
        "security": "reality",
        "realitySettings": {
          "serverName": "www.tokyo.example",
          "fingerprint": "firefox",
          "publicKey": "Zm9yLXRlc3RzLW9ubHktbm90LWEtcmVhbC1rZXktISE",
          "shortId": "0123456789abcdef"
        },
        "sockopt": {
          "interface": "以太网",
          "tcpKeepAliveIdle": 30,
          "tcpKeepAliveInterval": 15
        }
      }
    },
    { "tag": "direct", "protocol": "freedom", "settings": { "domainStrategy": "UseIPv4" }, "streamSettings": { "sockopt": { "interface": "以太网" } } },
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
)";

constexpr char kEnd[] = R"(      { "type": "field", "ip": ["geoip:cn"], "outboundTag": "direct" },
      { "type": "field", "domain": ["geosite:cn"], "outboundTag": "direct" }
    ]
  }
}
)";

std::string Doubled(const std::string& path) {
  std::string result;
  for (const char c : path) result += c == '\\' ? "\\\\" : std::string(1, c);
  return result;
}

std::string Configuration::Expected(const std::string& address,
                                    const std::string& nodeRules) const {
  const std::string log = Doubled(standins::ToUtf8(box.runtime()) + "\\xray-error.log");
  return "{\n  \"log\": { \"loglevel\": \"warning\", \"error\": \"" + log + "\" },\n" +
         kUpToAddress + address + kUpToRules + nodeRules + kEnd;
}

TEST_F(Configuration, NodeByLiteralHasOneDirectRule) {
  StartService();
  ASSERT_EQ(Ask(R"({"op":"connect"})"), kUp);
  ExpectText(Written(), Expected("203.0.113.9",
                                 "      { \"type\": \"field\", \"ip\": [\"203.0.113.9\"], "
                                 "\"outboundTag\": \"direct\" },\n"));
}

// The name is looked up for Xray alone; the route that keeps the node off the tunnel is the
// deployment's default node.
TEST_F(Configuration, NodeByNameIsResolvedAndHasTwoDirectRules) {
  Account account;
  account.address = "localhost";
  WriteAccount(account);
  StartService();
  ASSERT_EQ(Ask(R"({"op":"connect"})"), kUp);
  ExpectText(Written(), Expected("127.0.0.1",
                                 "      { \"type\": \"field\", \"domain\": [\"full:localhost\"], "
                                 "\"outboundTag\": \"direct\" },\n"
                                 "      { \"type\": \"field\", \"ip\": [\"127.0.0.1\"], "
                                 "\"outboundTag\": \"direct\" },\n"));
  EXPECT_EQ(RouteTexts(machine.Network()).at(4),
            "203.0.113.10/32 via 192.168.1.1 metric 1 on 以太网");
}

TEST_F(Configuration, NodeByNameThatDoesNotResolveKeepsItsName) {
  Account account;
  account.address = "no-such-host.invalid";
  WriteAccount(account);
  StartService();
  ASSERT_EQ(Ask(R"({"op":"connect"})"), kUp);
  ExpectText(Written(),
             Expected("no-such-host.invalid",
                      "      { \"type\": \"field\", \"domain\": [\"full:no-such-host.invalid\"], "
                      "\"outboundTag\": \"direct\" },\n"));
}

TEST_F(Configuration, NextConnectOverwritesTheFile) {
  WriteText(box.runtime() + L"\\session.json.xray.json", std::string(20000, 'x'));
  StartService();
  ASSERT_EQ(Ask(R"({"op":"connect"})"), kUp);
  EXPECT_EQ(Written().substr(0, 10), "{\n  \"log\":");
  EXPECT_EQ(Written().find("xxxx"), std::string::npos);
}

TEST_F(Configuration, XrayWritesItsErrorLogBesideTheFile) {
  StartService();
  ASSERT_EQ(Ask(R"({"op":"connect"})"), kUp);
  EXPECT_NE(ReadText(box.runtime() + L"\\xray-error.log").find("Xray 26.1.1 started"),
            std::string::npos);
}

}  // namespace
}  // namespace e2e
