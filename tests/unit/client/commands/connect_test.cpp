#include <windows.h>

#include <algorithm>

#include "tests/unit/client/client_test.h"

namespace vpn {
namespace {

using unit::ScriptedService;

class ConnectTest : public unit::ClientTest {
 protected:
  void SetUp() override { PutAccount(); }

  std::vector<std::string> Screen() const { return machine.console.terminal.Lines(); }
};

constexpr char kXrayReply[] =
    R"({"ok":false,"running":false,"error":"连接核心无法启动，请换一条线路或重新登录后再试。"})";

TEST_F(ConnectTest, EachStepIsShownAsTheTraceGrows) {
  UseTerminal();
  machine.files.Put(unit::kTrace, unit::RecordedConnect());
  ScriptedService service(machine);
  AppendTraceAfter(30, unit::RecordedLines(5));
  std::vector<std::string> during;
  machine.clock.After(100, [&] { during = Screen(); });
  AppendTraceAfter(300, unit::RecordedConnect().substr(unit::RecordedLines(5).size()));
  service.RepliesAfter(620, unit::kUpReply);
  EXPECT_EQ(Run({L"connect", L"Tokyo 01"}), 0);
  EXPECT_EQ(service.Request(), R"({"op":"connect","node":"Tokyo 01"})");
  EXPECT_EQ(during, (std::vector<std::string>{
                        "Connecting to Tokyo 01 (203.0.113.77:443)",
                        "  ✓ old tunnel stopped                0 ms",
                        "  ✓ stale helpers looked for          8 ms",
                        "  ✓ physical route found             14 ms   以太网 via 192.168.1.1",
                        "  ✓ panel pinned                      1 ms",
                        "  ⠙ Xray being started …               (about 140 ms)",
                    }));
  EXPECT_EQ(Screen(), (std::vector<std::string>{
                          "Connecting to Tokyo 01 (203.0.113.77:443)",
                          "  ✓ old tunnel stopped                0 ms",
                          "  ✓ stale helpers looked for          8 ms",
                          "  ✓ physical route found             14 ms   以太网 via 192.168.1.1",
                          "  ✓ panel pinned                      1 ms",
                          "  ✓ Xray listening                  139 ms",
                          "  ✓ adapter up                      115 ms",
                          "  ✓ address, name server, IPv4       12 ms",
                          "  ✓ routes installed                 16 ms",
                          "  ✓ IPv6 blocked                    307 ms",
                          "Connected in 0.62 s.",
                          "",
                      }));
}

TEST_F(ConnectTest, TheTraceIsNotOpenedWhileSomebodyElseIsServed) {
  machine.files.Put(unit::kTrace, unit::RecordedConnect());
  ScriptedService service(machine);
  service.IsBusyFor(1000);
  service.RepliesAfter(1100, unit::kUpReply);
  const auto opened = [this] {
    const std::vector<std::string> files = machine.calls.TextsOf("_wfsopen");
    return std::count(files.begin(), files.end(),
                      "\"C:\\Program Files\\Tavrin\\connect-timing.log\", \"rb\", 64");
  };
  std::ptrdiff_t before = -1;
  machine.clock.After(990, [&] { before = opened(); });
  EXPECT_EQ(Run({L"connect"}), 0);
  EXPECT_EQ(before, 0);
  EXPECT_EQ(opened(), 2) << "for the medians, and at the end";
}

TEST_F(ConnectTest, WithoutANodeTheFirstOneIsMeant) {
  ScriptedService service(machine);
  service.RepliesAfter(40, unit::kUpReply);
  EXPECT_EQ(Run({L"connect"}), 0);
  EXPECT_EQ(service.Request(), R"({"op":"connect"})");
  EXPECT_EQ(Out(), "Connecting to Tokyo 01 (203.0.113.77:443)\nConnected in 0.04 s.\n");
}

TEST_F(ConnectTest, AnUnknownNodeIsNotSent) {
  EXPECT_EQ(Run({L"connect", L"Tokio 01"}), 1);
  EXPECT_EQ(Err(),
            "No node is called \"Tokio 01\". Did you mean \"Tokyo 01\"?\n"
            "  What to do: choose one that tavrinctl nodes shows.\n");
  EXPECT_EQ(machine.calls.Count("CreateFileW"), 0u);
}

TEST_F(ConnectTest, AnUnknownNodeAsJson) {
  EXPECT_EQ(Run({L"connect", L"Tokio 01", L"--json"}), 1);
  EXPECT_EQ(Out(), R"({
  "schema": 1,
  "ok": false,
  "reason": "unknown node",
  "error": "No node is called \"Tokio 01\".",
  "didYouMean": "Tokyo 01",
  "whatToDo": "choose one that tavrinctl nodes shows"
}
)");
  EXPECT_EQ(Run({L"connect", L"Nothing like it", L"--json"}), 1);
  EXPECT_NE(Out().find("\"didYouMean\": null,\n"), std::string::npos);
}

TEST_F(ConnectTest, ForceSendsAnyName) {
  ScriptedService service(machine);
  service.RepliesAfter(40, unit::kUpReply);
  EXPECT_EQ(Run({L"connect", L"Tokio 01", L"--force"}), 0);
  EXPECT_EQ(service.Request(), R"({"op":"connect","node":"Tokio 01"})");
  EXPECT_EQ(Out(), "Connecting to Tokio 01\nConnected in 0.04 s.\n");
}

TEST_F(ConnectTest, AnAccountThatCantBeReadLeavesTheAnswerToTheService) {
  machine.files.Remove(std::wstring(unit::kRuntime) + L"\\session.json");
  ScriptedService service(machine);
  service.RepliesAfter(40, R"({"ok":false,"running":false,"error":"not logged in"})");
  EXPECT_EQ(Run({L"connect"}), 1);
  EXPECT_EQ(Out(), "Connecting to the account's first node\n");
  EXPECT_EQ(Err(), "not logged in\n  What to do: sign in.\n");
}

TEST_F(ConnectTest, XraysWordsAreShownWithoutTheKeyThatTheyQuote) {
  ScriptedService service(machine);
  const std::wstring runtime = unit::kRuntime;
  AppendTraceAfter(30, unit::RecordedLines(5));
  machine.files.Put(runtime + L"\\session.json.xray.json", R"({"publicKey":"c2VjcmV0LWtleQ"})");
  machine.clock.After(60, [&] {
    machine.files.Put(runtime + L"\\xray-error.log", "invalid \"publicKey\": c2VjcmV0LWtleQ\n");
  });
  service.RepliesAfter(5040, kXrayReply);
  EXPECT_EQ(Run({L"connect"}), 1);
  EXPECT_EQ(Err().find("c2VjcmV0LWtleQ"), std::string::npos) << Err();
  EXPECT_NE(Err().find("invalid \"publicKey\": "), std::string::npos) << Err();
}

TEST_F(ConnectTest, TheStepThatFailedIsMarkedAndXraysWordsFollow) {
  UseTerminal();
  ScriptedService service(machine);
  const std::wstring log = std::wstring(unit::kRuntime) + L"\\xray-error.log";
  machine.files.Put(log, "an old line\r\n");
  AppendTraceAfter(30, unit::RecordedLines(5));
  machine.clock.After(60, [&] {
    machine.files.Put(log, "an old line\r\nfirst\r\nfailed to read server hello\r\n");
  });
  service.RepliesAfter(5040, kXrayReply);
  EXPECT_EQ(Run({L"connect"}), 1);
  const std::vector<std::string> screen = Screen();
  ASSERT_GT(screen.size(), 8u);
  EXPECT_EQ(screen[5], "  ✗ Xray listening                5 013 ms");
  EXPECT_EQ(screen[6], "连接核心无法启动，请换一条线路或重新登录后再试。");
  EXPECT_EQ(screen[7], "  Xray's own words (xray-error.log): failed to read server hello");
  EXPECT_EQ(
      screen[8],
      "  What to do: choose another node, or sign in again, and read xray-error.log: most often it "
      "is the");
  EXPECT_EQ(screen[9], "              node's settings, a missing geo file, or a virus scanner.");
}

TEST_F(ConnectTest, OfALongLogOfXraysTheLastWordsAreShown) {
  ScriptedService service(machine);
  const std::wstring log = std::wstring(unit::kRuntime) + L"\\xray-error.log";
  machine.files.Put(log, "an old line\n");
  AppendTraceAfter(30, unit::RecordedLines(5));
  machine.clock.After(60, [&] {
    machine.files.Put(log, "an old line\n" + std::string(200'000, 'x') + "\nthe last words\n");
  });
  service.RepliesAfter(5040, kXrayReply);
  EXPECT_EQ(Run({L"connect"}), 1);
  EXPECT_NE(Err().find("  Xray's own words (xray-error.log): the last words\n"), std::string::npos)
      << Err();
  EXPECT_EQ(machine.files.BytesRead(log), 65'536u);
}

TEST_F(ConnectTest, AnXrayWithoutWordsIsSaidToo) {
  ScriptedService service(machine);
  AppendTraceAfter(30, unit::RecordedLines(5));
  service.RepliesAfter(5040, kXrayReply);
  EXPECT_EQ(Run({L"connect"}), 1);
  EXPECT_NE(Err().find("  Xray has written nothing into xray-error.log.\n"), std::string::npos);
}

TEST_F(ConnectTest, ARefusalNamesTheChecks) {
  ScriptedService service(machine);
  AppendTraceAfter(30, unit::RecordedLines(2));
  service.RepliesAfter(60, R"({"ok":false,"running":false,"error":"xray.exe not found"})");
  EXPECT_EQ(Run({L"connect"}), 1);
  EXPECT_NE(Out().find("  ✗ checks before the start"), std::string::npos);
  EXPECT_EQ(Err(),
            "xray.exe not found\n"
            "  What to do: put the file there; the runtime= line in tavrin-service.log names the "
            "directory.\n");
}

TEST_F(ConnectTest, ATunnelThatIsStillUpIsSaid) {
  ScriptedService service(machine);
  service.RepliesAfter(60, R"({"ok":false,"running":true,"error":"no physical default gateway"})");
  EXPECT_EQ(Run({L"connect"}), 1);
  EXPECT_NE(Err().find("The tunnel from before is still up.\n"), std::string::npos);
}

TEST_F(ConnectTest, JsonHasTheTracesOwnLabels) {
  ScriptedService service(machine);
  AppendTraceAfter(30, unit::RecordedLines(1));
  service.RepliesAfter(60, unit::kUpReply);
  EXPECT_EQ(Run({L"connect", L"--json"}), 0);
  EXPECT_EQ(Out(), R"({
  "schema": 1,
  "reachable": true,
  "ok": true,
  "running": true,
  "error": "",
  "whatToDo": "",
  "milliseconds": 60,
  "node": {
    "name": "Tokyo 01",
    "address": "203.0.113.77",
    "port": 443
  },
  "trace": {
    "complete": false,
    "milliseconds": 0,
    "marks": [
      {
        "label": "stop() idle",
        "step": 0,
        "total": 0
      }
    ]
  }
}
)");
}

TEST_F(ConnectTest, JsonOfAFailureHasTheTextAndTheAdvice) {
  ScriptedService service(machine);
  service.RepliesAfter(60, R"({"ok":false,"running":false,"error":"account expired"})");
  EXPECT_EQ(Run({L"connect", L"--json", L"--force"}), 1);
  EXPECT_NE(Out().find("\"whatToDo\": \"renew expireAt (year-month-day)\","), std::string::npos);
  EXPECT_NE(Out().find(R"("trace": null)"), std::string::npos);
}

TEST_F(ConnectTest, QuietPrintsNothingOnSuccess) {
  ScriptedService service(machine);
  AppendTraceAfter(30, unit::RecordedConnect());
  service.RepliesAfter(60, unit::kUpReply);
  EXPECT_EQ(Run({L"connect", L"--quiet"}), 0);
  EXPECT_EQ(Out() + Err(), "");
}

TEST_F(ConnectTest, CtrlCEndsTheClientAndNotTheConnect) {
  ScriptedService service(machine);
  machine.clock.After(50, [&] { machine.console.Send(CTRL_C_EVENT); });
  EXPECT_EQ(Run({L"connect"}), 130);
  EXPECT_EQ(Err(),
            "Interrupted.\n"
            "  What to do: run tavrinctl status to see how things stand.\n"
            "The service goes on with the connect.\n");
}

TEST_F(ConnectTest, ATimeOutEndsTheClientAndNotTheConnect) {
  ScriptedService service(machine);
  EXPECT_EQ(Run({L"connect", L"--timeout", L"3", L"--json"}), 2);
  EXPECT_EQ(Out(), "{\n  \"schema\": 1,\n  \"reachable\": true,\n  \"reason\": \"timeout\"\n}\n");
  EXPECT_NE(Err().find("The service goes on with the connect.\n"), std::string::npos);
}

TEST_F(ConnectTest, AfterTheServiceDiedNothingGoesOn) {
  ScriptedService service(machine);
  service.HangsUpAfter(50);
  EXPECT_EQ(Run({L"connect"}), 2);
  EXPECT_EQ(Err(),
            "The connection ended without a proper reply.\n"
            "  What to do: look at the end of tavrin-service.log, and try again.\n");
}

TEST_F(ConnectTest, WithNoServiceNothingGoesOn) {
  EXPECT_EQ(Run({L"connect"}), 2);
  EXPECT_EQ(Err().find("goes on"), std::string::npos);
}

}  // namespace
}  // namespace vpn
