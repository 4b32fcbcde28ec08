#include "src/panel/json_reader.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace vpn {
namespace {

using Texts = std::vector<std::string>;
using Pairs = std::vector<std::pair<std::string, std::string>>;

TEST(JsonDataObject, GivesTheObjectBehindData) {
  EXPECT_EQ(JsonDataObject(R"({"data":{"a":1}})"), R"({"a":1})");
  EXPECT_EQ(JsonDataObject(R"({"x":{"y":1},"data" : {"a":{"b":{}}},"z":{}})"), R"({"a":{"b":{}}})");
  EXPECT_EQ(JsonDataObject("{\"data\":\n {\"a\":\n1}}"), "{\"a\":\n1}");
  EXPECT_EQ(JsonDataObject(R"({"data":{}})"), "{}");
}

TEST(JsonDataObject, GivesTheWholeBodyWithoutData) {
  for (const char* body : {R"({"message":"x"})", "", "{}", R"("data)", R"({"dat":{}})",
                           R"({data:{"a":1}})", "<html>{}</html>", R"({"Data":{"a":1}})"}) {
    SCOPED_TRACE(body);
    EXPECT_EQ(JsonDataObject(body), body);
  }
}

TEST(JsonDataObject, NeedsSixBytesAndAnObject) {
  EXPECT_EQ(JsonDataObject(R"("data")"), R"("data")");
  EXPECT_EQ(JsonDataObject(R"("data"{)"), R"("data"{)");
  EXPECT_EQ(JsonDataObject(R"("data"{})"), "{}");
}

TEST(JsonDataObject, TheObjectNeedNotBelongToData) {
  EXPECT_EQ(JsonDataObject(R"({"data":[{"id":1},{"id":2}]})"), R"({"id":1})");
  EXPECT_EQ(JsonDataObject(R"({"data":null,"x":{"y":2}})"), R"({"y":2})");
  EXPECT_EQ(JsonDataObject(R"({"data":null})"), R"({"data":null})");
}

TEST(JsonDataObject, ABraceInsideAStringClosesTheCountEarly) {
  EXPECT_EQ(JsonDataObject(R"({"data":{"a":"}"}})"), R"({"a":"})");
}

