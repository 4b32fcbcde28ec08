// The scanners beside a strict JSON parser. Each way in which they read valid JSON otherwise has a
// name, and at least one row here: this table is the list of the differences. The fuzz target
// tests/fuzz/strict_json.cpp looks for one that has no name.
#include <algorithm>
#include <set>

#include "tests/sim/fixture.h"
#include "tests/strict/readings.h"

namespace vpn {
namespace {

using strict::Class;
using strict::Reader;

struct Row {
  Class difference;
  Reader reader;
  std::string key;
  std::string text;
  std::string parsed;   // by the strict parser
  std::string scanned;  // by the service
};

using Rows = std::vector<Row>;

const Rows& ByPlace() {
  static const Rows rows = {
      {Class::kNestedKey, Reader::kRequestField, "op",
       R"({"extra":{"op":"shutdown"},"op":"status"})", "status", "shutdown"},
      {Class::kNestedKey, Reader::kRequestField, "op", R"([{"op":"status"}])", "", "status"},
      {Class::kNestedKey, Reader::kJsonInt, "id", R"({"plan":{"id":2}})", "fallback", "2"},
      {Class::kNestedKey, Reader::kFlatJsonString, "address",
       R"({"old":{"address":"a"},"address":"b"})", "b", "a"},
      {Class::kKeyAsValue, Reader::kRequestField, "op", R"({"node":"op","op":"connect"})",
       "connect", "connect"},
      {Class::kKeyAsValue, Reader::kRequestField, "node", R"({"a":"node","b":"x","node":"y"})", "y",
       "x"},
      {Class::kKeyAsValue, Reader::kJsonInt, "id", R"({"a":"id","b":7,"id":6})", "6", "7"},
      {Class::kKeyAsValue, Reader::kJsonInt, "id", R"({"a":"id"})", "fallback", "fallback"},
      {Class::kTailOfAString, Reader::kRequestField, "op",
       R"({"node":"say \"op","extra":"shutdown","op":"status"})", "status", "shutdown"},
      {Class::kFirstOfTwo, Reader::kRequestField, "op", R"({"op":"status","op":"shutdown"})",
       "shutdown", "status"},
      {Class::kFirstOfTwo, Reader::kJsonBool, "paid", R"({"paid":true,"paid":false})", "false",
       "true"},
      {Class::kEscapedKey, Reader::kRequestField, "op", R"({"\u006fp":"status"})", "status", ""},
      {Class::kEscapedKey, Reader::kJsonInt, "id", R"({"\u0069d":7})", "7", "fallback"},
      {Class::kDataStandsIn, Reader::kJsonObjectArray, "codes", R"({"data":[{"a":1}]})", "[]",
       R"([{"a":1}])"},
  };
  return rows;
}

const Rows& OfTexts() {
  static const Rows rows = {
      {Class::kLineBreak, Reader::kJsonString, "k", "{\"k\":\n\"v\"}", "v", ""},
      {Class::kEscape, Reader::kRequestField, "node", R"({"node":"a\tb"})", "a\tb", "atb"},
      {Class::kEscape, Reader::kRequestField, "node", R"({"node":"\u4e2d"})", "中", "u4e2d"},
      {Class::kEscape, Reader::kJsonString, "k", R"({"k":"a\tb"})", "a\tb", R"(a\tb)"},
      {Class::kEscape, Reader::kJsonString, "k", R"({"k":"\ud83d\ude80"})", "🚀",
       "\xED\xA0\xBD\xED\xBA\x80"},
      {Class::kEscape, Reader::kFlatJsonString, "k", R"({"k":"a\"b\u4e2d"})", "a\"b中",
       R"(a\"b\u4e2d)"},
      {Class::kEscape, Reader::kParseExpiredAt, "expired_at", R"({"expired_at":"2027\u002d03-01"})",
       "1803945599", "2027"},
      {Class::kEndsInBackslash, Reader::kJsonString, "k", R"({"k":"x\\","j":"y"})", R"(x\)",
       R"(x\",)"},
      {Class::kEndsInBackslash, Reader::kFlatJsonString, "k", R"({"k":"x\\","j":"y"})", R"(x\)",
       R"(x\\",)"},
      {Class::kNoStringRunsOn, Reader::kFlatJsonString, "sni", R"({"sni":null,"uuid":"u"})", "",
       "uuid"},
      {Class::kNoStringRunsOn, Reader::kFlatJsonString, "port", R"({"port":443,"a":"b"})", "", "a"},
  };
  return rows;
}

