#include "client/trace/steps.h"

#include "tests/unit/client/client_test.h"

namespace vpn {
namespace {

ConnectTrace Connect(const std::string& text) {
  return ParseTrace(text).connects.front();
}

TEST(Steps, OneStepStandsForOneToThreeMarks) {
  const StepList list = StepsOf(Connect(unit::RecordedConnect()));
  ASSERT_EQ(list.steps.size(), 9u);
  EXPECT_TRUE(list.unknown.empty());
  const std::vector<std::uint64_t> times = {0, 8, 14, 1, 139, 115, 12, 16, 307};
  for (size_t at = 0; at < times.size(); ++at) {
    EXPECT_EQ(list.steps[at].time, times[at]) << at;
    EXPECT_TRUE(list.steps[at].isDone) << at;
  }
  EXPECT_EQ(list.steps[4].start, 23u);
  EXPECT_STREQ(NamesOfStep(list.steps[4].index).done, L"Xray listening");
  EXPECT_EQ(LongestStep(list.steps), 8u);
  EXPECT_EQ(NextStep(list), kStepCount);
}

TEST(Steps, AStepIsOpenUntilItsLastMark) {
  const StepList list = StepsOf(Connect(unit::RecordedLines(5)));
  ASSERT_EQ(list.steps.size(), 5u);
  EXPECT_FALSE(list.steps.back().isDone);
  EXPECT_EQ(NextStep(list), 5u);
  EXPECT_STREQ(NamesOfStep(NextStep(list)).underWay, L"Xray being started");
}

TEST(Steps, TheResetOfALeftoverNameServerIsNotExpected) {
  EXPECT_EQ(NextStep(StepsOf(Connect(unit::RecordedLines(3)))), 4u);
  const StepList list = StepsOf(
      Connect(unit::RecordedLines(3) + "reset physical dns (netsh)   +   60ms  total    82ms\r\n"));
  EXPECT_EQ(list.steps.back().index, 3u);
  EXPECT_EQ(list.steps.back().time, 60u);
  EXPECT_EQ(NextStep(list), 4u);
}

TEST(Steps, ANameServerThatCouldNotBeSetIsARemark) {
  const StepList list = StepsOf(
      Connect(unit::RecordedLines(9) + "set tun dns (api fail)       +    4ms  total   287ms\r\n"
                                       "tun ipv4 ready               +    2ms  total   289ms\r\n"));
  EXPECT_TRUE(list.steps.back().hasFailed);
  EXPECT_TRUE(list.steps.back().isDone);
}

TEST(Steps, TheTimeOfAnUnknownMarkGoesToTheStepBehindIt) {
  const StepList list = StepsOf(
      Connect(unit::RecordedLines(2) + "ask the moon                 +   10ms  total    18ms\r\n"
                                       "find physical route          +    4ms  total    22ms\r\n"));
  EXPECT_EQ(list.unknown, std::vector<std::string>{"ask the moon"});
  ASSERT_EQ(list.steps.size(), 3u);
  EXPECT_EQ(list.steps[2].start, 8u);
  EXPECT_EQ(list.steps[2].time, 14u);
}

TEST(Steps, TotalsThatRunBackwardsDoNoHarm) {
  ConnectTrace connect = Connect(unit::RecordedLines(3));
  connect.marks.push_back({"pin panel hosts", 1, 2});
  const StepList list = StepsOf(connect);
  EXPECT_EQ(list.steps.back().time, 0u);
}

TEST(Steps, AStepWhoseLastMarkIsLostIsDoneOnceAnotherFollows) {
  const StepList list = StepsOf(
      Connect(unit::RecordedLines(5) + "spawn tun2socks              +    2ms  total   164ms\r\n"));
  ASSERT_EQ(list.steps.size(), 6u);
  EXPECT_STREQ(NamesOfStep(list.steps[4].index).done, L"Xray listening");
  EXPECT_TRUE(list.steps[4].isDone);
  EXPECT_EQ(list.steps[4].time, 3u);
  EXPECT_FALSE(list.steps[5].isDone);
  EXPECT_EQ(list.steps[5].time, 138u) << "the time that is left goes to the step behind";
}

TEST(Steps, MarksOfAnotherVersionAreNamed) {
  const std::string strange =
      "ask the moon                 +   10ms  total    18ms\r\n"
      "wait for <it>                +   10ms  total    28ms\r\n";
  EXPECT_EQ(UnknownMarksText(StepsOf(Connect(unit::RecordedLines(2) + strange))),
            L"not known to this version: ask the moon, wait for <it>");
  EXPECT_EQ(UnknownMarksText(StepsOf(Connect(unit::RecordedLines(2)))), L"");
}

TEST(Steps, WithoutAStepTheLongestIsTheFirst) {
  EXPECT_EQ(LongestStep({}), 0u);
}

TEST(Steps, NothingIsFollowedByTheFirst) {
  EXPECT_EQ(NextStep(StepList()), 0u);
}

}  // namespace
}  // namespace vpn
