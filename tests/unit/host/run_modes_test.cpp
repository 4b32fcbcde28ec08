#include "src/host/run_modes.h"

#include "src/host/process_state.h"
#include "src/host/wake.h"
#include "tests/unit/background_server.h"
#include "tests/unit/product_state.h"
#include "tests/unit/runtime_files.h"

namespace vpn {
namespace {

constexpr char kOkIdle[] = R"({"ok":true,"running":false,"error":""})";
constexpr char kOkRunning[] = R"({"ok":true,"running":true,"error":""})";
constexpr char kConnect[] = R"({"op":"connect"})";
constexpr char kShutdown[] = R"({"op":"shutdown"})";

class RunModeTest : public unit::ProductTest {
 protected:
  RunModeTest() {
    machine.files.PutDirectory(L"C:\\run");
    SetRuntimeDir(L"C:\\run");
  }
  std::string Log() { return machine.files.Read(L"C:\\run\\tavrin-service.log").value_or(""); }
  // Runs in front of the server's first wait for a client.
  void AtFirstWait(std::function<void()> action) {
    machine.faults.Before("ConnectNamedPipe", 1, std::move(action));
  }
  std::string Exchange(const char* request) {
    return sim::PipeClient::Exchange(machine, request).value_or("no reply");
  }
};

class ConsoleMode : public RunModeTest {
 protected:
  static constexpr char kBanner[] =
      "TavrinService console mode. Pipe \\\\.\\pipe\\TavrinService\n"
      "Runtime C:\\run\n"
      "Ctrl+C to stop.\n";
};

TEST_F(ConsoleMode, BannerAndLastLineAreLoggedAndEchoed) {
  AtFirstWait([&] { machine.console.Send(CTRL_C_EVENT); });
  EXPECT_EQ(ConsoleMain(), 0);
  EXPECT_EQ(Log(), std::string(kBanner) + "stopped.\n");
  EXPECT_EQ(machine.console.Output(), std::string(kBanner) + "stopped.\n");
}

TEST_F(ConsoleMode, ConsoleIsPreparedBeforeTheServerStarts) {
  AtFirstWait([&] { machine.console.Send(CTRL_C_EVENT); });
  (void)ConsoleMain();
  EXPECT_EQ(machine.calls.Sequence(
                {"SetConsoleOutputCP", "SetConsoleCtrlHandler", "SetCurrentDirectoryW"}),
            (std::vector<std::string>{"SetConsoleOutputCP 65001", "SetConsoleCtrlHandler 1",
                                      R"(SetCurrentDirectoryW "C:\run")"}));
}

TEST_F(ConsoleMode, FlagsOfEarlierValuesAreSetAnew) {
  StopRequested = 1;  // a stale request must not end the server
  int stop = -1;
  int echo = -1;
  int shutdown = -1;
  AtFirstWait([&] {
    stop = StopRequested;
    echo = ConsoleEcho;
    shutdown = ShutdownAllowed;
    machine.console.Send(CTRL_C_EVENT);
  });
  EXPECT_EQ(ConsoleMain(), 0);
  EXPECT_EQ(stop, 0);
  EXPECT_EQ(echo, 1);
  EXPECT_EQ(shutdown, 1);
}

TEST_F(ConsoleMode, EachOfTheThreeEventsEndsAWaitingServer) {
  for (const DWORD event : {CTRL_C_EVENT, CTRL_BREAK_EVENT, CTRL_CLOSE_EVENT}) {
    SCOPED_TRACE(event);
    const size_t before = machine.pipes.Created().size();
    unit::BackgroundServer server(machine, ConsoleMain);
    ASSERT_TRUE(server.HasCreated(before + 1));
    EXPECT_TRUE(machine.console.Send(event));
    ASSERT_TRUE(server.Ends());
    EXPECT_EQ(server.Result(), 0);
    EXPECT_EQ(machine.pipes.Created().size(), before + 1);
  }
}

TEST_F(ConsoleMode, OtherEventsAreLeftToTheNextHandler) {
  for (const DWORD event : {CTRL_LOGOFF_EVENT, CTRL_SHUTDOWN_EVENT, 3u, 0xFFFFFFFFu}) {
    EXPECT_EQ(ConsoleControlHandler(event), FALSE) << event;
  }
  EXPECT_EQ(StopRequested, 0);
  EXPECT_EQ(machine.calls.Count("CreateFileW"), 0u);
}

TEST_F(ConsoleMode, HandledEventGivesOneAndWakesThePipe) {
  for (const DWORD event : {0u, 1u, 2u}) {
    StopRequested = 0;
    EXPECT_EQ(ConsoleControlHandler(event), 1) << event;
    EXPECT_EQ(StopRequested, 1) << event;
  }
  EXPECT_EQ(machine.calls.Count("CreateFileW"), 3u);
}

TEST_F(ConsoleMode, ShutdownIsAnsweredAndThenEndsTheProcess) {
  unit::BackgroundServer server(machine, ConsoleMain);
  EXPECT_EQ(Exchange(kShutdown), kOkIdle);
  ASSERT_TRUE(server.Ends());
  EXPECT_EQ(server.Result(), 0);
  EXPECT_EQ(Log(), std::string(kBanner) + "ipc op=shutdown\nstopped.\n");
}

TEST_F(ConsoleMode, ControlHandlerThatCannotBeSetLeavesShutdownWorking) {
  machine.faults.Fail("SetConsoleCtrlHandler");
  unit::BackgroundServer server(machine, ConsoleMain);
  EXPECT_EQ(Exchange(kShutdown), kOkIdle);
  ASSERT_TRUE(server.Ends());
  EXPECT_EQ(server.Result(), 0);
}

TEST_F(ConsoleMode, OwnerIsNeverLookedAt) {
  OwnerPid = 123;
  AtFirstWait([&] { machine.console.Send(CTRL_C_EVENT); });
  EXPECT_EQ(ConsoleMain(), 0);
  EXPECT_EQ(machine.calls.Count("OpenProcess"), 0u);
  EXPECT_EQ(machine.calls.Count("CreateThread"), 1u);  // the warm-up
}

TEST_F(ConsoleMode, EventDuringAConnectTakesEffectWhenItIsAnswered) {
  unit::PutRuntime(machine);
  bool taken = false;
  machine.faults.Before("CreateJobObjectW", 1, [&] { taken = machine.console.Send(CTRL_C_EVENT); });
  unit::BackgroundServer server(machine, ConsoleMain);
  EXPECT_EQ(Exchange(kConnect), kOkRunning);
  ASSERT_TRUE(server.Ends());
  EXPECT_TRUE(taken);
  EXPECT_EQ(Log(), std::string(kBanner) + "ipc op=connect\nstopped.\n");
  EXPECT_EQ(machine.processes.Alive(), std::vector<std::string>());
}

class DaemonMode : public RunModeTest {
 protected:
  static constexpr std::uint32_t kOwner = 777;
  void SeedOwner() {
    machine.processes.Seed(L"C:\\ui\\TavrinUi.exe", kOwner);
    OwnerPid = kOwner;
  }
  void EndOwner() {
    // One that ends before the watch has opened it would be none.
    EXPECT_TRUE(unit::Eventually([&] { return machine.calls.Count("OpenProcess") > 0; }));
    machine.processes.Exit(kOwner, 0);
  }
};

TEST_F(DaemonMode, FirstAndLastLineAreLoggedAndNothingIsEchoed) {
  ConsoleEcho = 1;
  AtFirstWait([] { WakeControlPipe(); });
  EXPECT_EQ(DaemonMain(), 0);
  EXPECT_EQ(Log(), "daemon mode. runtime=C:\\run\ndaemon stopped\n");
  EXPECT_EQ(machine.console.Output(), "");
  EXPECT_EQ(ConsoleEcho, 0);
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
  StopRequested = 1;
  int stop = -1;
  int shutdown = -1;
  AtFirstWait([&] {
    stop = StopRequested;
    shutdown = ShutdownAllowed;
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
  EXPECT_EQ(machine.calls.Sequence({"CloseHandle", "SetCurrentDirectoryW"}).front(),
            "CloseHandle thread");
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
  machine.faults.BeforeEach("_wfsopen", [&] { alive = machine.processes.Alive(); });
  WakeControlPipe();
  ASSERT_TRUE(server.Ends());
  EXPECT_EQ(alive, std::vector<std::string>());
}

TEST_F(DaemonMode, OwnerThatIsGoneLeavesTheDaemonUpUntilShutdown) {
  OwnerPid = kOwner;
  unit::BackgroundServer server(machine, DaemonMain);
  EXPECT_EQ(Exchange(R"({"op":"status"})"), kOkIdle);
  EXPECT_FALSE(server.IsDone());
  EXPECT_EQ(Exchange(kShutdown), kOkIdle);
  ASSERT_TRUE(server.Ends());
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
    EXPECT_TRUE(unit::Eventually([] { return StopRequested != 0; }));
  });
  unit::BackgroundServer server(machine, DaemonMain);
  EXPECT_EQ(Exchange(kConnect), kOkRunning);
  ASSERT_TRUE(server.Ends());
  EXPECT_EQ(machine.processes.Alive(), std::vector<std::string>());
}

}  // namespace
}  // namespace vpn
