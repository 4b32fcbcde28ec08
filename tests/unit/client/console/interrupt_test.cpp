#include "client/console/interrupt.h"

#include <windows.h>

#include "client/console/cursor.h"
#include "tests/unit/client/client_test.h"

namespace vpn {
namespace {

class InterruptTest : public unit::ClientTest {
 protected:
  // The exit code of a process that ended by itself within `body`; 0 for one that did not.
  std::uint32_t ExitCodeOf(const std::function<void()>& body) {
    const sim::ProcessRun run = machine.RunProcess(body);
    return run.killed ? machine.processes.Find(run.processId)->exitCode : 0;
  }
};

TEST_F(InterruptTest, TheFirstIsNotedAndTheSecondEndsTheProgram) {
  bool wasNoted = false;
  EXPECT_EQ(ExitCodeOf([&] {
              const InterruptGuard guard;
              const InterruptWatch watch;
              EXPECT_FALSE(watch.wasInterrupted());
              EXPECT_TRUE(machine.console.Send(CTRL_C_EVENT));
              wasNoted = watch.wasInterrupted();
              machine.console.Send(CTRL_BREAK_EVENT);
              ADD_FAILURE() << "the program went on";
            }),
            130u);
  EXPECT_TRUE(wasNoted);
}

TEST_F(InterruptTest, OutsideAWatchItEndsTheProgramWithTheCursorAsItWas) {
  UseTerminal();
  machine.console.terminal.cursorSize = 100;
  EXPECT_EQ(ExitCodeOf([&] {
              const InterruptGuard guard;
              HideCursor(GetStdHandle(STD_OUTPUT_HANDLE));
              EXPECT_FALSE(machine.console.terminal.cursorVisible);
              machine.console.Send(CTRL_C_EVENT);
            }),
            130u);
  EXPECT_TRUE(machine.console.terminal.cursorVisible);
  EXPECT_EQ(machine.console.terminal.cursorSize, 100u);
  EXPECT_EQ(machine.console.terminal.Lines().size(), 2u) << "the next line begins behind it";
}

TEST_F(InterruptTest, AnyCommandEndsWithItsExitCode) {
  machine.faults.Before("WriteFile", 1, [this] { machine.console.Send(CTRL_C_EVENT); });
  EXPECT_EQ(ExitCodeOf([this] { Run({L"trace"}); }), 130u);
}

TEST_F(InterruptTest, TheClosingOfTheWindowIsLeftToThePlatform) {
  UseTerminal();
  const InterruptGuard guard;
  const InterruptWatch watch;
  HideCursor(GetStdHandle(STD_OUTPUT_HANDLE));
  EXPECT_FALSE(machine.console.Send(CTRL_CLOSE_EVENT));
  EXPECT_FALSE(watch.wasInterrupted());
  EXPECT_TRUE(machine.console.terminal.cursorVisible);
}

TEST_F(InterruptTest, AWatchWithinAWatchForgetsNothing) {
  const InterruptGuard guard;
  const InterruptWatch outer;
  EXPECT_TRUE(machine.console.Send(CTRL_C_EVENT));
  { const InterruptWatch inner; }
  EXPECT_TRUE(outer.wasInterrupted());
}

TEST_F(InterruptTest, NothingIsWatchedAfterwards) {
  { const InterruptGuard guard; }
  EXPECT_FALSE(machine.console.Send(CTRL_C_EVENT));
}

TEST_F(InterruptTest, ACursorThatWasHiddenAlreadyStaysSo) {
  UseTerminal();
  machine.console.terminal.cursorVisible = false;
  HideCursor(GetStdHandle(STD_OUTPUT_HANDLE));
  EXPECT_TRUE(RestoreCursor());
  EXPECT_FALSE(machine.console.terminal.cursorVisible);
  EXPECT_FALSE(RestoreCursor()) << "only once";
}

TEST_F(InterruptTest, ACursorThatCantBeHiddenIsNotRestored) {
  HideCursor(GetStdHandle(STD_OUTPUT_HANDLE));
  EXPECT_FALSE(RestoreCursor());
}

}  // namespace
}  // namespace vpn
