#include "src/host/run_modes.h"

#include "src/host/host_internal.h"
#include "tests/unit/host/run_mode_fixture.h"

namespace vpn {
namespace {

using unit::kConnect;
using unit::kOkIdle;
using unit::kOkRunning;
using unit::kShutdown;

class ConsoleMode : public unit::RunModeTest {
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
  g_stopRequested = 1;  // a stale request must not end the server
  int stop = -1;
  int echo = -1;
  int shutdown = -1;
  AtFirstWait([&] {
    stop = g_stopRequested;
    echo = g_consoleEcho;
    shutdown = g_shutdownAllowed;
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
  EXPECT_EQ(g_stopRequested, 0);
  EXPECT_EQ(machine.calls.Count("CreateFileW"), 0u);
}

TEST_F(ConsoleMode, HandledEventGivesOneAndWakesThePipe) {
  for (const DWORD event : {0u, 1u, 2u}) {
    g_stopRequested = 0;
    EXPECT_EQ(ConsoleControlHandler(event), 1) << event;
    EXPECT_EQ(g_stopRequested, 1) << event;
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
  g_ownerPid = 123;
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

}  // namespace
}  // namespace vpn
