#include "src/control/dispatch.h"

#include "src/control/account_cache.h"
#include "tests/sim/pipe_client.h"
#include "tests/unit/control/control_fixture.h"

namespace vpn {
namespace {

using std::string_literals::operator""s;
using unit::kOkIdle;
using unit::kOkRunning;

// One client on a pipe whose buffers are so large that neither end waits for the other. The client
// reads its reply while the server flushes.
class Dispatch : public unit::ControlTest {
 protected:
  Dispatch() {
    server = CreateNamedPipeW(L"\\\\.\\pipe\\TavrinService", PIPE_ACCESS_DUPLEX, 0, 8, 1 << 20,
                              1 << 20, 0, nullptr);
    EXPECT_TRUE(client.Connect());
    machine.faults.BeforeEach("FlushFileBuffers",
                              [this] { reply = client.ReceiveFrame().value_or("no frame"); });
  }
  void TearDown() override {
    (void)CloseHandle(server);
    client.Close();
    ControlTest::TearDown();
  }

  std::string Handle(std::string_view request) {
    reply = "none";
    EXPECT_TRUE(client.SendFrame(request));
    HandleClient(server);
    return reply;
  }
  std::string Connect() { return Handle(R"({"op":"connect"})"); }

  HANDLE server;
  sim::PipeClient client{machine};
  std::string reply;
};

TEST_F(Dispatch, StatusWhenNothingWasEverStartedAsksNobody) {
  EXPECT_EQ(Handle(R"({"op":"status"})"), kOkIdle);
  EXPECT_EQ(machine.calls.Count("_wfsopen"), 0u);
  EXPECT_EQ(machine.calls.TextsOf("CreateFileW"),
            std::vector<std::string>{R"("C:\run\tavrin-service.log", 0x40000000, 3, 4, 0x80)"});
  EXPECT_EQ(Log(), "ipc op=status\n");
}

TEST_F(Dispatch, StatusOfARunningTunnel) {
  EXPECT_EQ(Connect(), kOkRunning);
  EXPECT_EQ(Handle(R"({"op":"status"})"), kOkRunning);
}

TEST_F(Dispatch, StatusSaysFalseWhenOneChildHasDied) {
  EXPECT_EQ(Connect(), kOkRunning);
  machine.processes.Exit(machine.processes.Started()[0]->id, 1);
  EXPECT_EQ(Handle(R"({"op":"status"})"), kOkIdle);
}

TEST_F(Dispatch, ConnectWithoutAndWithAnEmptyNodeTakesTheFirst) {
  EXPECT_EQ(Handle(R"({"op":"connect"})"), kOkRunning);
  EXPECT_EQ(Handle(R"({"op":"connect","node":""})"), kOkRunning);
  EXPECT_EQ(Handle(R"({"op":"connect","node":5})"), kOkRunning);
  EXPECT_EQ(Fetches(), 1);
  EXPECT_EQ(Log(), "ipc op=connect\nipc op=connect\nipc op=connect\n");
}

TEST_F(Dispatch, ConnectWithTheNodesNameMatchesIt) {
  machine.files.Put(L"C:\\run\\account.json", unit::AccountJson("东京 😀"));
  EXPECT_EQ(Handle(R"({"op":"connect","node":"东京 😀"})"), kOkRunning);
  EXPECT_EQ(Fetches(), 1);  // a node that does not match would be looked for again
}

TEST_F(Dispatch, ConnectWithAnUnknownNodeFetchesAfreshAndIsOk) {
  EXPECT_EQ(Handle(R"({"op":"connect","node":"Tokyo"})"), kOkRunning);
  EXPECT_EQ(Handle(R"({"op":"connect","node":"Atlantis"})"), kOkRunning);
  EXPECT_EQ(Fetches(), 2);
}

TEST_F(Dispatch, NodeThatIsNotValidUtf8IsWhatThePlatformMakesOfIt) {
  EXPECT_EQ(Handle("{\"op\":\"connect\",\"node\":\"Tok\xFFyo\"}"), kOkRunning);
  EXPECT_EQ(Fetches(), 2);  // it matched nothing
  machine.files.Put(L"C:\\run\\account.json", unit::AccountJson("Tok\xEF\xBF\xBDyo"));
  InvalidateAccountCache();
  EXPECT_EQ(Handle("{\"op\":\"connect\",\"node\":\"Tok\xFFyo\"}"), kOkRunning);
  EXPECT_EQ(Fetches(), 3);  // the replacement character is in both
}

TEST_F(Dispatch, FailedConnectIsAnsweredAndLogged) {
  machine.files.Remove(L"C:\\run\\session.json");
  EXPECT_EQ(Connect(), R"({"ok":false,"running":false,"error":"not logged in"})");
  EXPECT_EQ(Log(), "ipc op=connect\nipc error=not logged in\n");
}

TEST_F(Dispatch, BackslashesInAnErrorAreEscapedInTheReplyButNotInTheLog) {
  machine.files.Remove(L"C:\\run\\account.json");
  EXPECT_EQ(Connect(),
            R"({"ok":false,"running":false,"error":"cannot read C:\\run\\account.json"})");
  EXPECT_EQ(Log(), "ipc op=connect\nipc error=cannot read C:\\run\\account.json\n");
}

TEST_F(Dispatch, ChineseErrorIsUtf8InTheReplyAndInTheLog) {
  machine.programs.OnNext(L"xray.exe", sim::Script().Exits(23, 100));
  EXPECT_EQ(Connect(),
            "{\"ok\":false,\"running\":false,"
            "\"error\":\"连接核心无法启动，请换一条线路或重新登录后再试。\"}");
  EXPECT_EQ(Log(), "ipc op=connect\nipc error=连接核心无法启动，请换一条线路或重新登录后再试。\n");
}

TEST_F(Dispatch, ConnectThatFailsBeforeTheStartSaysThatTheOldTunnelRuns) {
  EXPECT_EQ(Connect(), kOkRunning);
  machine.faults.Fail("GetIpForwardTable2");
  EXPECT_EQ(Connect(), R"({"ok":false,"running":true,"error":"GetIpForwardTable2 failed"})");
  EXPECT_EQ(Alive(), unit::BothChildren());
}

TEST_F(Dispatch, ConnectThatFailsInTheStartSaysThatNothingRuns) {
  EXPECT_EQ(Connect(), kOkRunning);
  machine.files.Remove(L"C:\\run\\xray\\xray.exe");
  EXPECT_EQ(Connect(), R"({"ok":false,"running":false,"error":"xray.exe not found"})");
}

TEST_F(Dispatch, FailedStartMakesTheNextConnectFetchAfresh) {
  machine.files.Remove(L"C:\\run\\xray\\xray.exe");
  EXPECT_EQ(Connect(), R"({"ok":false,"running":false,"error":"xray.exe not found"})");
  machine.files.Put(L"C:\\run\\xray\\xray.exe");
  EXPECT_EQ(Connect(), kOkRunning);
  EXPECT_EQ(Fetches(), 2);
}

TEST_F(Dispatch, DisconnectWhenIdleIsOk) {
  EXPECT_EQ(Handle(R"({"op":"disconnect"})"), kOkIdle);
  EXPECT_EQ(Log(), "ipc op=disconnect\n");
}

TEST_F(Dispatch, DisconnectTakesTheTunnelDownBeforeItAnswers) {
  EXPECT_EQ(Connect(), kOkRunning);
  EXPECT_EQ(Handle(R"({"op":"disconnect"})"), kOkIdle);
  EXPECT_EQ(Alive(), std::vector<std::string>());
  EXPECT_EQ(g_stopRequested, 0);
}

TEST_F(Dispatch, DisconnectKeepsTheCachedAccount) {
  EXPECT_EQ(Connect(), kOkRunning);
  EXPECT_EQ(Handle(R"({"op":"disconnect"})"), kOkIdle);
  EXPECT_EQ(Connect(), kOkRunning);
  EXPECT_EQ(Fetches(), 1);
}

TEST_F(Dispatch, ShutdownThatIsNotAllowedIsADisconnect) {
  EXPECT_EQ(Connect(), kOkRunning);
  EXPECT_EQ(Handle(R"({"op":"shutdown"})"), kOkIdle);
  EXPECT_EQ(Alive(), std::vector<std::string>());
  EXPECT_EQ(g_stopRequested, 0);
}

TEST_F(Dispatch, ShutdownThatIsAllowedStopsTheTunnelFirstAndThenAsksForTheEnd) {
  EXPECT_EQ(Connect(), kOkRunning);
  g_shutdownAllowed = 1;
  int atTermination = -1;
  int atReply = -1;
  machine.faults.Before("TerminateProcess", 1, [&] { atTermination = g_stopRequested; });
  machine.faults.Before("WriteFile", 2, [&] { atReply = g_stopRequested; });  // behind the log's
  EXPECT_EQ(Handle(R"({"op":"shutdown"})"), kOkIdle);
  EXPECT_EQ(atTermination, 0);
  EXPECT_EQ(atReply, 1);
}

TEST_F(Dispatch, ShutdownMakesNoConnectionToThePipe) {
  g_shutdownAllowed = 1;
  EXPECT_EQ(Handle(R"({"op":"shutdown"})"), kOkIdle);
  EXPECT_EQ(PipeConnections(), 0);
}

TEST_F(Dispatch, AnythingElseIsNotAllowed) {
  constexpr char kRefused[] = R"({"ok":false,"running":false,"error":"op not allowed"})";
  for (const std::string& request :
       {R"({"op":""})"s, R"({"op":"Status"})"s, R"({"op":"STATUS"})"s, R"({"op":"statu"})"s,
        R"({"op":"status "})"s, R"({"op":" status"})"s, R"({"op":"status\0"})"s,
        "{\"op\":\"status\0\"}"s, R"({"op":"connectx"})"s, R"({"op":"reconnect"})"s, R"({"op":5})"s,
        R"({"OP":"status"})"s, "{}"s, "   "s, "x"s, "\0"s}) {
    SCOPED_TRACE(::testing::PrintToString(request));
    EXPECT_EQ(Handle(request), kRefused);
  }
  EXPECT_EQ(machine.processes.Started().size(), 0u);
}

TEST_F(Dispatch, RefusedOperationIsLoggedWithItsErrorAndLeavesTheTunnel) {
  EXPECT_EQ(Connect(), kOkRunning);
  EXPECT_EQ(Handle(R"({"op":"reboot"})"),
            R"({"ok":false,"running":true,"error":"op not allowed"})");
  EXPECT_EQ(Log(), "ipc op=connect\nipc op=reboot\nipc error=op not allowed\n");
}

TEST_F(Dispatch, EmptyOpIsLoggedAsSuch) {
  (void)Handle("{}");
  EXPECT_EQ(Log(), "ipc op=\nipc error=op not allowed\n");
}

TEST_F(Dispatch, BytesOfTheOpAreSignExtendedForTheLog) {
  (void)Handle("{\"op\":\"a\x7F\x80\xE4\xFF\"}");
  // The units 0061 007F FF80 FFE4 FFFF.
  EXPECT_EQ(Log(), "ipc op=a\x7F\xEF\xBE\x80\xEF\xBF\xA4\xEF\xBF\xBF\nipc error=op not allowed\n");
}

TEST_F(Dispatch, NulInTheOpEndsTheLogLine) {
  (void)Handle("{\"op\":\"a\0b\"}"s);
  EXPECT_EQ(Log(), "ipc op=a\nipc error=op not allowed\n");
}

TEST_F(Dispatch, OpIsLoggedBeforeItIsCarriedOut) {
  std::string log;
  machine.faults.Before("GetIpForwardTable2", 1, [&] { log = Log(); });
  EXPECT_EQ(Connect(), kOkRunning);
  EXPECT_EQ(log, "ipc op=connect\n");
}

TEST_F(Dispatch, UnreadableRequestIsLoggedAndGetsNoReply) {
  client.Close();
  HandleClient(server);
  EXPECT_EQ(Log(), "ipc read failed err=109\n");
  EXPECT_EQ(PipeWrites(), 0);
}

TEST_F(Dispatch, RefusedLengthIsLoggedWithWhateverCodeStoodLast) {
  for (const std::string& header : {"\0\0\0\0"s, "\x01\0\x01\0"s}) {
    client.Write(header);
    SetLastError(4711);
    HandleClient(server);
  }
  EXPECT_EQ(Log(), "ipc read failed err=4711\nipc read failed err=4711\n");
  EXPECT_EQ(PipeWrites(), 0);
}

TEST_F(Dispatch, CodesAreLoggedAsUnsignedNumbers) {
  machine.faults.Fail("ReadFile", {.code = 0xFFFFFFFF});
  HandleClient(server);
  EXPECT_EQ(Log(), "ipc read failed err=4294967295\n");
}

TEST_F(Dispatch, ClientThatLeftBeforeTheReplyIsLoggedAndTheTunnelStays) {
  machine.faults.Before("WriteFile", 2, [this] { client.Close(); });  // the first is the log's
  EXPECT_EQ(Connect(), "none");
  EXPECT_EQ(Log(), "ipc op=connect\nipc write reply failed err=232\n");
  EXPECT_EQ(Alive(), unit::BothChildren());
}

TEST_F(Dispatch, PipeIsNeverClosed) {
  (void)Handle(R"({"op":"status"})");
  EXPECT_EQ(machine.calls.TextsOf("CloseHandle"),
            std::vector<std::string>{R"(file C:\run\tavrin-service.log)"});
  EXPECT_EQ(machine.calls.Count("DisconnectNamedPipe"), 0u);
}

}  // namespace
}  // namespace vpn