const Rows& OfNumbersAndFlags() {
  static const Rows rows = {
      {Class::kQuotedNumber, Reader::kJsonInt, "n", R"({"n":"42"})", "fallback", "42"},
      {Class::kQuotedNumber, Reader::kJsonInt, "n", R"({"n":"x"})", "fallback", "0"},
      {Class::kLineBreak, Reader::kJsonInt, "n", "{\"n\":\n\"42\"}", "fallback", "0"},
      {Class::kLineBreak, Reader::kJsonOptionalInt, "n", "{\"n\":\nnull}", "none", "0"},
      {Class::kLineBreak, Reader::kJsonBool, "n", "{\"n\":\ntrue}", "true", "false"},
      {Class::kLineBreak, Reader::kParseExpiredAt, "expired_at",
       "{\"expired_at\":\n\"2027-03-01\"}", "1803945599", "0"},
      {Class::kNoNumberIsZero, Reader::kJsonInt, "n", R"({"n":null})", "fallback", "0"},
      {Class::kNoNumberIsZero, Reader::kJsonInt, "n", R"({"n":[5]})", "fallback", "0"},
      {Class::kNoNumberIsZero, Reader::kJsonOptionalInt, "n", R"({"n":"42"})", "none", "0"},
      {Class::kNoNumberIsZero, Reader::kFlatJsonInt, "port", R"({"port":"443"})", "fallback", "0"},
      {Class::kFraction, Reader::kJsonInt, "n", R"({"n":1.9})", "fallback", "1"},
      {Class::kFraction, Reader::kJsonInt, "n", R"({"n":1e3})", "fallback", "1"},
      {Class::kFraction, Reader::kJsonOptionalInt, "n", R"({"n":-0.5})", "none", "0"},
      {Class::kFraction, Reader::kFlatJsonInt, "n", R"({"n":4.43e2})", "fallback", "4"},
      {Class::kFraction, Reader::kParseExpiredAt, "expired_at", R"({"expired_at":17e8})",
       "1700000000", "0"},
      {Class::kFraction, Reader::kJsonNumberArray, "n", R"({"n":[1.9,1e5]})", "[]", "[1,1,5]"},
      {Class::kBeyondRange, Reader::kJsonInt, "n", R"({"n":9223372036854775808})", "fallback",
       "9223372036854775807"},
      {Class::kBeyondRange, Reader::kJsonOptionalInt, "n", R"({"n":99999999999999999999})", "none",
       "9223372036854775807"},
      {Class::kThroughADouble, Reader::kJsonNumberArray, "n", R"({"n":[9007199254740993]})",
       "[9007199254740993]", "[9007199254740992]"},
      {Class::kThroughADouble, Reader::kJsonNumberArray, "n", R"({"n":[9223372036854775808]})",
       "[]", "[-9223372036854775808]"},
      {Class::kNumberAsFlag, Reader::kJsonBool, "b", R"({"b":1})", "false", "true"},
      {Class::kNumberAsFlag, Reader::kJsonBool, "b", R"({"b":-2.5})", "false", "true"},
  };
  return rows;
}

