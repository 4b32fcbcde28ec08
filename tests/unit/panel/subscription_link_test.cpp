// One vless:// link, and the small tools that read it.
#include <optional>
#include <string>
#include <string_view>

#include "src/panel/subscription_internal.h"
#include "tests/sim/fixture.h"

namespace vpn {
namespace {

class Link : public sim::MachineTest {
 protected:
  // Whether the link is taken; `node` holds what it gave.
  bool Take(std::string line) {
    const std::optional<NodeInfo> taken = ParseVlessLink(line);
    node = taken.value_or(NodeInfo());
    return taken.has_value();
  }
  void ExpectHostAndPort(const std::string& link, const wchar_t* host, int port) {
    EXPECT_TRUE(Take(link)) << link;
    EXPECT_EQ(node.address, host) << link;
    EXPECT_EQ(node.port, port) << link;
  }

  NodeInfo node;
};

TEST_F(Link, FillsEveryField) {
  EXPECT_TRUE(
      Take("vless://0a-1b@node.example:8443?pbk=KEY&flow=flow-x&sni=sni.example&fp=firefox"
           "&sid=6ba8#%E4%B8%9C%E4%BA%AC+01"));
  EXPECT_EQ(node.name, L"东京 01");
  EXPECT_EQ(node.address, L"node.example");
  EXPECT_EQ(node.port, 8443);
  EXPECT_EQ(node.uuid, L"0a-1b");
  EXPECT_EQ(node.flow, L"flow-x");
  EXPECT_EQ(node.sni, L"sni.example");
  EXPECT_EQ(node.fingerprint, L"firefox");
  EXPECT_EQ(node.publicKey, L"KEY");
  EXPECT_EQ(node.shortId, L"6ba8");
}

TEST_F(Link, KeepsTheDefaultsWhereItSaysNothing) {
  EXPECT_TRUE(Take("vless://id@host:443?pbk=k"));
  EXPECT_EQ(node.name, L"host");
  EXPECT_EQ(node.flow, L"xtls-rprx-vision");
  EXPECT_EQ(node.sni, L"");
  EXPECT_EQ(node.fingerprint, L"chrome");
  EXPECT_EQ(node.shortId, L"");
}

TEST_F(Link, EmptyValuesCountAsAbsent) {
  EXPECT_TRUE(Take("vless://id@host:443?pbk=k&flow=&sni=&fp=&sid="));
  EXPECT_EQ(node.flow, L"xtls-rprx-vision");
  EXPECT_EQ(node.sni, L"");
  EXPECT_EQ(node.fingerprint, L"chrome");
  EXPECT_EQ(node.shortId, L"");
}

TEST_F(Link, EachSecondKeyServesWhereTheFirstHasNoValue) {
  EXPECT_TRUE(Take("vless://id@host:443?publicKey=K&servername=S&shortId=I"));
  EXPECT_EQ(node.publicKey, L"K");
  EXPECT_EQ(node.sni, L"S");
  EXPECT_EQ(node.shortId, L"I");
  EXPECT_TRUE(Take("vless://id@host:443?pbk=&publicKey=K&sni=&servername=x&sid=&shortId=I"));
  EXPECT_EQ(node.publicKey, L"K");
  EXPECT_EQ(node.sni, L"x");
  EXPECT_EQ(node.shortId, L"I");
}

TEST_F(Link, EachFirstKeyWinsWhereBothHaveAValue) {
  EXPECT_TRUE(Take("vless://id@host:443?publicKey=no&pbk=K&servername=no&sni=S&shortId=no&sid=I"));
  EXPECT_EQ(node.publicKey, L"K");
  EXPECT_EQ(node.sni, L"S");
  EXPECT_EQ(node.shortId, L"I");
}

TEST_F(Link, SecurityTypeAndEncryptionAreNotLookedAt) {
  EXPECT_TRUE(Take("vless://id@host:443?security=tls&type=grpc&encryption=mlkem&pbk=k"));
  EXPECT_EQ(node.flow, L"xtls-rprx-vision");
  EXPECT_EQ(node.publicKey, L"k");
}

TEST_F(Link, IsDroppedWithoutAPublicKey) {
  for (const char* link : {"vless://id@host:443", "vless://id@host:443?", "vless://id@host:443?pbk",
                           "vless://id@host:443?pbk=", "vless://id@host:443?pbk=&publicKey=",
                           "vless://id@host:443?PBK=k", "vless://id@host:443#?pbk=k"}) {
    EXPECT_FALSE(Take(link)) << link;
  }
}

TEST_F(Link, TheNodeIsUntouchedWhenTheLinkIsRefused) {
  for (std::string link : {"vless://id@host:443#name", "vless://id@host:0?pbk=k", "vmess://x"}) {
    EXPECT_FALSE(ParseVlessLink(link).has_value());
  }
}

TEST_F(Link, TheEndIsTrimmedInPlaceAndTheFrontIsNot) {
  std::string line = "vless://id@host:443?pbk=k#name \r\n \r";
  EXPECT_EQ(ParseVlessLink(line).value().name, L"name");
  EXPECT_EQ(line, "vless://id@host:443?pbk=k#name");
  line = " \r\n";
  EXPECT_FALSE(ParseVlessLink(line).has_value());
  EXPECT_EQ(line, "");
  EXPECT_FALSE(Take(" vless://id@host:443?pbk=k"));
  EXPECT_FALSE(Take("\tvless://id@host:443?pbk=k"));
}

TEST_F(Link, ATabAtTheEndStays) {
  EXPECT_TRUE(Take("vless://id@host:443?pbk=k#name\t"));
  EXPECT_EQ(node.name, L"name\t");
}

TEST_F(Link, TheSchemeIsComparedExactly) {
  for (const char* link : {"", "v", "vless:/", "vless://", "VLESS://id@host:443?pbk=k",
                           "Vless://id@host:443?pbk=k", "vles://id@host:443?pbk=k"}) {
    EXPECT_FALSE(Take(link)) << link;
  }
}

TEST_F(Link, AnEmptyNameBecomesTheHost) {
  EXPECT_TRUE(Take("vless://id@host:443?pbk=k#"));
  EXPECT_EQ(node.name, L"host");
  EXPECT_TRUE(Take("vless://id@[2001:db8::1]:443?pbk=k"));
  EXPECT_EQ(node.name, L"2001:db8::1");
}

TEST_F(Link, TheNameBeginsBehindTheFirstHash) {
  EXPECT_TRUE(Take("vless://id@host:443?pbk=k#a#b?c@d"));
  EXPECT_EQ(node.name, L"a#b?c@d");
  EXPECT_EQ(node.publicKey, L"k");
}

TEST_F(Link, APlusInTheNameIsABlankAndAnEscapedOneAPlus) {
  EXPECT_TRUE(Take("vless://id@host:443?pbk=k#a+b%2Bc%20d"));
  EXPECT_EQ(node.name, L"a b+c d");
}

TEST_F(Link, TheQueryBeginsBehindTheFirstQuestionMark) {
  EXPECT_TRUE(Take("vless://id@host:443?a?pbk=x&pbk=k?"));
  EXPECT_EQ(node.publicKey, L"k?");
}

TEST_F(Link, TheLastAtSignEndsTheUuid) {
  EXPECT_TRUE(Take("vless://a@b@host:443?pbk=k"));
  EXPECT_EQ(node.uuid, L"a@b");
  EXPECT_EQ(node.address, L"host");
}

TEST_F(Link, TheUuidIsNotDecoded) {
  EXPECT_TRUE(Take("vless://a%41+b@host:443?pbk=k"));
  EXPECT_EQ(node.uuid, L"a%41+b");
}

TEST_F(Link, IsDroppedWithoutUuidOrHost) {
  for (const char* link : {"vless://host:443?pbk=k", "vless://@host:443?pbk=k", "vless://id@?pbk=k",
                           "vless://id@:443?pbk=k", "vless://id@[]:443?pbk=k",
                           "vless://id@host?pbk=k", "vless://?pbk=k"}) {
    EXPECT_FALSE(Take(link)) << link;
  }
}

TEST_F(Link, AnAtSignInTheQueryIsNone) {
  EXPECT_FALSE(Take("vless://host:443?pbk=k@x"));
}

TEST_F(Link, ThePortIsReadUpToTheFirstOtherCharacter) {
  ExpectHostAndPort("vless://id@host:443x?pbk=k", L"host", 443);
  ExpectHostAndPort("vless://id@host:443/path?pbk=k", L"host", 443);
  ExpectHostAndPort("vless://id@host:0443?pbk=k", L"host", 443);
  ExpectHostAndPort("vless://id@host: 443?pbk=k", L"host", 443);
}

TEST_F(Link, APortBelow1IsRefusedAndNoneIsTooHigh) {
  EXPECT_FALSE(Take("vless://id@host:0?pbk=k"));
  EXPECT_FALSE(Take("vless://id@host:-1?pbk=k"));
  EXPECT_FALSE(Take("vless://id@host:?pbk=k"));
  EXPECT_FALSE(Take("vless://id@host:x443?pbk=k"));
  ExpectHostAndPort("vless://id@host:1?pbk=k", L"host", 1);
  ExpectHostAndPort("vless://id@host:65535?pbk=k", L"host", 65535);
  ExpectHostAndPort("vless://id@host:70000?pbk=k", L"host", 70000);
}

TEST_F(Link, TheLastColonEndsTheHost) {
  ExpectHostAndPort("vless://id@2001:db8::1:443?pbk=k", L"2001:db8::1", 443);
  ExpectHostAndPort("vless://id@host]:443?pbk=k", L"host]", 443);
}

TEST_F(Link, AnIpv6AddressStandsInBrackets) {
  ExpectHostAndPort("vless://id@[2001:db8::1]:443?pbk=k", L"2001:db8::1", 443);
  EXPECT_FALSE(Take("vless://id@[2001:db8::1]?pbk=k"));
  EXPECT_FALSE(Take("vless://id@[2001:db8::1]x:443?pbk=k"));
  EXPECT_FALSE(Take("vless://id@[2001:db8::1]x443?pbk=k"));
  EXPECT_FALSE(Take("vless://id@[2001:db8::1:443?pbk=k"));
  EXPECT_FALSE(Take("vless://id@[2001:db8::1]:?pbk=k"));
}

TEST_F(Link, QueryValuesArePercentDecodedAndBecomeWideText) {
  EXPECT_TRUE(
      Take("vless://id@host:443?pbk=a%2Bb%3D&sni=%E4%B8%AD.example&fp=a+b&%73id=1&flow=%25"));
  EXPECT_EQ(node.publicKey, L"a+b=");
  EXPECT_EQ(node.sni, L"中.example");
  EXPECT_EQ(node.fingerprint, L"a b");
  EXPECT_EQ(node.shortId, L"1");
  EXPECT_EQ(node.flow, L"%");
}

TEST_F(Link, BrokenUtf8InANameIsNoError) {
  EXPECT_TRUE(Take("vless://id@host:443?pbk=k#a%FFb"));
  EXPECT_EQ(node.name,
            L"a\xFFFD"
            L"b");
  EXPECT_TRUE(Take("vless://id@host:443?pbk=k#%F0%9F%9A%80 x"));
  EXPECT_EQ(node.name, (std::wstring{0xD83D, 0xDE80, L' ', L'x'}));
}

TEST(QueryParam, GivesTheDecodedValueOfTheFirstPairOfItsKey) {
  EXPECT_EQ(QueryParam("a=1&b=2&a=3", "a"), "1");
  EXPECT_EQ(QueryParam("a=1&b=2", "b"), "2");
  EXPECT_EQ(QueryParam("a=x%20y+z", "a"), "x y z");
  EXPECT_EQ(QueryParam("%61=1", "a"), "1");
  EXPECT_EQ(QueryParam("a=b=c", "a"), "b=c");
}

TEST(QueryParam, TheFirstMatchCountsEvenWithAnEmptyValue) {
  EXPECT_EQ(QueryParam("a=&a=2", "a"), "");
  EXPECT_EQ(QueryParam("a&a=2", "a"), "");
}

TEST(QueryParam, KeysAreComparedWholeAndByCase) {
  EXPECT_EQ(QueryParam("A=1&aa=2&xa=3", "a"), "");
}

TEST(QueryParam, GivesNothingWhereThereIsNothing) {
  EXPECT_EQ(QueryParam("", "a"), "");
  EXPECT_EQ(QueryParam("&&", "a"), "");
  EXPECT_EQ(QueryParam("b=1", "a"), "");
  EXPECT_EQ(QueryParam("&&a=1&", "a"), "1");
}

TEST(PercentDecode, UndoesEscapesOfEitherCaseAndPlusSigns) {
  EXPECT_EQ(PercentDecode("a%41%4a%4Ab"), "aAJJb");
  EXPECT_EQ(PercentDecode("a+b%2B+"), "a b+ ");
  EXPECT_EQ(PercentDecode("%00%ff|"), std::string("\0\xFF|", 3));
}

TEST(PercentDecode, AnEscapeAtTheVeryEndIsUndone) {
  EXPECT_EQ(PercentDecode("a%41"), "aA");
}

TEST(PercentDecode, ReadsNothingBehindItsText) {
  EXPECT_EQ(PercentDecode(std::string_view("a%41").substr(0, 3)), "a%4");
  EXPECT_EQ(PercentDecode(std::string_view("a%41").substr(0, 2)), "a%");
}

TEST(PercentDecode, WhatDoesNotFitStaysAsItIs) {
  EXPECT_EQ(PercentDecode("%"), "%");
  EXPECT_EQ(PercentDecode("%4"), "%4");
  EXPECT_EQ(PercentDecode("a%"), "a%");
  EXPECT_EQ(PercentDecode("%4g%g4%%41%+1"), "%4g%g4%A% 1");
  EXPECT_EQ(PercentDecode("%@1%`1%1G%:0%/0"), "%@1%`1%1G%:0%/0");
  EXPECT_EQ(PercentDecode(""), "");
}

}  // namespace
}  // namespace vpn
