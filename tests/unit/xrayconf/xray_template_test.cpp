#include "src/xrayconf/xray_template.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>

namespace vpn {
namespace {

TEST(FillTemplate, ReplacesEachPlaceholderEverywhere) {
  EXPECT_EQ(FillTemplate("a%x%b%y%c%x%", {{"x", "1"}, {"y", "2"}}), "a1b2c1");
  EXPECT_EQ(FillTemplate("%x%%x%", {{"x", "1"}}), "11");
  EXPECT_EQ(FillTemplate("%x%", {{"x", ""}}), "");
}

TEST(FillTemplate, AValueThatLooksLikeAPlaceholderStandsAsItIs) {
  EXPECT_EQ(FillTemplate("%x%-%y%", {{"x", "%y%"}, {"y", "%x%"}}), "%y%-%x%");
  EXPECT_EQ(FillTemplate("%x%y%z%", {{"x", "%"}, {"z", "!"}}), "%y!");
}

TEST(FillTemplate, ANameWithoutAValueBecomesEmpty) {
  EXPECT_EQ(FillTemplate("a%unknown%b", {{"x", "1"}}), "ab");
}

TEST(FillTemplate, ALonePercentSignStays) {
  EXPECT_EQ(FillTemplate("a%b", {{"b", "1"}}), "a%b");
  EXPECT_EQ(FillTemplate("%x%%", {{"x", "1"}}), "1%");
  EXPECT_EQ(FillTemplate("", {}), "");
  EXPECT_EQ(FillTemplate("plain", {{"plain", "1"}}), "plain");
}

TEST(XrayTemplate, EveryLineEndsInOneLineFeedAndNothingElse) {
  const std::string text(kXrayTemplate);
  EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 66);
  EXPECT_EQ(text.find('\r'), std::string::npos);
  EXPECT_EQ(text.find("\n\n"), std::string::npos);
  EXPECT_EQ(text.front(), '{');
  EXPECT_EQ(text.substr(text.size() - 3), "\n}\n");
}

TEST(XrayTemplate, HoldsTheFourteenPlaceholders) {
  const std::string text(kXrayTemplate);
  std::multiset<std::string> names;
  for (size_t open = text.find('%'); open != std::string::npos; open = text.find('%', open)) {
    const size_t close = text.find('%', open + 1);
    ASSERT_NE(close, std::string::npos);
    names.insert(text.substr(open + 1, close - open - 1));
    open = close + 1;
  }
  EXPECT_EQ(names, (std::multiset<std::string>{
                       "errorLog", "fingerprint", "flow", "interfaceAlias", "interfaceAlias",
                       "nodeDirectRules", "outboundAddress", "panelDomain", "panelDomain", "port",
                       "proxyDomains", "publicKey", "shortId", "sni", "socksPort", "uuid"}));
}

}  // namespace
}  // namespace vpn