const Rows& OfObjectsAndArrays() {
  static const Rows rows = {
      {Class::kBracketInString, Reader::kJsonObject, "plan", R"({"plan":{"a":"}"},"b":1})",
       R"([{"a":"}"}])", R"([no JSON: {"a":"}])"},
      {Class::kBracketInString, Reader::kJsonObjectArray, "data", R"({"data":[{"a":"]"},{"b":1}]})",
       R"([{"a":"]"},{"b":1}])", "[]"},
      {Class::kRunsOnToBracket, Reader::kJsonObject, "plan", R"({"plan":null,"b":{"c":1}})", "none",
       R"([{"c":1}])"},
      {Class::kRunsOnToBracket, Reader::kJsonObjectArray, "data",
       R"({"data":{"data":[{"a":1}]},"total":1})", "[]", R"([{"a":1}])"},
      {Class::kRunsOnToBracket, Reader::kJsonNumberArray, "stat", R"({"stat":5,"b":[1,2]})", "[]",
       "[1,2]"},
      {Class::kNestedArray, Reader::kJsonObjectArray, "data", R"({"data":[[{"a":1}],{"b":2}]})",
       R"([{"b":2}])", R"([{"a":1},{"b":2}])"},
      {Class::kDigitsAnywhere, Reader::kJsonNumberArray, "stat", R"({"stat":["12-x",[7],8]})",
       "[8]", "[12,7]"},
  };
  return rows;
}

std::vector<Row> AllRows() {
  std::vector<Row> all;
  for (const Rows* rows : {&ByPlace(), &OfTexts(), &OfNumbersAndFlags(), &OfObjectsAndArrays()}) {
    all.insert(all.end(), rows->begin(), rows->end());
  }
  return all;
}

class ScannersAndAParser : public sim::MachineTest {};

TEST_F(ScannersAndAParser, DifferInEachRowOfTheTable) {
  for (const Row& row : AllRows()) {
    SCOPED_TRACE(row.text);
    const strict::Document document(row.text);
    EXPECT_EQ(strict::Parsed(row.reader, document, row.key), row.parsed);
    EXPECT_EQ(strict::Scanned(row.reader, document, row.key), row.scanned);
    const std::optional<Class> difference = strict::ClassOf(row.reader, document, row.key);
    ASSERT_TRUE(difference.has_value());
    EXPECT_STREQ(strict::Name(*difference), strict::Name(row.difference));
  }
}

TEST_F(ScannersAndAParser, HaveARowForEachClassOfDifference) {
  std::set<std::string> seen;
  for (const Row& row : AllRows()) {
    if (row.parsed != row.scanned) {
      seen.insert(strict::Name(row.difference));
    }
  }
  EXPECT_EQ(seen.size(), strict::kClasses);
}

TEST_F(ScannersAndAParser, ReadThePlainCaseAlike) {
  const strict::Document document(
      R"({"op": "say \"hi\" \\ bye", "port":	443, "low":-7, "flag":true, "none" : null,)"
      R"( "plan":{"id":2}, "data":[ {"a":1}, {"b":"c"} ], "stat":[1, 2], "expired_at":"2027-03-01"})");
  const std::vector<std::tuple<Reader, std::string, std::string>> table = {
      {Reader::kRequestField, "op", R"(say "hi" \ bye)"},
      {Reader::kRequestField, "port", ""},
      {Reader::kJsonString, "op", R"(say "hi" \ bye)"},
      {Reader::kJsonString, "none", ""},
      {Reader::kFlatJsonString, "expired_at", "2027-03-01"},
      {Reader::kFlatJsonInt, "port", "443"},
      {Reader::kJsonInt, "low", "-7"},
      {Reader::kJsonInt, "nothing", "fallback"},
      {Reader::kJsonOptionalInt, "port", "443"},
      {Reader::kJsonOptionalInt, "low", "none"},
      {Reader::kJsonOptionalInt, "none", "none"},
      {Reader::kJsonBool, "flag", "true"},
      {Reader::kJsonBool, "none", "false"},
      {Reader::kJsonObject, "plan", R"([{"id":2}])"},
      {Reader::kJsonObjectArray, "data", R"([{"a":1},{"b":"c"}])"},
      {Reader::kJsonNumberArray, "stat", "[1,2]"},
      {Reader::kParseExpiredAt, "expired_at", "1803945599"},
  };
  for (const auto& [reader, key, expected] : table) {
    SCOPED_TRACE(key);
    EXPECT_EQ(strict::Parsed(reader, document, key), expected);
    EXPECT_EQ(strict::Scanned(reader, document, key), expected);
    EXPECT_EQ(strict::ClassOf(reader, document, key), std::nullopt);
  }
}

}  // namespace
}  // namespace vpn
