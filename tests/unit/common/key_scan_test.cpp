#include "src/common/key_scan.h"

#include <gtest/gtest.h>

#include <string>

namespace vpn {
namespace {

constexpr size_t kNone = std::string_view::npos;

TEST(FindBehindKey, IsThePositionBehindTheClosingQuoteOfTheFirstOccurrence) {
  EXPECT_EQ(FindBehindKey(R"({"op":1,"op":2})", "op"), 5u);
  EXPECT_EQ(FindBehindKey(R"("op")", "op"), 4u);
}

TEST(FindBehindKey, WantsTheWholeKeyInQuotes) {
  EXPECT_EQ(FindBehindKey(R"({op:1})", "op"), kNone);
  EXPECT_EQ(FindBehindKey(R"({"ops":1,"sop":2})", "op"), kNone);
  EXPECT_EQ(FindBehindKey(R"({"OP":1})", "op"), kNone);
  EXPECT_EQ(FindBehindKey("", "op"), kNone);
}

TEST(FindBehindKey, FindsAKeyThatIsAValue) {
  EXPECT_EQ(FindBehindKey(R"({"node":"op"})", "op"), 12u);
}

TEST(FindBehindKey, EmptyKeyIsAPairOfQuotes) {
  EXPECT_EQ(FindBehindKey(R"({"a":""})", ""), 7u);
}

// The text is looked at eight bytes at a time, so each place in such a word has its turn.
TEST(FindBehindKey, FindsTheKeyAtEveryPlaceAndInTextsOfEveryLength) {
  for (size_t before = 0; before < 20; ++before) {
    for (size_t behind = 0; behind < 20; ++behind) {
      const std::string text = std::string(before, '"') + R"("key")" + std::string(behind, ' ');
      EXPECT_EQ(FindBehindKey(text, "key"), before + 5) << before << " before, " << behind;
      EXPECT_EQ(FindBehindKey(text, "kez"), kNone) << before << " before, " << behind;
    }
  }
}

// Neighbours of the two bytes that are looked for, in front of and behind the real ones.
TEST(FindBehindKey, TakesNoByteForItsNeighbour) {
  for (const std::string_view other : {"!k", "#k", "\"j", "\"l", "\xA2k", "\"\xEB", "!j"}) {
    const std::string text = std::string(other) + std::string(other) + R"("k")" + "        ";
    EXPECT_EQ(FindBehindKey(text, "k"), 7u) << other;
    EXPECT_EQ(FindBehindKey(std::string(8, '"') + std::string(other) + "          ", "k"), kNone)
        << other;
  }
}

TEST(FindBehindColon, SkipsWhateverStandsInFrontOfTheColon) {
  EXPECT_EQ(FindBehindColon(R"({"op":1})", "op"), 6u);
  EXPECT_EQ(FindBehindColon(R"({"op" junk :1})", "op"), 12u);
  EXPECT_EQ(FindBehindColon(R"({"x":"op","y":2})", "op"), 14u);
}

TEST(FindBehindColon, MissingKeyOrColonIsNowhere) {
  EXPECT_EQ(FindBehindColon(R"({"x":1})", "op"), kNone);
  EXPECT_EQ(FindBehindColon(R"({"x":"op"})", "op"), kNone);
}

TEST(FindBehindColon, ColonAtTheVeryEndGivesTheSize) {
  EXPECT_EQ(FindBehindColon(R"("op":)", "op"), 5u);
}

TEST(FindClosingQuote, PassesQuotesBehindABackslash) {
  EXPECT_EQ(FindClosingQuote(R"("abc")", 1), 4u);
  EXPECT_EQ(FindClosingQuote(R"("a\"b")", 1), 5u);
  EXPECT_EQ(FindClosingQuote(R"("\"\"")", 1), 5u);
}

TEST(FindClosingQuote, LooksAtOnePreviousByteOnly) {
  EXPECT_EQ(FindClosingQuote(R"("a\\",")", 1), 6u);  // the backslash pair does not free the quote
}

TEST(FindClosingQuote, BackslashInFrontOfTheStartCountsToo) {
  EXPECT_EQ(FindClosingQuote(R"(\"")", 1), 2u);
}

TEST(FindClosingQuote, WithoutAnyIsTheSize) {
  EXPECT_EQ(FindClosingQuote(R"("abc)", 1), 4u);
  EXPECT_EQ(FindClosingQuote(R"("ab\")", 1), 5u);
  EXPECT_EQ(FindClosingQuote(R"(")", 1), 1u);
}

TEST(SkipBytes, StopsAtTheFirstByteOfAnotherKind) {
  EXPECT_EQ(SkipBytes(" \t\r\nx", 0, " \t\r\n"), 4u);
  EXPECT_EQ(SkipBytes("x", 0, " \t"), 0u);
  EXPECT_EQ(SkipBytes(" \r x", 0, " \t"), 1u);
  EXPECT_EQ(SkipBytes("a b", 2, " "), 2u);
}

TEST(SkipBytes, AllSkippedIsTheSize) {
  EXPECT_EQ(SkipBytes("   ", 0, " "), 3u);
  EXPECT_EQ(SkipBytes("abc", 3, " "), 3u);
  EXPECT_EQ(SkipBytes("", 0, " "), 0u);
}

}  // namespace
}  // namespace vpn
