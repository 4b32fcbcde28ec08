#include "tests/unit/control/platform_calls.h"

#include <gtest/gtest.h>

namespace unit {
namespace {

// `step: call count`, of what one side has and the other has not.
std::vector<std::string> Lines(const CallCounts& counts) {
  std::vector<std::string> lines;
  for (const auto& [step, calls] : counts) {
    for (const auto& [call, count] : calls) {
      lines.push_back(step + ": " + call + ' ' + std::to_string(count));
    }
  }
  return lines;
}

class PlatformCalls : public ::testing::Test {
 protected:
  const CountedRun run = CountPlatformCalls();
};

TEST_F(PlatformCalls, AConnectMakesTheLeastThatItsOrderedStepsAllow) {
  EXPECT_EQ(Lines(run.connect), Lines(LeastOfConnect()));
  EXPECT_EQ(Total(run.connect), 244);
}

TEST_F(PlatformCalls, ADisconnectMakesTheLeastThatItsOrderedStepsAllow) {
  EXPECT_EQ(Lines(run.disconnect), Lines(LeastOfDisconnect()));
  EXPECT_EQ(Total(run.disconnect), 60);
}

TEST_F(PlatformCalls, AnIdleMinuteMakesNone) {
  ASSERT_FALSE(run.connect.empty()) << "the connect before it went wrong";
  EXPECT_EQ(Lines(run.idleMinute), std::vector<std::string>());
}

}  // namespace
}  // namespace unit
