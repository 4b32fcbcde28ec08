// How the generator takes a node's address: literals, the look-up, and the rules that follow.
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "src/xrayconf/xray_config_internal.h"
#include "tests/sim/text.h"
#include "tests/unit/xrayconf/expected_config.h"

namespace vpn {
namespace {

TEST(IsIpLiteral, NeedsAColonOrThreeDotsAmongDigits) {
  const std::vector<std::pair<std::string, bool>> table = {
      {"", false},          {"203.0.113.9", true}, {"999.1.2.3", true},     {"1.2.3", false},
      {"1.2.3.4.5", false}, {"...", true},         {"1...", true},          {"1.2.3.4 ", false},
      {" 1.2.3.4", false},  {"1.2.3.a", false},    {"node.example", false}, {"1234", false},
      {"..", false},        {"....", false},       {"2001:db8::1", true},   {":", true},
      {"::", true},         {"host:443", true},    {"1.2.3.4:443", true},   {"1.2.3./", false},
      {"-1.2.3.4", false},  {"01.02.03.04", true}, {"[::1]", true},
  };
  for (const auto& [text, expected] : table) {
    SCOPED_TRACE(text);
    EXPECT_EQ(IsIpLiteral(text), expected);
  }
}

class NodeAddress : public sim::MachineTest {};

TEST_F(NodeAddress, JsonTextsAreUtf8WithQuotesAndBackslashesEscaped) {
  EXPECT_EQ(ToJsonUtf8(L""), "");
  EXPECT_EQ(machine.calls.Count("WideCharToMultiByte"), 0u) << "an empty text needs no conversion";
  EXPECT_EQ(ToJsonUtf8(L"plain"), "plain");
  EXPECT_EQ(ToJsonUtf8(L"a\"b\\c"), R"(a\"b\\c)");
  EXPECT_EQ(ToJsonUtf8(L"\\\""), R"(\\\")");
  EXPECT_EQ(ToJsonUtf8(L"\t\r\n\x01\x7f/"), "\t\r\n\x01\x7f/");
  EXPECT_EQ(ToJsonUtf8(std::wstring(L"a\0b", 3)), std::string("a\0b", 3));
  EXPECT_EQ(ToJsonUtf8(L"é中"), "\xC3\xA9\xE4\xB8\xAD");
  EXPECT_EQ(ToJsonUtf8(sim::Units(L"😀")), "\xF0\x9F\x98\x80");
  EXPECT_EQ(ToJsonUtf8(std::wstring{0xD83D}), "\xEF\xBF\xBD");
}

class XrayConfigAddress : public XrayConfigTest {};

TEST_F(XrayConfigAddress, ALiteralAddressStandsAsItIsAndHasOneRule) {
  EXPECT_EQ(Generate(), kExpected);
  EXPECT_EQ(machine.names.Asked(), Texts());
}

TEST_F(XrayConfigAddress, AnIpv6AddressCountsAsALiteralAndStandsWithoutBrackets) {
  node.address = L"2001:db8::1";
  EXPECT_EQ(
      Generate(),
      ExpectedWith(
          {{kAddress, R"(          "address": "2001:db8::1",)"},
           {kNodeRule,
            R"(      { "type": "field", "ip": ["2001:db8::1"], "outboundTag": "direct" },)"}}));
  EXPECT_EQ(machine.names.Asked(), Texts());
}

TEST_F(XrayConfigAddress, AHostNameThatResolvesGivesItsAddressAndTwoRules) {
  machine.names.Set("node.example", {"203.0.113.9"});
  node.address = L"node.example";
  EXPECT_EQ(
      Generate(),
      ExpectedWith(
          {{kNodeRule,
            R"(      { "type": "field", "domain": ["full:node.example"], "outboundTag": "direct" },)"
            "\n"
            R"(      { "type": "field", "ip": ["203.0.113.9"], "outboundTag": "direct" },)"}}));
  EXPECT_EQ(machine.names.Asked(), Texts{"node.example"});
}

TEST_F(XrayConfigAddress, AHostNameThatDoesNotResolveStaysWithOneRule) {
  node.address = L"nowhere.example";
  EXPECT_EQ(
      Generate(),
      ExpectedWith(
          {{kAddress, R"(          "address": "nowhere.example",)"},
           {kNodeRule,
            R"(      { "type": "field", "domain": ["full:nowhere.example"], "outboundTag": "direct" },)"}}));
  EXPECT_EQ(machine.names.Asked(), Texts{"nowhere.example"});
}

TEST_F(XrayConfigAddress, AnEmptyAddressIsLookedUpLikeAHostName) {
  node.address = L"";
  EXPECT_EQ(Generate(),
            ExpectedWith(
                {{kAddress, R"(          "address": "",)"},
                 {kNodeRule,
                  R"(      { "type": "field", "domain": ["full:"], "outboundTag": "direct" },)"}}));
}

TEST_F(XrayConfigAddress, AnAddressWithAQuoteIsEscapedInTheAddressTheRuleAndTheLookUp) {
  node.address = L"a\"b\\c";
  EXPECT_EQ(
      Generate(),
      ExpectedWith(
          {{kAddress, R"(          "address": "a\"b\\c",)"},
           {kNodeRule,
            R"(      { "type": "field", "domain": ["full:a\"b\\c"], "outboundTag": "direct" },)"}}));
  EXPECT_EQ(machine.names.Asked(), Texts{R"(a\"b\\c)"});
}

TEST_F(XrayConfigAddress, AHostNameWithNonAsciiCharactersStandsAsUtf8) {
  node.address = L"节点.example";
  EXPECT_EQ(
      Generate(),
      ExpectedWith(
          {{kAddress, R"(          "address": "节点.example",)"},
           {kNodeRule,
            R"(      { "type": "field", "domain": ["full:节点.example"], "outboundTag": "direct" },)"}}));
}

}  // namespace
}  // namespace vpn
