#include "client/json/json_strings.h"

#include <gtest/gtest.h>

namespace vpn {
namespace {

TEST(JsonStrings, EndBehindTheirClosingQuote) {
  EXPECT_EQ(EndOfString(R"("a" b)", 0), 3u);
  EXPECT_EQ(EndOfString(R"(x "" y)", 2), 4u);
  EXPECT_EQ(EndOfString(R"("a\"b\\" c)", 0), 8u);
}

TEST(JsonStrings, ThatAreNeverClosedEndWithTheText) {
  EXPECT_EQ(EndOfString(R"("abc)", 0), 4u);
  EXPECT_EQ(EndOfString(R"("a\)", 0), 3u);
  EXPECT_EQ(EndOfString(R"(")", 0), 1u);
}

TEST(JsonStrings, AKeyHasAColonBehindIt) {
  EXPECT_TRUE(IsKeyBefore(R"("a":1)", 3));
  EXPECT_TRUE(IsKeyBefore("\"a\" \t\r\n: 1", 3));
  EXPECT_FALSE(IsKeyBefore(R"("a",1)", 3));
  EXPECT_FALSE(IsKeyBefore(R"("a")", 3));
}

}  // namespace
}  // namespace vpn
