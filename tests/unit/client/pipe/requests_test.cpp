#include "client/pipe/requests.h"

#include "tests/unit/client/client_test.h"

namespace vpn {
namespace {

class Requests : public unit::ClientTest {};
class Replies : public unit::ClientTest {};

TEST_F(Requests, AConnectNamesItsNode) {
  EXPECT_EQ(ConnectRequest(L""), R"({"op":"connect"})");
  EXPECT_EQ(ConnectRequest(L"Tokyo 01"), R"({"op":"connect","node":"Tokyo 01"})");
  EXPECT_EQ(ConnectRequest(L"a\"b\\c"), R"({"op":"connect","node":"a\"b\\c"})");
}

TEST_F(Replies, AreReadWhole) {
  Reply reply;
  ASSERT_TRUE(ParseReply(R"({"ok":true,"running":true,"error":""})", reply));
  EXPECT_TRUE(reply.ok);
  EXPECT_TRUE(reply.running);
  EXPECT_EQ(reply.error, L"");
  ASSERT_TRUE(ParseReply(R"({"ok":false,"running":false,"error":"say \"hi\" \\ 没有"})", reply));
  EXPECT_FALSE(reply.ok);
  EXPECT_FALSE(reply.running);
  EXPECT_EQ(reply.error, L"say \"hi\" \\ 没有");
}

TEST_F(Replies, AnythingElseIsRefused) {
  Reply reply;
  for (const char* text : {"", "{}", R"({"ok":yes,"running":true,"error":""})",
                           R"({"ok":true,"running":1,"error":""})", R"({"ok":true,"error":""})",
                           R"({"ok":true,"running":true,"error":"cut)"}) {
    EXPECT_FALSE(ParseReply(text, reply)) << text;
  }
}

}  // namespace
}  // namespace vpn
