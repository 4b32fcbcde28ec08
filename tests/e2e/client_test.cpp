// The client against the shipping service.
#include <nlohmann/json.hpp>

#include <map>

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
  for (const std::string& secret : {std::string("secret"), account.email, account.uuid,
                                    account.publicKey, account.shortId, account.sni}) {
    EXPECT_EQ(report.find(secret), std::string::npos) << secret;
  }
  EXPECT_FALSE(Exists(box.root() + L"\\report.md.part"));
}

std::uint64_t LastWrite(const std::wstring& path) {
  WIN32_FILE_ATTRIBUTE_DATA data{};
  EXPECT_NE(GetFileAttributesExW(path.c_str(), GetFileExInfoStandard, &data), FALSE);
  return static_cast<std::uint64_t>(data.ftLastWriteTime.dwHighDateTime) << 32 |
         data.ftLastWriteTime.dwLowDateTime;
}

TEST_F(Client, TheCheckOfTheConfigurationLeavesXraysLogAlone) {
  StartService();
  ASSERT_EQ(e2e::Ask(R"({"op":"connect"})"), kUp);
  ASSERT_EQ(e2e::Ask(R"({"op":"disconnect"})"), kDown);
  const std::wstring log = box.runtime() + L"\\xray-error.log";
  const std::string content = ReadText(log);
  const std::uint64_t time = LastWrite(log);
  EXPECT_EQ(Finding("configuration").at("text"), "Xray accepts the last one");
  EXPECT_EQ(ReadText(log), content);
  EXPECT_EQ(LastWrite(log), time);
  RemoveFile(log);
  EXPECT_EQ(Finding("configuration").at("verdict"), "good");
  EXPECT_FALSE(Exists(log));
}

TEST_F(Client, WithABusyServiceTheDoctorTakesItsTunnelForNothingElse) {
  StartService();
  ASSERT_EQ(e2e::Ask(R"({"op":"connect"})"), kUp);
  PipeClient other;
  ClientRun run(box, L"doctor --json");
  (void)run.ExitCode();
  std::map<std::string, std::string> verdicts;
  const Json object = Json::parse(run.Output());
  for (const Json& finding : object.at("findings")) {
    verdicts[finding.at("check")] = finding.at("verdict");
  }
  for (const char* check : {"service", "port", "leftovers"}) {
    EXPECT_EQ(verdicts[check], "remark") << check;
  }
  EXPECT_EQ(verdicts["lastConnect"], "good");
}

TEST_F(Client, DamagedFilesGetNoGreenMark) {
  const std::wstring wintun = box.runtime() + L"\\tun2socks\\wintun.dll";
  const std::wstring panel = box.runtime() + L"\\panel.json";
  WriteText(box.runtime() + L"\\xray\\geoip.dat", "data");
  WriteText(box.runtime() + L"\\xray\\geosite.dat", "data");
  EXPECT_EQ(Finding("programs").at("verdict"), "good");
  WriteText(wintun, "");
  EXPECT_TRUE(Finding("programs").at("text").get<std::string>().ends_with("wintun.dll is empty"));
  RemoveFile(wintun);
  MakeDirectories(wintun);
  EXPECT_TRUE(
      Finding("programs").at("text").get<std::string>().ends_with("wintun.dll is a directory"));
  WriteText(panel, R"({"apiBase":"https://panel.example"})");
  const HANDLE held =
      CreateFileW(panel.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
  EXPECT_TRUE(Finding("panel").at("text").get<std::string>().ends_with("panel.json can't be read"));
  CloseHandle(held);
}

// The doctor notes no Ctrl+C. Here it waits three seconds for this test's reply.
TEST_F(Client, CtrlCHasItsExitCodeInEveryCommand) {
  const HANDLE pipe = CreateNamedPipeW(L"\\\\.\\pipe\\TavrinService", PIPE_ACCESS_DUPLEX,
                                       PIPE_TYPE_BYTE | PIPE_WAIT, 1, 4096, 4096, 0, nullptr);
  ASSERT_NE(pipe, INVALID_HANDLE_VALUE);
  ClientRun run(box, L"doctor");
  ConnectNamedPipe(pipe, nullptr);
  PressCtrlC(run.pid());
  EXPECT_EQ(run.ExitCode(), 130u);
  CloseHandle(pipe);
}

// Nobody but this test stands behind the pipe.
TEST_F(Client, HalfAReplyFromAPeerThatStaysEndsTheWait) {
  const HANDLE pipe = CreateNamedPipeW(L"\\\\.\\pipe\\TavrinService", PIPE_ACCESS_DUPLEX,
                                       PIPE_TYPE_BYTE | PIPE_WAIT, 1, 4096, 4096, 0, nullptr);
  ASSERT_NE(pipe, INVALID_HANDLE_VALUE);
  ClientRun run(box, L"disconnect");
  ConnectNamedPipe(pipe, nullptr);
  DWORD count = 0;
  EXPECT_NE(WriteFile(pipe, "\x10\0", 2, &count, nullptr), FALSE);
  EXPECT_EQ(run.ExitCode(), 2u);
  EXPECT_TRUE(run.Errors().starts_with("The reply broke off in the middle.\n")) << run.Errors();
  CloseHandle(pipe);
}

}  // namespace
}  // namespace e2e
