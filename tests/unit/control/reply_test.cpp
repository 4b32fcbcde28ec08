#include "src/control/reply.h"

#include "src/common/text.h"

#include "tests/sim/fixture.h"

namespace vpn {
namespace {

using std::string_literals::operator""s;

class Reply : public sim::MachineTest {};

TEST_F(Reply, StatusWithTheTunnelUpIsTheseBytes) {
  const std::string reply = EncodeReply(true, true, L"");
  EXPECT_EQ(reply, R"({"ok":true,"running":true,"error":""})");
  EXPECT_EQ(reply.size(), 37u);
}

TEST_F(Reply, EachPairOfWordsStandsInItsPlace) {
  EXPECT_EQ(EncodeReply(true, false, L""), R"({"ok":true,"running":false,"error":""})");
  EXPECT_EQ(EncodeReply(false, true, L""), R"({"ok":false,"running":true,"error":""})");
  EXPECT_EQ(EncodeReply(false, false, L"op not allowed"),
            R"({"ok":false,"running":false,"error":"op not allowed"})");
}

TEST_F(Reply, EmptyErrorIsNotConverted) {
  (void)EncodeReply(true, true, L"");
  EXPECT_EQ(machine.calls.Count("WideCharToMultiByte"), 0u);
}

TEST_F(Reply, ErrorIsConvertedAfterItsSizeWasAskedFor) {
  (void)EncodeReply(false, false, L"x");
  EXPECT_EQ(machine.calls.Count("WideCharToMultiByte"), 2u);
}

TEST_F(Reply, ErrorOutsideAsciiIsRawUtf8) {
  EXPECT_EQ(EncodeReply(false, false, L"没有可用节点"),
            "{\"ok\":false,\"running\":false,\"error\":\"没有可用节点\"}");
}

TEST_F(Reply, QuotesAndBackslashesInTheErrorAreEscaped) {
  EXPECT_EQ(EncodeReply(false, false, L"cannot read C:\\run\\\"a\""),
            R"({"ok":false,"running":false,"error":"cannot read C:\\run\\\"a\""})");
}

TEST_F(Reply, LineFeedsAndControlUnitsPassRaw) {
  EXPECT_EQ(EncodeReply(false, true, L"a\nb\t\x01"),
            "{\"ok\":false,\"running\":true,\"error\":\"a\nb\t\x01\"}");
}

TEST_F(Reply, WholeErrorIsConvertedNulUnitsIncluded) {
  EXPECT_EQ(EncodeReply(false, true, L"a\0b"s),
            "{\"ok\":false,\"running\":true,\"error\":\"a\0b\"}"s);
}

TEST_F(Reply, UnpairedSurrogateBecomesAReplacementCharacter) {
  EXPECT_EQ(EncodeReply(false, true, std::wstring(1, static_cast<wchar_t>(0xD83D))),
            "{\"ok\":false,\"running\":true,\"error\":\"\xEF\xBF\xBD\"}");
}

TEST(ReplyText, EscapesQuotesAndBackslashesAndNothingElse) {
  EXPECT_EQ(EscapeQuotes(""), "");
  EXPECT_EQ(EscapeQuotes(R"(")"), R"(\")");
  EXPECT_EQ(EscapeQuotes(R"(\)"), R"(\\)");
  EXPECT_EQ(EscapeQuotes(R"(\")"), R"(\\\")");
  EXPECT_EQ(EscapeQuotes("/\b\f\n\r\t\x1F\x7F'"), "/\b\f\n\r\t\x1F\x7F'");
  EXPECT_EQ(EscapeQuotes("中\xFF"), "中\xFF");
}

}  // namespace
}  // namespace vpn