TEST(JsonDataObject, ABraceInsideAStringOpensTheCountAsWell) {
  EXPECT_EQ(JsonDataObject(R"({"data":{"a":"{"}})"), R"({"a":"{"}})");
}

// The outer brace in front of the key takes no part in the count.
TEST(JsonDataObject, CountingStartsAtTheFirstBraceBehindTheKey) {
  EXPECT_EQ(JsonDataObject(R"({"data":{"a":1})"), R"({"a":1})");
  EXPECT_EQ(JsonDataObject(R"({"data":{"a":1)"), R"({"data":{"a":1)");
}

TEST(JsonDataObject, DataIsFoundEvenInsideAValue) {
  EXPECT_EQ(JsonDataObject(R"({"message":"data","x":{"y":1},"data":{"a":1}})"), R"({"y":1})");
}

TEST(JsonObject, GivesTheBalancedObjectBehindTheKey) {
  const std::string text = R"({"plan":{"id":1,"sub":{"id":2}},"user":{"id":3}})";
  EXPECT_EQ(JsonObject(text, "plan"), R"({"id":1,"sub":{"id":2}})");
  EXPECT_EQ(JsonObject(text, "sub"), R"({"id":2})");
  EXPECT_EQ(JsonObject(text, "user"), R"({"id":3})");
}

TEST(JsonObject, CountsFromTheFirstBraceBehindTheKey) {
  EXPECT_EQ(JsonObject(R"({"data":{"a":1})", "data"), R"({"a":1})");
}

TEST(JsonObject, IsEmptyWithoutKeyBraceOrBalance) {
  const Pairs table = {
      {"", "k"},
      {"{}", "k"},
      {R"({"k":1})", "k"},  // the brace in front of the key does not count
      {R"({"data":{"a":1)", "data"},
      {R"({"k":{)", "k"},
      {R"({"kk":{}})", "k"},
      {R"({"data":{"a":1}})", "k"},  // no falling back on the envelope
  };
  for (const auto& [text, key] : table) {
    SCOPED_TRACE(text);
    EXPECT_EQ(JsonObject(text, key), "");
  }
}

TEST(JsonObject, AKeyWithNoObjectYieldsTheNextOneInTheText) {
  EXPECT_EQ(JsonObject(R"({"plan":null,"user":{"id":3}})", "plan"), R"({"id":3})");
  EXPECT_EQ(JsonObject(R"({"plan":7,"list":[{"id":4}]})", "plan"), R"({"id":4})");
}

TEST(JsonObject, NeedsNoColon) {
  EXPECT_EQ(JsonObject(R"(["plan"{"id":1}])", "plan"), R"({"id":1})");
}

TEST(JsonObject, BracesInStringsCountLikeAllOthers) {
  EXPECT_EQ(JsonObject(R"({"k":{"a":"}","b":1}})", "k"), R"({"a":"})");
  EXPECT_EQ(JsonObject(R"({"k":{"a":"{"}})", "k"), R"({"a":"{"}})");
  EXPECT_EQ(JsonObject(R"({"k":{"a":"{"})", "k"), "");
}

TEST(JsonObjectArray, ListsTheTopLevelObjectsInTheirOrder) {
  EXPECT_EQ(
      JsonObjectArray(R"({"list":[{"id":2},{"id":1,"sub":{"x":[{}]}}],"o":[{"id":9}]})", "list"),
      (Texts{R"({"id":2})", R"({"id":1,"sub":{"x":[{}]}})"}));
}

TEST(JsonObjectArray, FallsBackOnDataWhenTheKeyIsMissing) {
  EXPECT_EQ(JsonObjectArray(R"({"data":[{"id":1}]})", "list"), Texts{R"({"id":1})"});
  EXPECT_EQ(JsonObjectArray(R"({"data":[{"id":1}],"list":[{"id":2}]})", "list"),
            Texts{R"({"id":2})"});
}

TEST(JsonObjectArray, AKeyThatIsThereDoesNotFallBack) {
  EXPECT_EQ(JsonObjectArray(R"({"data":[{"id":1}],"list":null})", "list"), Texts());
}

TEST(JsonObjectArray, IsEmptyWithoutKeyAndDataOrWithoutABracket) {
  for (const char* text : {"", "{}", R"([{"id":1}])", R"({"list":{}})", R"({"data":{"id":1}})",
                           R"({"x":[{"id":1}],"list":1})", R"({"list":[]})"}) {
    SCOPED_TRACE(text);
    EXPECT_EQ(JsonObjectArray(text, "list"), Texts());
  }
}

TEST(JsonObjectArray, TakesTheFirstBracketBehindTheKeyWhereverItStands) {
  EXPECT_EQ(JsonObjectArray(R"({"list":{"x":1,"rows":[{"id":1}]}})", "list"), Texts{R"({"id":1})"});
}

TEST(JsonObjectArray, AnArrayThatNeverClosesRunsToTheEndOfTheText) {
  EXPECT_EQ(JsonObjectArray(R"({"list":[{"id":1},{"id":2})", "list"),
            (Texts{R"({"id":1})", R"({"id":2})"}));
  EXPECT_EQ(JsonObjectArray(R"({"list":[{"id":1},{"id":2)", "list"), Texts{R"({"id":1})"});
}

TEST(JsonObjectArray, NestedArraysBelongToTheSpan) {
  EXPECT_EQ(JsonObjectArray(R"({"list":[[{"id":1}],[{"id":2}]],"x":[{"id":3}]})", "list"),
            (Texts{R"({"id":1})", R"({"id":2})"}));
}

TEST(JsonObjectArray, ScalarsAndStrayBracesAreIgnored) {
  EXPECT_EQ(JsonObjectArray(R"({"list":[1,"x",}}{"id":1} null {"id":2},true]})", "list"),
            (Texts{R"({"id":1})", R"({"id":2})"}));
}

TEST(JsonObjectArray, BracketsAndBracesInStringsCountLikeAllOthers) {
  EXPECT_EQ(JsonObjectArray(R"({"list":[{"a":"]"},{"b":1}]})", "list"), Texts());
  EXPECT_EQ(JsonObjectArray(R"({"list":[{"a":"}"},{"b":1}]})", "list"),
            (Texts{R"({"a":"})", R"({"b":1})"}));
  EXPECT_EQ(JsonObjectArray(R"({"list":[{"a":"["}],"x":[{"b":1}]})", "list"),
            (Texts{R"({"a":"["})", R"({"b":1})"}))
      << "the opened bracket makes the span run on";
}

// The text is looked at eight bytes at a time, so each place in such a word has its turn.
TEST(JsonObjectArray, BracketsAreSeenAtEveryPlace) {
  for (size_t width = 0; width < 20; ++width) {
    const std::string gap(width, 'z');  // one bit away from a brace
    const std::string object = "{" + gap + "[" + gap + "]" + gap + "}";
    const std::string text =
        R"({"k":)" + gap + "[" + object + gap + "|~_Y" + object + gap + "]" + gap + object + "}";
    EXPECT_EQ(JsonObjectArray(text, "k"), (Texts{object, object})) << width;
    EXPECT_EQ(JsonObject(text, "k"), object) << width;
  }
}

TEST(JsonEmptyText, GivesEmptiesThroughout) {
  EXPECT_EQ(JsonDataObject(""), "");
  EXPECT_EQ(JsonObject("", "k"), "");
  EXPECT_EQ(JsonObjectArray("", "k"), Texts());
  EXPECT_EQ(JsonNumberArray("", "k"), std::vector<std::int64_t>());
  EXPECT_EQ(JsonString("", "k"), "");
  EXPECT_EQ(JsonInt("", "k", 7), 7);
  EXPECT_EQ(JsonOptionalInt("", "k"), std::nullopt);
  EXPECT_FALSE(JsonBool("", "k"));
}

}  // namespace
}  // namespace vpn
