#include "client/trace/connect_trace.h"

#include "tests/unit/client/client_test.h"

namespace vpn {
namespace {

TEST(TraceLine, GivesLabelStepAndTotal) {
  TraceMark mark;
  ASSERT_TRUE(ParseTraceLine("kill stale (clean)           +    8ms  total    12ms\r", mark));
  EXPECT_EQ(mark.label, "kill stale (clean)");
  EXPECT_EQ(mark.step, 8u);
  EXPECT_EQ(mark.total, 12u);
}

TEST(TraceLine, NumbersBeyondTheirColumnsAreRead) {
  TraceMark mark;
  ASSERT_TRUE(ParseTraceLine("xray socks listening         +1234567ms  total 7654321ms", mark));
  EXPECT_EQ(mark.step, 1234567u);
  EXPECT_EQ(mark.total, 7654321u);
}

TEST(TraceLine, WhatIsNoMarkIsRefused) {
  TraceMark mark;
  for (const char* line :
       {"", "spawn xray", "spawn xray                   +    3ms", "+    3ms  total    3ms",
        "spawn xray                   +    ms  total    3ms",
        "spawn xray                   +    3ms  total    ms",
        "spawn xray                   +    3ms  total ms",
        "spawn xray                   +   -3ms  total    3ms",
        "spawn xray                   +  3 4ms  total    3ms",
        "spawn xray                   +    3ms  total    3ms extra",
        "spawn \x01xray                  +    3ms  total    3ms",
        "以太网                        +    3ms  total    3ms",
        "spawn xray   +99999999999999999999999ms  total    3ms",
        "total    3ms  spawn xray ms  total +  3ms"}) {
    EXPECT_FALSE(ParseTraceLine(line, mark)) << line;
  }
}

TEST(Trace, EachConnectBeginsWithItsStop) {
  const TraceText trace =
      ParseTrace("\xEF\xBB\xBF" + unit::RecordedConnect() + unit::RecordedLines(5));
  ASSERT_EQ(trace.connects.size(), 2u);
  EXPECT_EQ(trace.strangeLines, 0u);
  EXPECT_TRUE(trace.connects[0].isComplete());
  EXPECT_EQ(trace.connects[0].totalTime(), 612u);
  EXPECT_EQ(trace.connects[0].marks.size(), 13u);
  EXPECT_FALSE(trace.connects[1].isComplete());
  EXPECT_EQ(trace.connects[1].marks.back().label, "spawn xray");
}

TEST(Trace, ATornLineCountsAsStrange) {
  const TraceText trace = ParseTrace(unit::RecordedLines(2) + "find physi\r\n\r\n" +
                                     "pin panel hosts              +    1ms  total    23ms\r\n");
  ASSERT_EQ(trace.connects.size(), 1u);
  EXPECT_EQ(trace.connects[0].marks.size(), 3u);
  EXPECT_EQ(trace.strangeLines, 1u);
}

TEST(Trace, ALineWithoutItsEndIsStillBeingWritten) {
  const TraceText trace =
      ParseTrace(unit::RecordedLines(1) + "kill stale (clean)           +    8ms  total     8ms");
  ASSERT_EQ(trace.connects.size(), 1u);
  EXPECT_EQ(trace.connects[0].marks.size(), 1u);
  EXPECT_EQ(trace.strangeLines, 0u);
}

TEST(Trace, AConnectWithoutItsHeadIsLeftOutWhereTheTextIsCut) {
  const std::string text =
      "routes installed             +   16ms  total   305ms\r\n"
      "ipv6 leak blocked            +  307ms  total   612ms\r\n";
  const TraceText cut = ParseTrace(text + unit::RecordedLines(1), true);
  ASSERT_EQ(cut.connects.size(), 1u);
  EXPECT_EQ(cut.connects[0].marks.size(), 1u);
  EXPECT_EQ(cut.strangeLines, 0u);
}

TEST(Trace, AConnectWhoseHeadIsLostCountsInAWholeText) {
  const TraceText trace = ParseTrace(
      "routes installed             +   16ms  total   305ms\r\n"
      "ipv6 leak blocked            +  307ms  total   612ms\r\n");
  ASSERT_EQ(trace.connects.size(), 1u);
  EXPECT_EQ(trace.connects[0].marks.size(), 2u);
  EXPECT_EQ(trace.strangeLines, 0u);
}

TEST(Trace, AConnectWhoseHeadIsLostIsNotJoinedToTheOneBefore) {
  const std::string lines = unit::RecordedConnect();
  const std::string headless = lines.substr(unit::RecordedLines(1).size());
  for (const bool isCut : {false, true}) {
    const TraceText trace = ParseTrace(unit::RecordedLines(5) + headless, isCut);
    ASSERT_EQ(trace.connects.size(), 2u) << isCut;
    EXPECT_EQ(trace.connects[0].marks.size(), 5u);
    EXPECT_EQ(trace.connects[1].marks.size(), 12u);
    EXPECT_EQ(trace.connects[1].marks[0].label, "kill stale (clean)");
    EXPECT_TRUE(trace.connects[1].isComplete());
  }
}

TEST(Trace, WhereTheTextIsCutATotalThatFallsBeginsAConnectToo) {
  const std::string lines = unit::RecordedConnect();
  const std::string headless = lines.substr(unit::RecordedLines(1).size());
  const TraceText trace = ParseTrace(headless + headless, true);
  ASSERT_EQ(trace.connects.size(), 1u) << "the first one may lack more than its head";
  EXPECT_EQ(trace.connects[0].marks.size(), 12u);
}

TEST(Trace, BinaryRubbishGivesNothing) {
  std::string rubbish;
  for (int at = 0; at < 4096; ++at) {
    rubbish += static_cast<char>(at * 37 % 256);
  }
  EXPECT_TRUE(ParseTrace(rubbish).connects.empty());
  EXPECT_TRUE(ParseTrace("").connects.empty());
}

}  // namespace
}  // namespace vpn
