// The hidden half of run_modes.h.
#include "src/host/run_modes.h"

#include "src/control/pipe_server.h"
#include "tests/unit/host/run_mode_fixture.h"

namespace vpn {
namespace {

using unit::kConnect;
using unit::kOkIdle;
using unit::kOkRunning;
using unit::kShutdown;

class DaemonMode : public unit::RunModeTest {
 protected:
  static constexpr std::uint32_t kOwner = 777;
  void SeedOwner() {
    machine.processes.Seed(L"C:\\ui\\TavrinUi.exe", kOwner);
    g_ownerPid = kOwner;
  }
  void EndOwner() {
    // One that ends before the watch has opened it would be none.
    EXPECT_TRUE(unit::Eventually([&] { return machine.calls.Count("OpenProcess") > 0; }));
    machine.processes.Exit(kOwner, 0);
  }
};

TEST_F(DaemonMode, FirstAndLastLineAreLoggedAndNothingIsEchoed) {
  g_consoleEcho = 1;
  AtFirstWait([] { WakeControlPipe(); });
  EXPECT_EQ(DaemonMain(), 0);
  EXPECT_EQ(Log(), "daemon mode. runtime=C:\\run\ndaemon stopped\n");
  EXPECT_EQ(machine.console.Output(), "");
  EXPECT_EQ(g_consoleEcho, 0);
}

TEST_F(DaemonMode, ConsoleIsGivenUpBeforeTheFirstLine) {
  AtFirstWait([] { WakeControlPipe(); });
  (void)DaemonMain();
  const std::vector<std::string> sequence =
      machine.calls.Sequence({"FreeConsole", "SetCurrentDirectoryW", "SetConsoleCtrlHandler"});
  EXPECT_EQ(sequence,
            (std::vector<std::string>{"FreeConsole ", R"(SetCurrentDirectoryW "C:\run")"}));
  EXPECT_EQ(machine.calls.Names().front(), "FreeConsole");
  EXPECT_FALSE(machine.console.attached);
}

TEST_F(DaemonMode, WithoutAConsoleItRunsAllTheSame) {
  machine.console.attached = false;
  AtFirstWait([] { WakeControlPipe(); });
  EXPECT_EQ(DaemonMain(), 0);
  EXPECT_EQ(Log(), "daemon mode. runtime=C:\\run\ndaemon stopped\n");
}

TEST_F(DaemonMode, FlagsOfEarlierValuesAreSetAnew) {
  g_stopRequested = 1;
  int stop = -1;
  int shutdown = -1;
  AtFirstWait([&] {
    stop = g_stopRequested;
    shutdown = g_shutdownAllowed;
    WakeControlPipe();
  });
  EXPECT_EQ(DaemonMain(), 0);
  EXPECT_EQ(stop, 0);
  EXPECT_EQ(shutdown, 1);
}

TEST_F(DaemonMode, ShutdownIsAnsweredAndThenEndsTheProcess) {
  unit::BackgroundServer server(machine, DaemonMain);
  EXPECT_EQ(Exchange(kShutdown), kOkIdle);
  ASSERT_TRUE(server.Ends());
  EXPECT_EQ(server.Result(), 0);
  EXPECT_EQ(Log(), "daemon mode. runtime=C:\\run\nipc op=shutdown\ndaemon stopped\n");
}

TEST_F(DaemonMode, OwnerIdOfZeroStartsNoWatch) {
  AtFirstWait([] { WakeControlPipe(); });
  (void)DaemonMain();
  EXPECT_EQ(machine.calls.Count("CreateThread"), 1u);  // the warm-up
  EXPECT_EQ(machine.calls.Count("OpenProcess"), 0u);
}

TEST_F(DaemonMode, WatchIsStartedBeforeTheServerAndItsHandleClosedAtOnce) {
  SeedOwner();
  AtFirstWait([&] { EndOwner(); });
  EXPECT_EQ(DaemonMain(), 0);
  const std::vector<std::string> sequence =
      machine.calls.Sequence({"CreateThread", "SetCurrentDirectoryW"});
  EXPECT_EQ(sequence, (std::vector<std::string>{"CreateThread ", R"(SetCurrentDirectoryW "C:\run")",
                                                "CreateThread "}));
  const std::vector<std::string> closed =
      machine.calls.Sequence({"CloseHandle", "SetCurrentDirectoryW"});
  EXPECT_EQ(closed.at(0), R"(CloseHandle file C:\run\tavrin-service.log)");
  EXPECT_EQ(closed.at(1), "CloseHandle thread");
}

TEST_F(DaemonMode, EndOfTheOwnerEndsAWaitingServer) {
  SeedOwner();
  unit::BackgroundServer server(machine, DaemonMain);
  ASSERT_TRUE(server.HasCreated(1));
  EndOwner();
  ASSERT_TRUE(server.Ends());
  EXPECT_EQ(server.Result(), 0);
  EXPECT_EQ(Log(),
            "daemon mode. runtime=C:\\run\nui process exited; stopping helper\ndaemon stopped\n");
}

TEST_F(DaemonMode, EndOfTheOwnerTakesARunningTunnelDown) {
  unit::PutRuntime(machine);
  SeedOwner();
  unit::BackgroundServer server(machine, DaemonMain);
  EXPECT_EQ(Exchange(kConnect), kOkRunning);
  EXPECT_EQ(machine.processes.Alive(),
            (std::vector<std::string>{"TavrinUi.exe", "xray.exe", "tun2socks-windows-amd64.exe"}));
  EndOwner();
  ASSERT_TRUE(server.Ends());
  EXPECT_EQ(machine.processes.Alive(), std::vector<std::string>());
  EXPECT_EQ(Log(),
            "daemon mode. runtime=C:\\run\nipc op=connect\n"
            "ui process exited; stopping helper\ndaemon stopped\n");
}

TEST_F(DaemonMode, TunnelIsDownBeforeTheLastLineIsLogged) {
  unit::PutRuntime(machine);
  unit::BackgroundServer server(machine, DaemonMain);
  EXPECT_EQ(Exchange(kConnect), kOkRunning);
  std::vector<std::string> alive = {"not seen"};
  // What stands at the end is from the last line.
  machine.faults.BeforeEach("LockFileEx", [&] { alive = machine.processes.Alive(); });
  WakeControlPipe();
  ASSERT_TRUE(server.Ends());
  EXPECT_EQ(alive, std::vector<std::string>());
}

TEST_F(DaemonMode, OwnerThatIsGoneLeavesTheDaemonUpUntilShutdown) {
  g_ownerPid = kOwner;
  unit::BackgroundServer server(machine, DaemonMain);
  EXPECT_EQ(Exchange(R"({"op":"status"})"), kOkIdle);
  EXPECT_FALSE(server.IsDone());
  EXPECT_EQ(Exchange(kShutdown), kOkIdle);
  ASSERT_TRUE(server.Ends());
  EXPECT_EQ(machine.WaitForThreads(), 0u);  // the watch may be the last to log
  const std::string log = Log();
  EXPECT_NE(log.find("owner pid open failed err=87\n"), std::string::npos) << log;
  EXPECT_EQ(log.find("ui process exited"), std::string::npos) << log;
}

TEST_F(DaemonMode, WatchThatCannotBeStartedIsIgnored) {
  AllowChildren();
  SeedOwner();
  machine.faults.Fail("CreateThread");
  unit::BackgroundServer server(machine, DaemonMain);
  EXPECT_EQ(Exchange(kShutdown), kOkIdle);
  ASSERT_TRUE(server.Ends());
  EXPECT_EQ(machine.calls.Count("OpenProcess"), 0u);
  EXPECT_EQ(Log(), "daemon mode. runtime=C:\\run\nipc op=shutdown\ndaemon stopped\n");
}

TEST_F(DaemonMode, OwnerThatEndsDuringARequestIsNoticedWhenItIsAnswered) {
  unit::PutRuntime(machine);
  SeedOwner();
  machine.faults.Before("CreateJobObjectW", 1, [&] {
    EndOwner();
    EXPECT_TRUE(unit::Eventually([] { return g_stopRequested != 0; }));
  });
  unit::BackgroundServer server(machine, DaemonMain);
  EXPECT_EQ(Exchange(kConnect), kOkRunning);
  ASSERT_TRUE(server.Ends());
  EXPECT_EQ(machine.processes.Alive(), std::vector<std::string>());
}

}  // namespace
}  // namespace vpn
