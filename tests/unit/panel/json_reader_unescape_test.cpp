#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "src/panel/json_reader.h"
#include "src/panel/request_text.h"

namespace vpn {
namespace {

TEST(JsonUnescape, DecodesTheFiveEscapesThatThePanelUses) {
  const std::vector<std::pair<std::string, std::string>> table = {
      {R"(\")", "\""},
      {R"(\/)", "/"},
      {R"(\\)", "\\"},
      {R"(\n)", "\n"},
      {R"(a\/b\/c)", "a/b/c"},
      {R"(\\n)", "\\n"},
      {R"(\\\\)", "\\\\"},
      {R"(\\u4e2d)", "\\u4e2d"},
      {R"(\u4e2d)", "\xE4\xB8\xAD"},
      {R"(x\u0041y)", "xAy"},
      {"", ""},
  };
  for (const auto& [text, expected] : table) {
    SCOPED_TRACE(text);
    EXPECT_EQ(JsonUnescape(text), expected);
  }
}

TEST(JsonUnescape, EveryOtherEscapeStaysTwoCharacters) {
  for (const char* text : {R"(a\tb)", R"(\r)", R"(\b)", R"(\f)", R"(\x41)", R"(\U0041)", R"(\ )",
                           R"(\')", R"(\0)", R"(\N)"}) {
    SCOPED_TRACE(text);
    EXPECT_EQ(JsonUnescape(text), text);
  }
}

TEST(JsonUnescape, AnUnknownEscapeConsumesTheBackslashAlone) {
  EXPECT_EQ(JsonUnescape(R"(\t\n)"), "\\t\n");
  EXPECT_EQ(JsonUnescape(R"(\u12\n)"), "\\u12\n");
}

TEST(JsonUnescape, ABackslashInTheLastPositionStays) {
  EXPECT_EQ(JsonUnescape("\\"), "\\");
  EXPECT_EQ(JsonUnescape("abc\\"), "abc\\");
  EXPECT_EQ(JsonUnescape(R"(\\\)"), R"(\\)");
}

TEST(JsonUnescape, WhatStandsBehindTheViewIsNotRead) {
  EXPECT_EQ(JsonUnescape(std::string_view(R"(ab\n)", 3)), "ab\\");
  EXPECT_EQ(JsonUnescape(std::string_view(R"(\u4e2d)", 5)), "\\u4e2");
}

TEST(JsonUnescape, AUnitCutShortOrWithAnotherDigitStaysAsItIs) {
  for (const char* text : {R"(\u)", R"(\u1)", R"(\u12)", R"(\u123)", R"(\u12g4)", R"(\ug123)",
                           R"(\u123g)", R"(\u 123)", R"(\u+123)", R"(\u0x41)", R"(\u12:4)",
                           R"(\u12@4)", R"(\u12`4)", R"(\u12/4)", R"(\u12G4)"}) {
    SCOPED_TRACE(text);
    EXPECT_EQ(JsonUnescape(text), text);
  }
}

TEST(JsonUnescape, HexadecimalDigitsMayBeOfEitherCase) {
  EXPECT_EQ(JsonUnescape(R"(\u4E2D\u4e2D\uABCD\uabcd)"),
            "\xE4\xB8\xAD\xE4\xB8\xAD\xEA\xAF\x8D\xEA\xAF\x8D");
}

TEST(JsonUnescape, UnitsTakeOneTwoOrThreeBytes) {
  EXPECT_EQ(JsonUnescape(R"(\u0000)"), std::string(1, '\0'));
  EXPECT_EQ(JsonUnescape(R"(\u007f)"), "\x7F");
  EXPECT_EQ(JsonUnescape(R"(\u0080)"), "\xC2\x80");
  EXPECT_EQ(JsonUnescape(R"(\u07ff)"), "\xDF\xBF");
  EXPECT_EQ(JsonUnescape(R"(\u0800)"), "\xE0\xA0\x80");
  EXPECT_EQ(JsonUnescape(R"(\uffff)"), "\xEF\xBF\xBF");
}

TEST(JsonUnescape, TheHalvesOfASurrogatePairAreWrittenEachByItself) {
  EXPECT_EQ(JsonUnescape(R"(\ud83d\ude00)"), "\xED\xA0\xBD\xED\xB8\x80");
}

TEST(JsonUnescape, OtherBytesPassUnchanged) {
  EXPECT_EQ(JsonUnescape("\xFF\xE4\t\r\n\""), "\xFF\xE4\t\r\n\"");
  EXPECT_EQ(JsonUnescape(std::string("a\0b", 3)), std::string("a\0b", 3));
}

TEST(JsonUnescape, UndoesJsonEscape) {
  const std::string text = "a\"b\\c\nd\\n\\\"e\tf";
  EXPECT_EQ(JsonUnescape(JsonEscape(text)), text);
}

}  // namespace
}  // namespace vpn
