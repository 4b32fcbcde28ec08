#include "client/trace/medians.h"

#include "tests/unit/client/client_test.h"

namespace vpn {
namespace {

std::int64_t MedianOf(const std::vector<std::uint64_t>& values) {
  RunningMedian median;
  for (const std::uint64_t value : values) {
    median.add(value);
  }
  return median.value();
}

TEST(RunningMedian, IsTheMiddleOrBetweenTheTwo) {
  EXPECT_EQ(MedianOf({}), -1);
  EXPECT_EQ(MedianOf({7}), 7);
  EXPECT_EQ(MedianOf({9, 1, 5}), 5);
  EXPECT_EQ(MedianOf({1, 2, 3, 10}), 2);
  EXPECT_EQ(MedianOf({10, 3, 2, 1}), 2);
  EXPECT_EQ(MedianOf({5, 5, 5, 5, 1}), 5);
}

TEST(RunningMedian, IsRightAfterEachValue) {
  RunningMedian median;
  std::vector<std::int64_t> medians;
  for (const std::uint64_t value : {8u, 2u, 9u, 1u, 7u, 3u, 100u}) {
    median.add(value);
    medians.push_back(median.value());
  }
  EXPECT_EQ(medians, (std::vector<std::int64_t>{8, 5, 8, 5, 7, 5, 7}));
}

// Counts how often two values are compared.
struct Counting {
  std::uint64_t* comparisons;
  bool operator()(std::uint64_t left, std::uint64_t right) const {
    ++*comparisons;
    return left < right;
  }
};

std::uint64_t ComparisonsFor(std::uint64_t count) {
  std::uint64_t comparisons = 0;
  RunningMedian<Counting> median(Counting{&comparisons});
  for (std::uint64_t at = 0; at < count; ++at) {
    median.add(at * 7919 % count);
    (void)median.value();
  }
  EXPECT_EQ(median.value(), static_cast<std::int64_t>(count / 2 - 1));
  return comparisons;
}

TEST(RunningMedian, TenTimesAsManyValuesAreHardlyMoreWorkEach) {
  EXPECT_LT(ComparisonsFor(1000), 14'000u);
  EXPECT_LT(ComparisonsFor(10'000), 180'000u);
}

TEST(StepMedians, OfCompleteConnectsAlone) {
  const std::string slow = unit::RecordedLines(1) +
                           "kill stale (clean)           + 1000ms  total  1000ms\r\n"
                           "ipv6 leak blocked            +  500ms  total  1500ms\r\n";
  const TraceText trace = ParseTrace(unit::RecordedConnect() + slow + unit::RecordedLines(2));
  const std::vector<std::int64_t> medians = MedianTimes(trace.connects);
  EXPECT_EQ(medians, (std::vector<std::int64_t>{0, 504, 14, -1, 1, 139, 115, 12, 16, 403}));
}

TEST(StepMedians, OfNoneAreUnknown) {
  EXPECT_EQ(StepMedians().times(),
            (std::vector<std::int64_t>{-1, -1, -1, -1, -1, -1, -1, -1, -1, -1}));
}

}  // namespace
}  // namespace vpn
