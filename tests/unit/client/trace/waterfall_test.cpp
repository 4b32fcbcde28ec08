#include "client/trace/waterfall.h"

#include "tests/unit/client/client_test.h"

namespace vpn {
namespace {

const std::vector<std::int64_t> kMedians = {0, 8, 14, -1, 1, 140, 115, 12, 16, 300};

TEST(Bar, IsDrawnToScale) {
  EXPECT_EQ(DrawBar(0, 100, 100, 10), L"██████████");
  EXPECT_EQ(DrawBar(50, 50, 100, 10), L"     █████");
  EXPECT_EQ(DrawBar(20, 25, 100, 10), L"  ██▌     ");
}

TEST(Bar, WhatTookTimeHasAMark) {
  EXPECT_EQ(DrawBar(0, 1, 100000, 10), L"▏         ");
  EXPECT_EQ(DrawBar(100000, 1, 100000, 10), L"         ▏");
  EXPECT_EQ(DrawBar(0, 0, 100, 4), L"    ");
  EXPECT_EQ(DrawBar(0, 5, 0, 4), L"    ");
}

TEST(Waterfall, ShowsEveryStepBesideItsMedian) {
  const TraceText trace = ParseTrace(unit::RecordedConnect());
  std::vector<std::wstring> lines;
  for (const WaterfallRow& row : DrawWaterfall(trace.connects[0], kMedians, 90)) {
    lines.push_back(row.text);
  }
  EXPECT_EQ(lines, (std::vector<std::wstring>{
                       L"old tunnel stopped              0 ms"
                       L"                                median     0 ms",
                       L"stale helpers looked for        8 ms  ▍"
                       L"                             median     8 ms",
                       L"physical route found           14 ms  ▋"
                       L"                             median    14 ms",
                       L"panel pinned                    1 ms   ▏"
                       L"                            median     1 ms",
                       L"Xray listening                139 ms   ██████▍"
                       L"                      median   140 ms",
                       L"adapter up                    115 ms         █████▎"
                       L"                 median   115 ms",
                       L"address, name server, IPv4     12 ms              ▌"
                       L"                 median    12 ms",
                       L"routes installed               16 ms               ▊"
                       L"                median    16 ms",
                       L"IPv6 blocked                  307 ms               ██████████████"
                       L"   median   300 ms   ◄",
                   }));
}

TEST(Waterfall, SaysWhereAConnectEnded) {
  const TraceText trace = ParseTrace(unit::RecordedLines(5));
  const std::vector<WaterfallRow> rows = DrawWaterfall(trace.connects[0], kMedians, 90);
  EXPECT_EQ(rows.back().text, L"ended before: Xray listening");
  EXPECT_TRUE(rows.back().isEnd);
}

TEST(Waterfall, MarksOfAnotherVersionAreSaid) {
  const TraceText trace = ParseTrace(unit::RecordedLines(12) +
                                     "ask the moon                 +   10ms  total   315ms\r\n"
                                     "ipv6 leak blocked            +  297ms  total   612ms\r\n");
  const std::vector<WaterfallRow> rows = DrawWaterfall(trace.connects[0], kMedians, 90);
  ASSERT_EQ(rows.size(), 10u);
  EXPECT_EQ(rows.back().text, L"not known to this version: ask the moon");
  EXPECT_FALSE(rows.back().isEnd);
}

TEST(Waterfall, ANarrowWindowStillHasBars) {
  const TraceText trace = ParseTrace(unit::RecordedConnect());
  const std::vector<WaterfallRow> rows = DrawWaterfall(trace.connects[0], kMedians, 40);
  EXPECT_TRUE(rows.back().isLongest);
  EXPECT_NE(rows.back().text.find(L'█'), std::wstring::npos);
}

}  // namespace
}  // namespace vpn
