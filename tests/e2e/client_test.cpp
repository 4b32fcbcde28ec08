// The client against the shipping service.
#include <nlohmann/json.hpp>

#include "tests/e2e/harness/client_run.h"
#include "tests/e2e/harness/console_events.h"
#include "tests/e2e/harness/service_test.h"
#include "tests/e2e/harness/waiting.h"
#include "tests/standins/text.h"

namespace e2e {
namespace {

using Json = nlohmann::json;
using standins::MachineState;

class Client : public ServiceTest {
 protected:
  Json Ask(const std::wstring& arguments, DWORD exitCode) {
    return ClientObject(box, arguments, exitCode);
  }
  Json Finding(const std::string& check) { return DoctorFinding(box, check); }
};

const std::vector<std::string> kWholeTrace = {
    "stop() idle",       "kill stale (clean)", "find physical route",
    "pin panel hosts",   "spawn xray",         "xray socks listening",
    "spawn tun2socks",   "wintun adapter up",  "set tun address (api)",
    "set tun dns (api)", "tun ipv4 ready",     "routes installed",
    "ipv6 leak blocked"};

TEST_F(Client, AConnectHasEveryStepOfTheTrace) {
  StartService();
  const Json reply = Ask(L"connect", 0);
  EXPECT_EQ(reply.at("ok"), true);
  EXPECT_EQ(reply.at("running"), true);
  std::vector<std::string> labels;
  for (const Json& mark : reply.at("trace").at("marks")) labels.push_back(mark.at("label"));
  EXPECT_EQ(labels, kWholeTrace);
  const Json status = Ask(L"status", 0);
  EXPECT_EQ(status.at("connected"), true);
  EXPECT_EQ(status.at("node").at("port"), 443);
}

TEST_F(Client, WatchingAConnectTakesNoLineFromItsTrace) {
  StartService();
  ClientRun run(box, L"connect");
  EXPECT_EQ(run.ExitCode(), 0u) << run.Errors();
  EXPECT_EQ(TraceLabels(), kWholeTrace);
}

TEST_F(Client, WithoutAServiceItIsTwoAtOnce) {
  const Json reply = Ask(L"status", 2);
  EXPECT_EQ(reply.at("reachable"), false);
  EXPECT_EQ(reply.at("reason"), "absent");
}

TEST_F(Client, ABusyServiceIsWaitedForAndToldApart) {
  StartService();
  PipeClient other;
  ClientRun run(box, L"status");
  WaitUntil("the client says that the service is busy", [&] { return !run.Errors().empty(); });
  EXPECT_EQ(run.Errors(), "The service is busy with another client; waiting.\n");
  EXPECT_TRUE(run.IsRunning());
  other.Close();
  EXPECT_EQ(run.ExitCode(), 0u);
  EXPECT_TRUE(run.Output().starts_with("Tavrin is not connected.\n")) << run.Output();
}

TEST_F(Client, AnUnknownNodeNeverReachesTheService) {
  StartService();
  WaitForListening();
  ClientRun run(box, L"connect \"No such node\"");
  EXPECT_EQ(run.ExitCode(), 1u);
  EXPECT_TRUE(run.Errors().starts_with("No node is called \"No such node\".")) << run.Errors();
  for (const std::string& line : ServiceLog()) EXPECT_FALSE(line.starts_with("ipc op=")) << line;
}

TEST_F(Client, CtrlCEndsTheClientAndNotTheConnect) {
  machine.Edit([](MachineState& state) { state.xray.delayMs = 1500; });
  StartService();
  ClientRun run(box, L"connect");
  WaitUntil("Xray has been started", [&] { return machine.Starts("xray.exe") == 1; });
  PressCtrlC(run.pid());
  EXPECT_EQ(run.ExitCode(), 130u);
  EXPECT_TRUE(run.Errors().ends_with("The service goes on with the connect.\n")) << run.Errors();
  EXPECT_EQ(e2e::Ask(R"({"op":"status"})"), kUp);
}

TEST_F(Client, AFailedConnectSaysWhatToDo) {
  machine.Edit([](MachineState& state) { state.xray.exitCode = 23; });
  StartService();
  ClientRun run(box, L"connect");
  EXPECT_EQ(run.ExitCode(), 1u);
  EXPECT_TRUE(
      run.Errors().starts_with("连接核心无法启动，请换一条线路或重新登录后再试。\n"
                               "  Xray has written nothing into xray-error.log.\n"
                               "  What to do: choose another node, or sign in again"))
      << run.Errors();
}

TEST_F(Client, RawRequestsGoByteForByte) {
  StartService();
  ClientRun run(box, L"request \"{\\\"op\\\":\\\"frob\\\"}\"");
  EXPECT_EQ(run.ExitCode(), 1u);
  EXPECT_EQ(run.Output(), Refusal("op not allowed") + "\n");
}

TEST_F(Client, AWrongLineIsThree) {
  ClientRun run(box, L"connect --frob");
  EXPECT_EQ(run.ExitCode(), 3u);
  EXPECT_EQ(run.Output(), "");
}

TEST_F(Client, TheDoctorFindsWhatACrashLeft) {
  StartService();
  ASSERT_EQ(e2e::Ask(R"({"op":"connect"})"), kUp);
  EXPECT_EQ(Finding("leftovers").at("verdict"), "good");
  service().Kill();
  const Json finding = Finding("leftovers");
  EXPECT_EQ(finding.at("verdict"), "remark");
  EXPECT_TRUE(finding.at("text").get<std::string>().starts_with(
      "IPv6 router discovery is off on 以太网; 1 route of its own to "))
      << finding;
}

TEST_F(Client, TheDoctorChangesNothingOfTheNetwork) {
  StartService();
  WaitForListening();
  const netmodel::Network before = machine.Network();
  EXPECT_EQ(Finding("route").at("text"), "以太网 via 192.168.1.1");
  EXPECT_TRUE(machine.Network() == before);
  EXPECT_EQ(Finding("service").at("verdict"), "good");
}

TEST_F(Client, AReportHasNoSecretInIt) {
  StartService();
  ASSERT_EQ(e2e::Ask(R"({"op":"connect"})"), kUp);
  ClientRun run(box, L"report \"" + box.root() + L"\\report.md\"");
  EXPECT_EQ(run.ExitCode(), 0u) << run.Errors();
  const std::string report = ReadText(box.root() + L"\\report.md");
  EXPECT_TRUE(report.starts_with("# Tavrin: report for support\n"));
  EXPECT_NE(report.find("ipc op=connect"), std::string::npos);
  const Account account;
  for (const std::string& secret :
       {account.email, account.uuid, account.publicKey, account.shortId, account.sni}) {
    EXPECT_EQ(report.find(secret), std::string::npos) << secret;
  }
}

}  // namespace
}  // namespace e2e
