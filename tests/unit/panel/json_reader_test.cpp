#include "src/panel/json_reader.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace vpn {
namespace {

using Numbers = std::vector<std::int64_t>;

// Strings -----------------------------------------------------------------------------------------

TEST(JsonString, ReadsTheDecodedValue) {
  const std::vector<std::pair<std::string, std::string>> table = {
      {R"({"k":"v"})", "v"},
      {R"({"k":""})", ""},
      {"{\"k\" :\t \t\"v\"}", "v"},
      {R"({"k" odd : "v"})", "v"},  // the first colon behind the key, wherever it stands
      {R"({"k":"a\"b\\n\/c\nd"})", "a\"b\\n/c\nd"},
      {R"({"k":"\u4e2d"})", "\xE4\xB8\xAD"},
      {R"({"k":"a:b"})", "a:b"},
      {R"({"k":"1","k":"2"})", "1"},
      {R"({"k":"a\tb"})", R"(a\tb)"},
      {"{\"k\":\"a\nb\"}", "a\nb"},
  };
  for (const auto& [text, expected] : table) {
    SCOPED_TRACE(text);
    EXPECT_EQ(JsonString(text, "k"), expected);
  }
}

TEST(JsonString, IsEmptyForEveryOtherKindOfValue) {
  for (const char* text :
       {R"({"k":42})", R"({"k":null,"x":"y"})", R"({"k":true})", R"({"k":{"a":"b"}})",
        R"({"k":["a"]})", R"({"k":)", "{\"k\": \t", R"({"k" "v"})", R"({"kk":"v"})", R"(k:"v")"}) {
    SCOPED_TRACE(text);
    EXPECT_EQ(JsonString(text, "k"), "");
  }
}

TEST(JsonString, AValueOnTheNextLineIsNotSeen) {
  EXPECT_EQ(JsonString("{\"k\":\n\"v\"}", "k"), "");
  EXPECT_EQ(JsonString("{\"k\":\r\n\"v\"}", "k"), "");
}

TEST(JsonString, TheNestedKeyWinsWhenItComesFirst) {
  EXPECT_EQ(JsonString(R"({"plan":{"name":"x"},"name":"y"})", "name"), "x");
}

TEST(JsonString, AnEscapedBackslashAtTheEndRunsOnPastTheValue) {
  EXPECT_EQ(JsonString(R"({"a":"x\\"})", "a"), R"(x\"})");
  EXPECT_EQ(JsonString(R"({"a":"x\\","b":"y"})", "a"), R"(x\",)");
}

