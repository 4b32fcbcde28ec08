// A subscription's text and what becomes of its lines.
#include "src/panel/subscription.h"

#include <string>
#include <vector>

#include "src/panel/subscription_internal.h"
#include "tests/sim/fixture.h"

namespace vpn {
namespace {

using Texts = std::vector<std::string>;
using Names = std::vector<std::wstring>;

class Subscription : public sim::MachineTest {
 protected:
  static Names NamesOf(const std::string& text) {
    std::vector<NodeInfo> nodes;
    ParseSubscription(text, nodes);
    Names names;
    for (const NodeInfo& node : nodes) {
      names.push_back(node.name);
    }
    return names;
  }
};

// "vless://id@a.example:443?pbk=k#one\nvless://id@b.example:443?pbk=k#two\n"
constexpr char kTwoLinksInBase64[] =
    "dmxlc3M6Ly9pZEBhLmV4YW1wbGU6NDQzP3Biaz1rI29uZQp2bGVzczovL2lkQGIuZXhhbXBsZTo0NDM/"
    "cGJrPWsjdHdvCg==";

TEST_F(Subscription, LinksInBase64AreDecoded) {
  EXPECT_EQ(NamesOf(kTwoLinksInBase64), (Names{L"one", L"two"}));
}

TEST_F(Subscription, TheDecoderIsAskedForTheSizeAndThenForTheData) {
  (void)NamesOf(kTwoLinksInBase64);
  EXPECT_EQ(machine.calls.TextsOf("CryptStringToBinaryA"), (Texts{"96, 1, null", "96, 1, buffer"}));
}

TEST_F(Subscription, Base64MayBeWrappedInLinesAndSurroundedByWhiteSpace) {
  EXPECT_EQ(NamesOf(" \t\r\ndmxlc3M6Ly9pZEBhLmV4\r\nYW1wbGU6NDQzP3Biaz1r\r\nI29uZQ==\r\n"),
            Names{L"one"});
}

TEST_F(Subscription, Base64WithoutPaddingIsDecoded) {
  EXPECT_EQ(NamesOf("dmxlc3M6Ly9pZEBhLmV4YW1wbGU6NDQzP3Biaz1rI29uZQ"), Names{L"one"});
}

// The platform's decoder knows the standard alphabet alone: the last two bytes are "-" and "_".
TEST_F(Subscription, Base64OfTheUrlAlphabetIsNotDecoded) {
  EXPECT_EQ(NamesOf("dmxlc3M6Ly9pZEBhLmV4YW1wbGU6NDQzP3Biaz1rI-_"), Names());
}

TEST_F(Subscription, PlainLinksAreTakenAsTheyStandWithoutTheDecoder) {
  EXPECT_EQ(NamesOf("vless://id@a.example:443?pbk=k#one\nvless://id@b.example:443?pbk=k#two"),
            (Names{L"one", L"two"}));
  EXPECT_EQ(machine.calls.Count("CryptStringToBinaryA"), 0u);
}

TEST_F(Subscription, BlanksInFrontOfAPlainTextCostItsFirstLinkOnly) {
  EXPECT_EQ(NamesOf("  vless://id@a.example:443?pbk=k#one\nvless://id@b.example:443?pbk=k#two\n"),
            Names{L"two"});
  EXPECT_EQ(NamesOf("\tvless://id@a.example:443?pbk=k#one\nvless://id@b.example:443?pbk=k#two\n"),
            Names{L"two"});
  EXPECT_EQ(machine.calls.Count("CryptStringToBinaryA"), 0u);
}

TEST_F(Subscription, LineFeedsInFrontOfAPlainTextCostNothing) {
  EXPECT_EQ(NamesOf("\n\r\n\nvless://id@a.example:443?pbk=k#one\n"), Names{L"one"});
}

TEST_F(Subscription, LinesMayEndInCarriageReturnAndLineFeed) {
  EXPECT_EQ(
      NamesOf("vless://id@a.example:443?pbk=k#one\r\n\r\nvless://id@b.example:443?pbk=k#two\r"),
      (Names{L"one", L"two"}));
}

TEST_F(Subscription, ALoneCarriageReturnEndsNoLine) {
  EXPECT_EQ(NamesOf("vless://id@a.example:443?pbk=k#one\rvless://id@b.example:443?pbk=k#two"),
            Names{L"one\rvless://id@b.example:443?pbk=k#two"});
}

TEST_F(Subscription, LinesOfOtherKindsAreSkippedAndTheOrderStays) {
  EXPECT_EQ(
      NamesOf("vmess://x\nvless://id@b.example:443?pbk=k#two\n\n# note\nVLESS://id@c:1?pbk=k\n"
              "vless://broken\nvless://id@a.example:443?pbk=k#one\n"),
      (Names{L"two", L"one"}));
}

TEST_F(Subscription, TextsWithoutLinksGiveNoNodes) {
  for (const char* text :
       {"", " ", "\r\n\t ", "<html></html>", "vless:/", "{\"message\":\"no\"}"}) {
    EXPECT_EQ(NamesOf(text), Names()) << text;
  }
}

TEST_F(Subscription, AnEmptyOrBlankTextIsNotDecoded) {
  (void)NamesOf("");
  (void)NamesOf(" \t\r\n");
  EXPECT_EQ(machine.calls.Count("CryptStringToBinaryA"), 0u);
}

TEST_F(Subscription, Base64OfSomethingElseGivesNoNodes) {
  EXPECT_EQ(NamesOf("aGVsbG8gd29ybGQ="), Names());  // hello world
  EXPECT_EQ(NamesOf("dmxlc3M6Lw=="), Names());      // vless:/
}

TEST_F(Subscription, Base64MayHoldItsFirstLinkAnywhere) {
  // "hello\nvless://id@a.example:443?pbk=k#one"
  EXPECT_EQ(NamesOf("aGVsbG8Kdmxlc3M6Ly9pZEBhLmV4YW1wbGU6NDQzP3Biaz1rI29uZQ=="), Names{L"one"});
}

// A text that the decoder refuses is read line by line as it is.
TEST_F(Subscription, ATextThatIsNoBase64IsReadAsPlain) {
  EXPECT_EQ(NamesOf("# servers\nvless://id@a.example:443?pbk=k#one"), Names{L"one"});
}

TEST_F(Subscription, ADecoderThatFailsAtEitherCallLeavesTheText) {
  machine.faults.Fail("CryptStringToBinaryA", {.nth = 1});
  EXPECT_EQ(NamesOf(kTwoLinksInBase64), Names());
  machine.faults.Fail("CryptStringToBinaryA", {.nth = 2});
  EXPECT_EQ(NamesOf(kTwoLinksInBase64), Names());
  EXPECT_EQ(NamesOf(kTwoLinksInBase64), (Names{L"one", L"two"}));
}

TEST_F(Subscription, NodesAreAppendedToThoseThatAreThere) {
  std::vector<NodeInfo> nodes(1);
  nodes[0].name = L"first";
  ParseSubscription("vless://id@a.example:443?pbk=k#one", nodes);
  ASSERT_EQ(nodes.size(), 2u);
  EXPECT_EQ(nodes[0].name, L"first");
  EXPECT_EQ(nodes[1].name, L"one");
}

TEST_F(Subscription, EachNodeStartsFromTheDefaults) {
  std::vector<NodeInfo> nodes;
  ParseSubscription(
      "vless://u1@a:1?pbk=k1&flow=other&fp=safari&sni=s&sid=01\nvless://u2@b:2?pbk=k2\n", nodes);
  ASSERT_EQ(nodes.size(), 2u);
  EXPECT_EQ(nodes[1].flow, L"xtls-rprx-vision");
  EXPECT_EQ(nodes[1].fingerprint, L"chrome");
  EXPECT_EQ(nodes[1].sni, L"");
  EXPECT_EQ(nodes[1].shortId, L"");
}

TEST_F(Subscription, ANoticeToTheUserIsDroppedAndNoOtherLine) {
  EXPECT_EQ(NamesOf("vless://id@a:1?pbk=k#one\nvless://id@a:1?pbk=k#剩余流量：10 GB\n"
                    "vless://id@a:1?pbk=k#two\n"),
            (Names{L"one", L"two"}));
}

TEST_F(Subscription, EachOfTheFourMarkersDropsALineWhereverItStands) {
  for (const char* name :
       {"剩余流量", "套餐到期", "距离下次", "过滤掉", "[vless]剩余流量：189.8 GB",
        "距离下次重置剩余：12 天", "套餐到期：长期有效", "过滤掉3条线路",
        "%E5%89%A9%E4%BD%99%E6%B5%81%E9%87%8F%EF%BC%9A1 GB"}) {
    EXPECT_EQ(NamesOf("vless://id@a:1?pbk=k#" + std::string(name)), Names()) << name;
  }
}

TEST_F(Subscription, NamesThatOnlyResembleAMarkerStay) {
  EXPECT_EQ(NamesOf("vless://id@a:1?pbk=k#剩余 流量\nvless://id@a:1?pbk=k#套餐\n"),
            (Names{L"剩余 流量", L"套餐"}));
}

// A real node with such a name is a loss that the rule accepts.
TEST_F(Subscription, ARealNodeWhoseNameHoldsAMarkerIsDropped) {
  EXPECT_EQ(NamesOf("vless://id@a:1?pbk=k#香港 03（已过滤掉广告）"), Names());
}

TEST_F(Subscription, AMarkerInAnotherFieldDropsNothing) {
  EXPECT_EQ(NamesOf("vless://剩余流量@a:1?pbk=过滤掉&sni=套餐到期#one"), Names{L"one"});
}

TEST_F(Subscription, ALinkWithoutANameIsJudgedByItsHost) {
  EXPECT_EQ(NamesOf("vless://id@过滤掉:1?pbk=k"), Names());
}

TEST_F(Subscription, TenThousandLinksAreAllRead) {
  std::string text;
  for (int i = 0; i < 10000; ++i) {
    text += "vless://id@host" + std::to_string(i) + ":443?pbk=k\n";
  }
  const Names names = NamesOf(text);
  ASSERT_EQ(names.size(), 10000u);
  EXPECT_EQ(names.front(), L"host0");
  EXPECT_EQ(names.back(), L"host9999");
}

// As a panel sends it: CR LF between the links, all in one block of base64, a notice in front.
TEST_F(Subscription, APanelsOrdinaryReplyGivesItsNodes) {
  const std::string block =
      "dmxlc3M6Ly8xMTExMTExMS0yMjIyLTMzMzMtNDQ0NC01NTU1NTU1NTU1NTVAaGsuZXhhbXBsZTo0NDM/bW9kZT1tdWx0"
      "aSZzZWN1cml0eT1yZWFsaXR5JmVuY3J5cHRpb249bm9uZSZ0eXBlPXRjcCZmbG93PXh0bHMtcnByeC12aXNpb24mcGJr"
      "PUtFWSZzaWQ9MDFhYiZzbmk9c25pLmV4YW1wbGUmc2VydmVybmFtZT1zbmkuZXhhbXBsZSZzcHg9JTJGJmZwPWNocm9t"
      "ZSMlRTUlODklQTklRTQlQkQlOTklRTYlQjUlODElRTklODclOEYlRUYlQkMlOUExODkuOCtHQg0Kdmxlc3M6Ly8xMTEx"
      "MTExMS0yMjIyLTMzMzMtNDQ0NC01NTU1NTU1NTU1NTVAaGsuZXhhbXBsZTo0NDM/bW9kZT1tdWx0aSZzZWN1cml0eT1y"
      "ZWFsaXR5JmVuY3J5cHRpb249bm9uZSZ0eXBlPXRjcCZmbG93PXh0bHMtcnByeC12aXNpb24mcGJrPUtFWSZzaWQ9MDFh"
      "YiZzbmk9c25pLmV4YW1wbGUmc2VydmVybmFtZT1zbmkuZXhhbXBsZSZzcHg9JTJGJmZwPWNocm9tZSMlRTklQTYlOTkl"
      "RTYlQjglQUYrMDENCg==";
  std::vector<NodeInfo> nodes;
  ParseSubscription(block, nodes);
  ASSERT_EQ(nodes.size(), 1u);
  EXPECT_EQ(nodes[0].name, L"香港 01");
  EXPECT_EQ(nodes[0].address, L"hk.example");
  EXPECT_EQ(nodes[0].port, 443);
  EXPECT_EQ(nodes[0].uuid, L"11111111-2222-3333-4444-555555555555");
  EXPECT_EQ(nodes[0].flow, L"xtls-rprx-vision");
  EXPECT_EQ(nodes[0].sni, L"sni.example");
  EXPECT_EQ(nodes[0].fingerprint, L"chrome");
  EXPECT_EQ(nodes[0].publicKey, L"KEY");
  EXPECT_EQ(nodes[0].shortId, L"01ab");
}

TEST_F(Subscription, DecodeBase64SetsItsOutputOnSuccessOnly) {
  EXPECT_EQ(DecodeBase64("*"), std::nullopt);
  EXPECT_EQ(DecodeBase64("QUI=\r\n"), "AB");
  EXPECT_EQ(DecodeBase64("AP8="), std::string("\0\xFF", 2));
  EXPECT_EQ(DecodeBase64("\n"), "");
}

}  // namespace
}  // namespace vpn
