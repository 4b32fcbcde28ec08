#include "src/panel/request_text.h"

#include <gtest/gtest.h>

#include <string>

namespace vpn {
namespace {

TEST(JsonEscape, EscapesQuoteBackslashAndLineFeedOnly) {
  EXPECT_EQ(JsonEscape("a\"b\\c\nd"), R"(a\"b\\c\nd)");
  EXPECT_EQ(JsonEscape(""), "");
  EXPECT_EQ(JsonEscape("\n\n"), R"(\n\n)");
  EXPECT_EQ(JsonEscape("plain"), "plain");
}

TEST(JsonEscape, PassesEveryOtherByteUnchanged) {
  std::string bytes;
  for (int byte = 0; byte < 256; ++byte) {
    if (byte != '"' && byte != '\\' && byte != '\n') {
      bytes += static_cast<char>(byte);
    }
  }
  EXPECT_EQ(JsonEscape(bytes), bytes);
}

TEST(UrlEncode, LeavesLettersDigitsAndFourMarks) {
  EXPECT_EQ(UrlEncode("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-._@"),
            "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-._@");
}

TEST(UrlEncode, EncodesEveryOtherByteInUpperCase) {
  EXPECT_EQ(UrlEncode(" !\"#$%&'()*+,/"), "%20%21%22%23%24%25%26%27%28%29%2A%2B%2C%2F");
  EXPECT_EQ(UrlEncode(":;<=>?[\\]^`{|}~"), "%3A%3B%3C%3D%3E%3F%5B%5C%5D%5E%60%7B%7C%7D%7E");
  EXPECT_EQ(UrlEncode("\xE4\xB8\xAD\xFF\x01"), "%E4%B8%AD%FF%01");
  EXPECT_EQ(UrlEncode(std::string("a\0b", 3)), "a%00b");
  EXPECT_EQ(UrlEncode("\x7F\x80"), "%7F%80");
}

TEST(UrlEncode, NothingStaysNothing) {
  EXPECT_EQ(UrlEncode(""), "");
}

}  // namespace
}  // namespace vpn