TEST(JsonString, AValueThatIsNeverClosedRunsToTheEnd) {
  EXPECT_EQ(JsonString(R"({"k":"abc)", "k"), "abc");
  EXPECT_EQ(JsonString(R"({"k":")", "k"), "");
  EXPECT_EQ(JsonString(R"({"k":"a\")", "k"), "a\"");
}

TEST(JsonString, ReadsAQuotedNumberAsText) {
  EXPECT_EQ(JsonString(R"({"n":"42"})", "n"), "42");
}

// Numbers -----------------------------------------------------------------------------------------

TEST(JsonInt, ReadsLikeStrtoll) {
  const std::vector<std::pair<std::string, std::int64_t>> table = {
      {R"({"n":42})", 42},
      {R"({"n":"42"})", 42},
      {R"({"n":-42})", -42},
      {R"({"n":"-42"})", -42},
      {R"({"n":+7})", 7},
      {R"({"n":12abc})", 12},
      {R"({"n":1.9})", 1},
      {R"({"n":1e3})", 1},
      {R"({"n":0x10})", 0},
      {R"({"n":007})", 7},
      {"{\"n\":\t 42}", 42},
      {"{\"n\":\n42}", 42},
      {"{\"n\": \r\n\t42}", 42},
      {R"({"n":" 42"})", 42},
      {"{\"n\":\"\n42\"}", 42},
      {R"({"n":9223372036854775807})", INT64_MAX},
      {R"({"n":-9223372036854775808})", INT64_MIN},
      {R"({"n":99999999999999999999})", INT64_MAX},
  };
  for (const auto& [text, expected] : table) {
    SCOPED_TRACE(text);
    EXPECT_EQ(JsonInt(text, "n", 7777), expected);
  }
}

TEST(JsonInt, WithoutDigitsIsZeroAndNotTheFallback) {
  for (const char* text :
       {R"({"n":null})", R"({"n":true})", R"({"n":""})", R"({"n":"x"})", R"({"n":)", R"({"n":")",
        "{\"n\": \t", R"({"n":{}})", R"({"n":""5})", "{\"n\":\n\"42\"}"}) {
    SCOPED_TRACE(text);
    EXPECT_EQ(JsonInt(text, "n", 7), 0);
  }
}

TEST(JsonInt, OnlyAMissingKeyOrColonGivesTheFallback) {
  for (const char* text : {"{}", R"({"nn":5})", R"({"n" 5})", R"("n")", "n:5"}) {
    SCOPED_TRACE(text);
    EXPECT_EQ(JsonInt(text, "n", 7), 7);
    EXPECT_EQ(JsonInt(text, "n", -1), -1);
  }
}

TEST(JsonInt, AKeyIsFoundInsideAValue) {
  EXPECT_EQ(JsonInt(R"({"a":"id","b":7,"id":6})", "id", 0), 7);
}

TEST(JsonOptionalInt, StoresTheNumberAndTellsWhetherItIsZeroOrMore) {
  const std::vector<std::pair<std::string, std::optional<std::int64_t>>> table = {
      {R"({"n":42})", 42},
      {R"({"n":0})", 0},
      {R"({"n":-1})", std::nullopt},
      {R"({"n":"42"})", 0},  // quotes are not looked through here
      {R"({"n":true})", 0},
      {R"({"n":nul})", 0},
      {R"({"n":nul)", 0},
      {"{\"n\":\n42}", 42},
      {"{\"n\":\nnull}", 0},  // the four bytes do not follow the blanks and tabs
      {R"({"n":12abc})", 12},
      {R"({"n":-0})", 0},
      {R"({"n":9223372036854775807})", INT64_MAX},
      {R"({"n":-9223372036854775808})", std::nullopt},
  };
  for (const auto& [text, expected] : table) {
    SCOPED_TRACE(text);
    EXPECT_EQ(JsonOptionalInt(text, "n"), expected);
  }
}

TEST(JsonOptionalInt, LeavesOutForNullAndForNothing) {
  for (const char* text : {R"({"n":null})", "{\"n\": \tnull}", R"({"n":nullable})", R"({"n":)",
                           "{\"n\": \t ", "{}", R"({"n" 42})", R"({"nn":42})"}) {
    SCOPED_TRACE(text);
    EXPECT_EQ(JsonOptionalInt(text, "n"), std::nullopt);
  }
}

TEST(JsonInt, AndTheOthersReadTheSameQuotedNumberEachInItsWay) {
  const std::string text = R"({"n":"42"})";
  EXPECT_EQ(JsonInt(text, "n", 7), 42);
  EXPECT_EQ(JsonOptionalInt(text, "n"), 0);
  EXPECT_EQ(JsonString(text, "n"), "42");
}

// Flags -------------------------------------------------------------------------------------------

TEST(JsonBool, IsTrueForTheWordAndForEveryOtherNumberThanZero) {
  for (const char* text : {R"({"b":true})", "{\"b\": \ttrue}", R"({"b":trueish})", R"({"b":true)",
                           R"({"b":1})", R"({"b":-1})", R"({"b":2x})", "{\"b\":\n1}"}) {
    SCOPED_TRACE(text);
    EXPECT_TRUE(JsonBool(text, "b"));
  }
}

TEST(JsonBool, IsFalseForEverythingElse) {
  for (const char* text :
       {R"({"b":false})", R"({"b":0})", R"({"b":null})", R"({"b":"true"})", R"({"b":"1"})",
        R"({"b":True})", R"({"b":tru)", R"({"b":t)", R"({"b":)", "{\"b\":\ntrue}", R"({"b":0.9})",
        "{}", R"({"b" true})", R"({"bb":true})"}) {
    SCOPED_TRACE(text);
    EXPECT_FALSE(JsonBool(text, "b"));
  }
}

// Lists of numbers --------------------------------------------------------------------------------

TEST(JsonNumberArray, ReadsTheNumbersUpToTheFirstClosingBracket) {
  const std::vector<std::pair<std::string, Numbers>> table = {
      {R"({"n":[1,2,3]})", {1, 2, 3}},
      {R"({"n":[ 1 ,	2 ]})", {1, 2}},
      {"{\"n\":[1,\n2]}", {1, 2}},
      {R"({"n":[1]})", {1}},
      {R"({"n":[]})", {}},
      {R"({"n":[ ]})", {}},
      {R"({"n":["12","x"]})", {12}},
      {R"({"n":[null,true,7]})", {7}},
      {R"({"n":[[1,2],3]})", {1, 2}},  // no counting of brackets
      {R"({"n":null,"m":[4]})", {4}},
      {R"({"n":[1,2],"m":[3]})", {1, 2}},
      {R"({"n":[1]2})", {1}},
  };
  for (const auto& [text, expected] : table) {
    SCOPED_TRACE(text);
    EXPECT_EQ(JsonNumberArray(text, "n"), expected);
  }
}

TEST(JsonNumberArray, TruncatesTowardZero) {
  EXPECT_EQ(JsonNumberArray(R"({"n":[1.9,-1.9,0.5,-0.5,.7]})", "n"), (Numbers{1, -1, 0, 0, 0}));
}

TEST(JsonNumberArray, AnyOtherByteEndsTheToken) {
  EXPECT_EQ(JsonNumberArray(R"({"n":[1e5]})", "n"), (Numbers{1, 5}));
  EXPECT_EQ(JsonNumberArray(R"({"n":[1+2]})", "n"), (Numbers{1, 2}));
  EXPECT_EQ(JsonNumberArray(std::string("{\"n\":[1\0"
                                        "2]}",
                                        10),
                            "n"),
            (Numbers{1, 2}));
}

TEST(JsonNumberArray, EachTokenIsReadLikeAtof) {
  EXPECT_EQ(JsonNumberArray(R"({"n":[-,.,--5,1-2,1.2.3,-7]})", "n"), (Numbers{0, 0, 0, 1, 1, -7}));
}

TEST(JsonNumberArray, NumbersBeyondTheRangeReadAsTheLowestOne) {
  EXPECT_EQ(JsonNumberArray(R"({"n":[9223372036854775808,-9223372036854775809,1]})", "n"),
            (Numbers{INT64_MIN, INT64_MIN, 1}));
  EXPECT_EQ(JsonNumberArray(R"({"n":[99999999999999999999,-99999999999999999999]})", "n"),
            (Numbers{INT64_MIN, INT64_MIN}));
  EXPECT_EQ(JsonNumberArray(R"({"n":[9007199254740993]})", "n"), (Numbers{9007199254740992}))
      << "the number goes through a double";
}

TEST(JsonNumberArray, IsEmptyWithoutKeyOrEitherBracket) {
  for (const char* text :
       {"{}", R"({"n":1})", R"({"n":[1,2)", R"([1,2],"n":3)", R"({"nn":[1]})", R"({"data":[1]})"}) {
    SCOPED_TRACE(text);
    EXPECT_EQ(JsonNumberArray(text, "n"), Numbers());
  }
}

}  // namespace
}  // namespace vpn
