#include "tests/unit/client/client_test.h"

namespace vpn {
namespace {

using unit::ScriptedService;

class SimpleRequestsTest : public unit::ClientTest {};

TEST_F(SimpleRequestsTest, ADisconnectSaysSo) {
  ScriptedService service(machine);
  service.RepliesAfter(40, unit::kDownReply);
  EXPECT_EQ(Run({L"disconnect"}), 0);
  EXPECT_EQ(service.Request(), R"({"op":"disconnect"})");
  EXPECT_EQ(Out(), "Disconnected.\n");
}

TEST_F(SimpleRequestsTest, AShutdownSaysWhatItDoes) {
  ScriptedService service(machine);
  service.RepliesAfter(40, unit::kDownReply);
  EXPECT_EQ(Run({L"shutdown"}), 0);
  EXPECT_EQ(service.Request(), R"({"op":"shutdown"})");
  EXPECT_EQ(Out(), "The tunnel is down. The process ends too, unless it is a Windows service.\n");
}

TEST_F(SimpleRequestsTest, JsonHasTheRepliesKeys) {
  ScriptedService service(machine);
  service.RepliesAfter(40, unit::kDownReply);
  EXPECT_EQ(Run({L"disconnect", L"--json"}), 0);
  EXPECT_EQ(Out(),
            "{\n  \"schema\": 1,\n  \"reachable\": true,\n  \"ok\": true,\n"
            "  \"running\": false,\n  \"error\": \"\"\n}\n");
}

TEST_F(SimpleRequestsTest, ARefusalIsExitCodeOne) {
  ScriptedService service(machine);
  service.RepliesAfter(40, R"({"ok":false,"running":false,"error":"op not allowed"})");
  EXPECT_EQ(Run({L"disconnect"}), 1);
  EXPECT_EQ(Err(),
            "op not allowed\n"
            "  What to do: install a client and a service of the same version: the client sent an "
            "unknown operation.\n");
}

TEST_F(SimpleRequestsTest, WithoutAServiceItIsTwo) {
  EXPECT_EQ(Run({L"disconnect"}), 2);
  EXPECT_EQ(Run({L"request", L"{}"}), 2);
}

TEST_F(SimpleRequestsTest, ARawRequestGoesByteForByte) {
  ScriptedService service(machine);
  service.RepliesAfter(40, R"({"ok":false,"running":false,"error":"op not allowed"})");
  EXPECT_EQ(Run({L"request", L"{\"op\":\"没\"}"}), 1);
  EXPECT_EQ(service.Request(), R"({"op":"没"})");
  EXPECT_EQ(Out(), "{\"ok\":false,\"running\":false,\"error\":\"op not allowed\"}\n");
}

TEST_F(SimpleRequestsTest, ARawReplyThatIsNoneOfTheServicesIsShownAndTwo) {
  ScriptedService service(machine);
  service.RepliesAfter(40, "hello");
  EXPECT_EQ(Run({L"request", L"{}"}), 2);
  EXPECT_EQ(Out(), "hello\n");
}

TEST_F(SimpleRequestsTest, ARawReplyStaysAsItIsByteForByte) {
  const std::string reply = "{\"ok\":false,\"running\":false,\"error\":\"\xFF\xC3(\x80\"}";
  ScriptedService service(machine);
  service.RepliesAfter(40, reply);
  EXPECT_EQ(Run({L"request", L"{}"}), 1);
  EXPECT_EQ(Out(), reply + "\n");
}

TEST_F(SimpleRequestsTest, OnAConsoleARawReplyIsReadAsUtf8) {
  UseTerminal();
  ScriptedService service(machine);
  service.RepliesAfter(40, R"({"ok":false,"running":false,"error":"没有可用节点"})");
  EXPECT_EQ(Run({L"request", L"{}"}), 1);
  EXPECT_EQ(machine.console.terminal.Lines().front(),
            R"({"ok":false,"running":false,"error":"没有可用节点"})");
}

TEST_F(SimpleRequestsTest, ADisconnectThatGetsNoReplyEndsAfterAMinute) {
  ScriptedService service(machine);
  const std::uint64_t start = machine.clock.Now();
  EXPECT_EQ(Run({L"disconnect"}), 2);
  EXPECT_EQ(machine.clock.Now() - start, 60'000u);
}

TEST_F(SimpleRequestsTest, ARawReplyThatIsGoodIsZero) {
  ScriptedService service(machine);
  service.RepliesAfter(40, unit::kUpReply);
  EXPECT_EQ(Run({L"request", L"{\"op\":\"status\"}"}), 0);
}

TEST_F(SimpleRequestsTest, AWrongLineIsThreeAndOnStderr) {
  EXPECT_EQ(Run({L"frob"}), 3);
  EXPECT_EQ(Out(), "");
  EXPECT_EQ(Err(),
            "tavrinctl: no command is called frob\n"
            "Usage: tavrinctl COMMAND [OPTION...]\n"
            "See: tavrinctl help\n");
}

TEST_F(SimpleRequestsTest, AWrongOptionShowsTheCommandsUsage) {
  EXPECT_EQ(Run({L"connect", L"--frob"}), 3);
  EXPECT_EQ(Out(), "");
  EXPECT_EQ(Err(),
            "tavrinctl: The following argument was not expected: --frob\n"
            "Usage: tavrinctl connect [NODE] [OPTION...]\n"
            "See: tavrinctl help connect\n");
}

TEST_F(SimpleRequestsTest, TheVersionGoesToStdout) {
  EXPECT_EQ(Run({L"--version"}), 0);
  EXPECT_EQ(Out(), "tavrinctl 0.1.0\n");
}

}  // namespace
}  // namespace vpn
