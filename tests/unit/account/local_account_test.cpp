#include "src/account/local_account.h"

#include <string>
#include <vector>

#include "tests/sim/fixture.h"

namespace vpn {
namespace {

using Texts = std::vector<std::string>;

class LocalAccountFiles : public sim::MachineTest {
 protected:
  const std::wstring path = L"C:\\run\\account.json";
  std::string text = "before";
};

TEST_F(LocalAccountFiles, AFileThatCanNotBeOpenedLeavesTheTextAndNamesThePath) {
  EXPECT_EQ(ReadTextFile(path, text).text(), L"cannot read C:\\run\\account.json");
  EXPECT_EQ(text, "before");
}

TEST_F(LocalAccountFiles, ALockedFileCanNotBeRead) {
  machine.files.Put(path, "x");
  machine.files.SetLocked(path, true);
  EXPECT_EQ(ReadTextFile(path, text).text(), L"cannot read C:\\run\\account.json");
  EXPECT_EQ(text, "before");
}

TEST_F(LocalAccountFiles, AnEmptyFileIsReadAsEmptyText) {
  machine.files.Put(path, "");
  EXPECT_TRUE(ReadTextFile(path, text));
  EXPECT_EQ(text, "");
}

TEST_F(LocalAccountFiles, ReadsInBinaryModeAndLetsOthersUseTheFile) {
  machine.files.Put(path, std::string("a\r\n\x1A\0b", 6));
  EXPECT_TRUE(ReadTextFile(path, text));
  EXPECT_EQ(text, std::string("a\r\n\x1A\0b", 6));
  EXPECT_EQ(machine.calls.TextsOf("_wfsopen"), Texts{R"("C:\run\account.json", "rb", 64)"});
}

TEST_F(LocalAccountFiles, ReadsMoreThanOneChunk) {
  machine.files.Put(path, std::string(9000, 'x') + "end");
  EXPECT_TRUE(ReadTextFile(path, text));
  EXPECT_EQ(text, std::string(9000, 'x') + "end");
}

TEST_F(LocalAccountFiles, OnlyTheFirstByteOfAByteOrderMarkIsLookedAt) {
  const std::vector<std::pair<std::string, std::string>> table = {
      {"\xEF\xBB\xBF{}", "{}"},  // the mark itself
      {"\xEFxy{}", "{}"},        // two wrong bytes behind it
      {"\xEFxy", ""},            // three bytes are just enough
      {"\xEF\xBB", "\xEF\xBB"},  // two are not
      {"\xEF", "\xEF"},
      {"\xBB\xBF\xEF{}", "\xBB\xBF\xEF{}"},
      {"\xEF\xBB\xBF\xEF\xBB\xBFx", "\xEF\xBB\xBFx"},  // cut once
  };
  for (const auto& [content, expected] : table) {
    SCOPED_TRACE(content);
    machine.files.Put(path, content);
    EXPECT_TRUE(ReadTextFile(path, text));
    EXPECT_EQ(text, expected);
  }
}

TEST_F(LocalAccountFiles, WritingReplacesTheWholeFileAndLetsOthersUseIt) {
  machine.files.Put(path, "something longer than what comes");
  EXPECT_TRUE(WriteTextFile(path, "short\n"));
  EXPECT_EQ(machine.files.Read(path), "short\n");
  EXPECT_EQ(machine.calls.TextsOf("_wfsopen"), Texts{R"("C:\run\account.json", "wb", 64)"});
}

TEST_F(LocalAccountFiles, WritingIntoAMissingDirectoryNamesThePath) {
  EXPECT_EQ(WriteTextFile(path, "x").text(), L"cannot write C:\\run\\account.json");
}

TEST_F(LocalAccountFiles, OnlyTheOpeningDecidesWhetherAWriteSucceeded) {
  machine.files.Put(path, "old");
  machine.files.SetWritesFail(path, true);
  EXPECT_TRUE(WriteTextFile(path, "x"));
}

TEST(FlatJsonString, ReadsTheTextBetweenTheFirstTwoQuotesBehindTheColon) {
  const std::vector<std::pair<std::string, std::string>> table = {
      {R"({"k":"v"})", "v"},
      {R"({"k":""})", ""},
      {R"({"k" : "v"})", "v"},
      {"{\"k\"\n:\r\n\t\"v\"}", "v"},     // white space of any kind is passed over
      {R"({"k" what ever : "v"})", "v"},  // and so is anything else
      {R"({"j":"x","k":"v"})", "v"},
      {R"({"k":"first","k":"second"})", "first"},
      {R"({"outer":{"k":"nested"},"k":"flat"})", "nested"},
      {R"({"kk":"x"})", ""},  // the quotes are part of what is searched
      {R"({"K":"x"})", ""},   // case counts
      {"{\"k\":\"\xE4\xB8\xAD\"}", "\xE4\xB8\xAD"},
  };
  for (const auto& [json, expected] : table) {
    SCOPED_TRACE(json);
    EXPECT_EQ(FlatJsonString(json, "k"), expected);
  }
}

TEST(FlatJsonString, IsEmptyWithoutKeyColonOrQuote) {
  for (const char* json :
       {"", "{}", "k", "\"k\"", "{\"k\" \"v\"}", "{\"k\":", "{\"k\":5}", "\"k\":v"}) {
    SCOPED_TRACE(json);
    EXPECT_EQ(FlatJsonString(json, "k"), "");
  }
}

TEST(FlatJsonString, DoesNotDecodeEscapes) {
  EXPECT_EQ(FlatJsonString(R"({"k":"a\"b"})", "k"), R"(a\"b)");
  EXPECT_EQ(FlatJsonString(R"({"k":"\"","x":"y"})", "k"), R"(\")");
  EXPECT_EQ(FlatJsonString(R"({"k":"a\n\u4e2d\\b"})", "k"), R"(a\n\u4e2d\\b)");
}

TEST(FlatJsonString, AValueThatEndsInAnEscapedBackslashRunsOn) {
  EXPECT_EQ(FlatJsonString(R"({"k":"x\\","j":"y"})", "k"), R"(x\\",)");
}

TEST(FlatJsonString, AValueThatIsNeverClosedRunsToTheEnd) {
  EXPECT_EQ(FlatJsonString(R"({"k":"abc)", "k"), "abc");
  EXPECT_EQ(FlatJsonString(R"({"k":")", "k"), "");
  EXPECT_EQ(FlatJsonString(R"({"k":"a\")", "k"), R"(a\")");
}

TEST(FlatJsonString, AValueThatEqualsALaterKeyIsTakenAsTheKey) {
  EXPECT_EQ(FlatJsonString(R"({"nodeName":"address","sni":"s","address":"h"})", "address"), "s");
}

TEST(FlatJsonString, AValueThatIsNoStringRunsOnToTheNextOne) {
  EXPECT_EQ(FlatJsonString(R"({"sni":5,"uuid":"u"})", "sni"), "uuid");
  EXPECT_EQ(FlatJsonString(R"({"sni":null,"uuid":"u"})", "sni"), "uuid");
}

TEST(FlatJsonInt, ReadsWhatStandsBehindTheColon) {
  const std::vector<std::pair<std::string, int>> table = {
      {R"({"k":443})", 443},
      {R"({"k": 443})", 443},
      {"{\"k\":\t \t443}", 443},
      {R"({"k":-5})", -5},
      {R"({"k":+5})", 5},
      {R"({"k":0443})", 443},
      {R"({"k":1.9})", 1},
      {R"({"k":12abc})", 12},
      {R"({"k" xx :7})", 7},
      {R"({"k":1,"k":2})", 1},
      {R"({"k":2147483647})", 2147483647},
      {R"({"k":-2147483648})", -2147483647 - 1},
  };
  for (const auto& [json, expected] : table) {
    SCOPED_TRACE(json);
    EXPECT_EQ(FlatJsonInt(json, "k", 99), expected);
  }
}

TEST(FlatJsonInt, ALineBreakInFrontOfTheNumberIsSkipped) {
  EXPECT_EQ(FlatJsonInt("{\"k\":\n443}", "k", 99), 443);
  EXPECT_EQ(FlatJsonInt("{\"k\": \t\r\n  443}", "k", 99), 443);
}

TEST(FlatJsonInt, OnlyAMissingKeyOrColonGivesTheDefault) {
  EXPECT_EQ(FlatJsonInt("", "k", 99), 99);
  EXPECT_EQ(FlatJsonInt("{}", "k", 99), 99);
  EXPECT_EQ(FlatJsonInt(R"({"kk":5})", "k", 99), 99);
  EXPECT_EQ(FlatJsonInt(R"({"k" 5})", "k", 99), 99);
  EXPECT_EQ(FlatJsonInt(R"("k")", "k", 1), 1);
}

TEST(FlatJsonInt, AKeyThatHoldsNoNumberGivesZeroAndNotTheDefault) {
  for (const char* json : {R"({"k":"443"})", R"({"k":null})", R"({"k":true})", R"({"k":""})",
                           R"({"k":{}})", R"({"k":-})", R"({"k":)", "{\"k\": \t"}) {
    SCOPED_TRACE(json);
    EXPECT_EQ(FlatJsonInt(json, "k", 99), 0);
  }
}

class IsDatePastToday : public sim::MachineTest {
 protected:
  void SetUp() override { machine.clock.SetDate(2025, 6, 15); }
};

TEST_F(IsDatePastToday, TheNamedDayItselfIsNotPast) {
  EXPECT_FALSE(IsDatePast("2025-06-15"));
  EXPECT_FALSE(IsDatePast("2025-6-15"));
}

TEST_F(IsDatePastToday, YearThenMonthThenDayDecide) {
  const std::vector<std::pair<std::string, bool>> table = {
      {"2025-06-14", true},  {"2025-06-16", false}, {"2025-05-16", true}, {"2025-07-14", false},
      {"2024-07-16", true},  {"2026-01-01", false}, {"2024-12-31", true}, {"2025-05-31", true},
      {"2025-07-01", false}, {"1-1-1", true},       {"9999-1-1", false},
  };
  for (const auto& [text, expected] : table) {
    SCOPED_TRACE(text);
    EXPECT_EQ(IsDatePast(text), expected);
  }
}

TEST_F(IsDatePastToday, FewerThanThreeNumbersCountAsPastWithoutALookAtTheClock) {
  for (const char* text : {"", "2099", "2099-", "2099-12", "2099-12-", "never", "2099/12/31",
                           "2099.12.31", "2099 -12-31", "2099-12-x"}) {
    SCOPED_TRACE(text);
    EXPECT_TRUE(IsDatePast(text));
  }
  EXPECT_EQ(machine.calls.Count("GetSystemTime"), 0u);
}

TEST_F(IsDatePastToday, BlanksInFrontOfANumberAndTextBehindTheThirdAreAccepted) {
  EXPECT_FALSE(IsDatePast("  2025-  06- 15"));
  EXPECT_FALSE(IsDatePast("2025-06-15T00:00:00Z"));
  EXPECT_TRUE(IsDatePast("2025-06-14T23:59:59Z"));
}

TEST_F(IsDatePastToday, NumbersOutOfRangeAreComparedAsTheyStand) {
  EXPECT_FALSE(IsDatePast("2025-13-01"));
  EXPECT_FALSE(IsDatePast("2025-06-99"));
  EXPECT_FALSE(IsDatePast("2025-6-100"));
  EXPECT_FALSE(IsDatePast("2025-100-1"));
  EXPECT_TRUE(IsDatePast("2025-06-0"));
  EXPECT_TRUE(IsDatePast("2025-0-31"));
  EXPECT_TRUE(IsDatePast("0-99-99"));
  EXPECT_TRUE(IsDatePast("-2025-06-15"));
}

TEST_F(IsDatePastToday, TheDayEndsAtMidnightUtc) {
  machine.clock.SetDate(2025, 6, 15, 23, 59, 59);
  EXPECT_FALSE(IsDatePast("2025-06-15"));
  machine.clock.Advance(999);
  EXPECT_FALSE(IsDatePast("2025-06-15"));
  machine.clock.Advance(1);
  EXPECT_TRUE(IsDatePast("2025-06-15"));
}

TEST_F(IsDatePastToday, TheLeapDayAndTheTurnOfTheYearAreOrdinaryDays) {
  machine.clock.SetDate(2024, 2, 29);
  EXPECT_FALSE(IsDatePast("2024-02-29"));
  EXPECT_TRUE(IsDatePast("2024-02-28"));
  machine.clock.SetDate(2024, 12, 31, 23, 59, 59);
  EXPECT_FALSE(IsDatePast("2024-12-31"));
  machine.clock.Advance(1000);
  EXPECT_TRUE(IsDatePast("2024-12-31"));
  EXPECT_FALSE(IsDatePast("2025-01-01"));
}

}  // namespace
}  // namespace vpn
