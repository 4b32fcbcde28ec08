#include "src/control/request.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace vpn {
namespace {

using std::string_literals::operator""s;

struct Row {
  std::string text;
  std::string value;
};

void ExpectOps(const std::vector<Row>& rows) {
  for (const Row& row : rows) {
    SCOPED_TRACE(row.text);
    EXPECT_EQ(RequestOp(row.text), row.value);
  }
}

TEST(Request, OpIsFoundWhateverStandsAroundIt) {
  ExpectOps({{R"({"op":"status"})", "status"},
             {R"({ "op" : "status" })", "status"},
             {R"({"op" junk : "status"})", "status"},
             {R"({"node":"x","op":"connect"})", "connect"},
             {R"({"op":"connect","node":"x","extra":[1,{"y":2}]})", "connect"},
             {R"("op":"status")", "status"},
             {R"(no JSON "op" at : "status" all)", "status"}});
}

TEST(Request, BlanksTabsAndLineEndsBehindTheColonAreSkipped) {
  ExpectOps({{"{\"op\": \t\r\n \"status\"}", "status"}});
}

TEST(Request, OtherControlBytesBehindTheColonAreNotSkipped) {
  ExpectOps({{"{\"op\":\v\"status\"}", ""},
             {"{\"op\":\f\"status\"}", ""},
             {"{\"op\":\0\"status\"}"s, ""},
             {"{\"op\":\xC2\xA0\"status\"}", ""}});
}

TEST(Request, OnlyBlanksGiveAnEmptyOp) {
  ExpectOps({{"   ", ""}, {" \r\n\t", ""}, {"", ""}});
}

TEST(Request, MissingKeyOrColonGivesAnEmptyOp) {
  ExpectOps({{"{}", ""},
             {R"({"oq":"status"})", ""},
             {R"({op:"status"})", ""},
             {R"("op")", ""},
             {R"({"op" "status"})", ""},
             {R"({"op":)", ""},
             {R"({"op":   )", ""}});
}

TEST(Request, KeysAreCaseSensitive) {
  ExpectOps({{R"({"OP":"status"})", ""}, {R"({"Op":"status"})", ""}});
}

TEST(Request, ValueThatIsNoStringReadsAsEmpty) {
  ExpectOps({{R"({"op":5})", ""},
             {R"({"op":true})", ""},
             {R"({"op":null})", ""},
             {R"({"op":{"x":"status"}})", ""},
             {R"({"op":["status"]})", ""},
             {R"({"op":'status'})", ""}});
}

TEST(Request, OnlyTheFirstOccurrenceOfTheKeyCounts) {
  ExpectOps({{R"({"op":5,"op":"status"})", ""}, {R"({"op":"a","op":"b"})", "a"}});
}

TEST(Request, KeyMatchesInsideAValueToo) {
  ExpectOps({{R"({"node":"op","op":"status"})", "status"},
             {R"({"x":"op"})", ""},
             {R"({"x":"op","y":"shutdown"})", "shutdown"},
             {R"({"x":{"op":"status"}})", "status"}});
}

TEST(Request, UnterminatedValueIsReturnedAsFarAsItGoes) {
  ExpectOps({{R"({"op":"stat)", "stat"}, {R"({"op":")", ""}, {R"({"op":"stat\")", "stat\""}});
}

TEST(Request, EmptyValueIsEmpty) {
  ExpectOps({{R"({"op":""})", ""}});
}

TEST(Request, BackslashIsDroppedAndTheNextByteCopied) {
  ExpectOps({{R"({"op":"a\"b"})", R"(a"b)"},
             {R"({"op":"a\\b"})", R"(a\b)"},
             {R"({"op":"a\\"})", R"(a\)"},
             {R"({"op":"a\\\"b"})", R"(a\"b)"},
             {R"({"op":"\n\t\/"})", "nt/"},
             {R"({"op":"\u4e2d"})", "u4e2d"}});
}

TEST(Request, BackslashAtTheVeryEndOfTheTextIsKept) {
  ExpectOps(
      {{R"({"op":"stat\)", R"(stat\)"}, {R"({"op":"\)", R"(\)"}, {R"({"op":"stat\\)", R"(stat\)"}});
}

TEST(Request, EveryOtherByteIsCopiedRaw) {
  ExpectOps({{"{\"op\":\"a\nb\tc\x01\x7F\"}", "a\nb\tc\x01\x7F"},
             {"{\"op\":\"a\0b\"}"s, "a\0b"s},
             {"{\"op\":\"\xE4\xB8\xAD\xFF\"}", "\xE4\xB8\xAD\xFF"},
             {R"({"op":" status "})", " status "}});
}

TEST(RequestField, ReadsTheNode) {
  EXPECT_EQ(RequestField(R"({"op":"connect","node":"东京 1"})", "node"), "东京 1");
  EXPECT_EQ(RequestField(R"({"op":"connect"})", "node"), "");
  EXPECT_EQ(RequestField(R"({"op":"connect","node":""})", "node"), "");
}

TEST(RequestField, KeyWithoutAColonBehindItIsAMissEvenIfOneStandsInFront) {
  EXPECT_EQ(RequestField(R"({"a":1,"node")", "node"), "");
}

}  // namespace
}  // namespace vpn
