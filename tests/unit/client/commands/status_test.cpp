#include <windows.h>

#include "tests/unit/client/client_test.h"

namespace vpn {
namespace {

using unit::ScriptedService;

class StatusTest : public unit::ClientTest {
 protected:
  void PutTunnel() {
    PutAccount();
    const std::wstring runtime = unit::kRuntime;
    machine.files.Put(runtime + L"\\session.json.xray.json",
                      R"({"vnext": [{ "address": "203.0.113.77", "port": 443 }]})");
    machine.files.Put(unit::kTrace, unit::RecordedConnect());
    xray = machine.processes.Seed(runtime + L"\\xray\\xray.exe");
    machine.clock.Advance(8'040'000);
  }

  std::shared_ptr<sim::Process> xray;
};

TEST_F(StatusTest, ATunnelThatIsUp) {
  PutTunnel();
  ScriptedService service(machine);
  service.RepliesAfter(5, unit::kUpReply);
  EXPECT_EQ(Run({L"status"}), 0);
  EXPECT_EQ(Out(),
            "Tavrin is connected.        up for 2 h 14 min\n"
            "Node     203.0.113.77:443   (Tokyo 01)\n"
            "Service  running, version 0.1.0, C:\\Program Files\\Tavrin\\runtime\n");
  EXPECT_EQ(Err(), "");
}

TEST_F(StatusTest, ATunnelThatIsUpAsJson) {
  PutTunnel();
  machine.services.Install({.name = "TavrinService", .state = SERVICE_RUNNING});
  ScriptedService service(machine);
  service.RepliesAfter(5, unit::kUpReply);
  EXPECT_EQ(Run({L"status", L"--json"}), 0);
  EXPECT_EQ(Out(), R"({
  "schema": 1,
  "reachable": true,
  "connected": true,
  "upSeconds": 8040,
  "connectMilliseconds": 612,
  "node": {
    "address": "203.0.113.77",
    "port": 443,
    "name": "Tokyo 01"
  },
  "service": {
    "state": "running as a Windows service",
    "version": "0.1.0",
    "runtimeDir": "C:\\Program Files\\Tavrin\\runtime"
  }
}
)");
}

TEST_F(StatusTest, WhereXrayTellsNothingTheLastWriteOfTheTraceCounts) {
  PutTunnel();
  xray->openError = ERROR_ACCESS_DENIED;
  machine.files.SetLastWrite(unit::kTrace, machine.clock.UnixMilliseconds() - 125'000);
  ScriptedService service(machine);
  service.RepliesAfter(5, unit::kUpReply);
  EXPECT_EQ(Run({L"status"}), 0);
  EXPECT_EQ(Out().find("Tavrin is connected.        up for 2 min\n"), 0u) << Out();
}

TEST_F(StatusTest, WhereNothingTellsTheTimeItIsUnknown) {
  PutTunnel();
  xray->openError = ERROR_ACCESS_DENIED;
  machine.files.Put(unit::kTrace, unit::RecordedLines(4));  // a connect that failed meanwhile
  ScriptedService service(machine);
  service.RepliesAfter(5, unit::kUpReply);
  EXPECT_EQ(Run({L"status", L"--json"}), 0);
  EXPECT_NE(Out().find("\"upSeconds\": null,\n  \"connectMilliseconds\": null,\n"),
            std::string::npos)
      << Out();
}

TEST_F(StatusTest, TheServiceManagerIsAskedOnceAndTheProcessesTwice) {
  PutTunnel();
  ScriptedService service(machine);
  service.RepliesAfter(0, unit::kUpReply);
  EXPECT_EQ(Run({L"status"}), 0);
  EXPECT_EQ(machine.calls.Count("OpenSCManagerW"), 1u);
  EXPECT_EQ(machine.calls.Count("CreateToolhelp32Snapshot"), 2u);
}

TEST_F(StatusTest, TheTraceIsNotOpenedWhileSomebodyElseIsServed) {
  PutTunnel();
  ScriptedService service(machine);
  service.IsBusyFor(1000);
  service.RepliesAfter(1100, unit::kUpReply);
  size_t before = 1;
  machine.clock.After(990, [&] { before = machine.calls.Count("_wfsopen"); });
  EXPECT_EQ(Run({L"status"}), 0);
  EXPECT_EQ(before, 0u);
}

TEST_F(StatusTest, AServiceThatDoesNotReplyIsGivenUpAfterAMinute) {
  ScriptedService service(machine);
  const std::uint64_t start = machine.clock.Now();
  EXPECT_EQ(Run({L"status", L"--json"}), 2);
  EXPECT_EQ(machine.clock.Now() - start, 60'000u);
  EXPECT_EQ(Out(), "{\n  \"schema\": 1,\n  \"reachable\": true,\n  \"reason\": \"timeout\"\n}\n");
}

TEST_F(StatusTest, CtrlCWhileTheReplyIsAwaitedIsToldAsJsonToo) {
  ScriptedService service(machine);
  machine.clock.After(50, [&] { machine.console.Send(CTRL_C_EVENT); });
  EXPECT_EQ(Run({L"status", L"--json"}), 130);
  EXPECT_EQ(Out(),
            "{\n  \"schema\": 1,\n  \"reachable\": true,\n  \"reason\": \"interrupted\"\n}\n");
}

TEST_F(StatusTest, NoTunnel) {
  ScriptedService service(machine);
  service.RepliesAfter(5, unit::kDownReply);
  EXPECT_EQ(Run({L"status"}), 0);
  EXPECT_EQ(Out(),
            "Tavrin is not connected.\n"
            "Service  running, version 0.1.0, C:\\Program Files\\Tavrin\\runtime\n");
}

TEST_F(StatusTest, AConfigurationThatCantBeReadIsSaid) {
  machine.services.Install({.name = "TavrinService", .state = SERVICE_START_PENDING});
  ScriptedService service(machine);
  service.RepliesAfter(5, unit::kUpReply);
  EXPECT_EQ(Run({L"status"}), 0);
  EXPECT_EQ(Out(),
            "Tavrin is connected.\n"
            "Node     unknown: the generated configuration can't be read\n"
            "Service  starting as a Windows service, version 0.1.0, "
            "C:\\Program Files\\Tavrin\\runtime\n");
}

TEST_F(StatusTest, ThePanelIsNotAskedForTheNodesName) {
  PutTunnel();
  machine.files.Put(std::wstring(unit::kRuntime) + L"\\panel.json",
                    R"({"apiBase":"https://panel.example"})");
  ScriptedService service(machine);
  service.RepliesAfter(5, unit::kUpReply);
  EXPECT_EQ(Run({L"status"}), 0);
  EXPECT_NE(Out().find("Node     203.0.113.77:443\n"), std::string::npos);
  EXPECT_EQ(machine.calls.Count("WinHttpSendRequest"), 0u);
}

TEST_F(StatusTest, ANodeThatTheAccountDoesNotKnowHasNoName) {
  PutTunnel();
  machine.files.Put(std::wstring(unit::kRuntime) + L"\\session.json.xray.json",
                    R"({"vnext": [{ "address": "203.0.113.99", "port": 443 }]})");
  machine.files.Put(unit::kTrace, unit::RecordedLines(4));
  ScriptedService service(machine);
  service.RepliesAfter(5, unit::kUpReply);
  EXPECT_EQ(Run({L"status", L"--json"}), 0);
  EXPECT_NE(Out().find(R"("name": "")"), std::string::npos);
  EXPECT_NE(Out().find(R"("connectMilliseconds": null)"), std::string::npos);
}

TEST_F(StatusTest, NoServiceIsExitCodeTwoAndWhatToDo) {
  EXPECT_EQ(Run({L"status"}), 2);
  EXPECT_EQ(Out(), "");
  EXPECT_EQ(Err(),
            "The service is not running, and it is not installed.\n"
            "  What to do: run TavrinService.exe --install with administrator's rights.\n");
}

TEST_F(StatusTest, AStoppedServiceIsStarted) {
  machine.services.Install({.name = "TavrinService"});
  EXPECT_EQ(Run({L"status", L"--json"}), 2);
  EXPECT_EQ(Out(), "{\n  \"schema\": 1,\n  \"reachable\": false,\n  \"reason\": \"absent\"\n}\n");
  EXPECT_EQ(Err(),
            "The service is installed, but it is not running.\n"
            "  What to do: run \"sc start TavrinService\" with administrator's rights.\n");
}

TEST_F(StatusTest, ABusyServiceIsWaitedForVisibly) {
  UseTerminal();
  ScriptedService service(machine);
  service.IsBusyFor(1200);
  service.RepliesAfter(1300, unit::kDownReply);
  std::vector<std::string> during;
  machine.clock.After(1100, [&] { during = machine.console.terminal.Lines(); });
  EXPECT_EQ(Run({L"status"}), 0);
  EXPECT_EQ(during,
            std::vector<std::string>{"⠸ The service is busy with another client; waiting … (1 s)"});
  EXPECT_EQ(machine.console.terminal.Lines().front(), "Tavrin is not connected.");
}

TEST_F(StatusTest, WithoutAConsoleTheWaitIsToldOnce) {
  ScriptedService service(machine);
  service.IsBusyFor(2000);
  service.RepliesAfter(2100, unit::kDownReply);
  EXPECT_EQ(Run({L"status"}), 0);
  EXPECT_EQ(Err(), "The service is busy with another client; waiting.\n");
}

TEST_F(StatusTest, AServiceThatStaysBusyIsExitCodeTwo) {
  machine.pipes.AddForeign(L"\\\\.\\pipe\\TavrinService");
  EXPECT_EQ(Run({L"status", L"--json"}), 2);
  EXPECT_NE(Out().find("\"reason\": \"busy\""), std::string::npos);
}

TEST_F(StatusTest, APipeOfAnotherProgramIsNoReply) {
  ScriptedService service(machine);
  service.RepliesAfter(5, "hello");
  EXPECT_EQ(Run({L"status"}), 2);
  EXPECT_EQ(Err(),
            "The connection ended without a proper reply.\n"
            "  What to do: look at the end of tavrin-service.log, and try again.\n");
}

TEST_F(StatusTest, APipeThatMayNotBeOpened) {
  machine.faults.Fail("CreateFileW", {.nth = 1, .code = ERROR_ACCESS_DENIED});
  EXPECT_EQ(Run({L"status", L"--json"}), 2);
  EXPECT_NE(Out().find("\"reason\": \"refused\""), std::string::npos);
}

TEST_F(StatusTest, AWatchShowsChangesUntilCtrlC) {
  PutTunnel();
  UseTerminal();
  auto service = std::make_unique<ScriptedService>(machine);
  service->RepliesAfter(5, unit::kUpReply);
  machine.clock.After(500, [&] { service->HangsUpAfter(0); });
  machine.clock.After(1500, [&] { machine.console.Send(CTRL_C_EVENT); });
  EXPECT_EQ(Run({L"status", L"--watch"}), 130);
  EXPECT_EQ(machine.console.terminal.Lines(),
            (std::vector<std::string>{"Connected to 203.0.113.77:443",
                                      "The service is not running, and it is not installed.", ""}));
}

TEST_F(StatusTest, AWatchAsJsonIsALineForEachChange) {
  ScriptedService service(machine);
  service.RepliesAfter(5, unit::kDownReply);
  machine.clock.After(20, [&] { service.HangsUpAfter(0); });
  machine.clock.After(2500, [&] { machine.console.Send(CTRL_C_EVENT); });
  EXPECT_EQ(Run({L"status", L"--watch", L"--json"}), 130);
  EXPECT_EQ(Out(),
            R"({"schema":1,"reachable":true,"reason":null,"connected":false,"address":""})"
            "\n"
            R"({"schema":1,"reachable":false,"reason":"absent","connected":null,"address":""})"
            "\n");
}

TEST_F(StatusTest, AWatchSaysAtOnceThatTheServiceIsBusy) {
  machine.pipes.AddForeign(L"\\\\.\\pipe\\TavrinService");
  machine.clock.After(500, [&] { machine.console.Send(CTRL_C_EVENT); });
  EXPECT_EQ(Run({L"status", L"--watch"}), 130);
  EXPECT_EQ(Out(), "The service is busy with another client.\n");
}

TEST_F(StatusTest, AWatchSaysAtOnceThatTheServiceHasNoPipeYet) {
  machine.services.Install({.name = "TavrinService", .state = SERVICE_START_PENDING});
  machine.clock.After(500, [&] { machine.console.Send(CTRL_C_EVENT); });
  EXPECT_EQ(Run({L"status", L"--watch"}), 130);
  EXPECT_EQ(Out(), "The service has no pipe yet.\n");
}

TEST_F(StatusTest, AWatchEndsAtCtrlCWhileAReplyIsAwaited) {
  ScriptedService service(machine);
  machine.clock.After(200, [&] { machine.console.Send(CTRL_C_EVENT); });
  const std::uint64_t start = machine.clock.Now();
  EXPECT_EQ(Run({L"status", L"--watch"}), 130);
  EXPECT_EQ(machine.clock.Now() - start, 200u);
  EXPECT_EQ(Out() + Err(), "");
}

TEST_F(StatusTest, AWatchGivesASilentServiceTenSeconds) {
  ScriptedService service(machine);
  machine.clock.After(10'500, [&] { machine.console.Send(CTRL_C_EVENT); });
  EXPECT_EQ(Run({L"status", L"--watch"}), 130);
  EXPECT_EQ(Out(), "There was no reply in time; the service may still be at work.\n");
}

}  // namespace
}  // namespace vpn
