#include "client/console/interrupt.h"

#include <windows.h>

#include "tests/unit/client/client_test.h"

namespace vpn {
namespace {

class InterruptTest : public unit::ClientTest {};

TEST_F(InterruptTest, TheFirstIsNotedAndTheSecondLeftToThePlatform) {
  const InterruptWatch watch;
  EXPECT_FALSE(watch.wasInterrupted());
  EXPECT_TRUE(machine.console.Send(CTRL_C_EVENT));
  EXPECT_TRUE(watch.wasInterrupted());
  EXPECT_FALSE(machine.console.Send(CTRL_BREAK_EVENT));
}

TEST_F(InterruptTest, TheClosingOfTheWindowIsLeftToThePlatform) {
  const InterruptWatch watch;
  EXPECT_FALSE(machine.console.Send(CTRL_CLOSE_EVENT));
  EXPECT_FALSE(watch.wasInterrupted());
}

TEST_F(InterruptTest, NothingIsWatchedAfterwards) {
  { const InterruptWatch watch; }
  EXPECT_FALSE(machine.console.Send(CTRL_C_EVENT));
}

}  // namespace
}  // namespace vpn
