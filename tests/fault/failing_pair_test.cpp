// Two calls of the first connect and its disconnect fail: each that can be the first, with each
// that comes behind it then.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <random>

#include "tests/fault/failing_run.h"
#include "tests/fault/next_connect.h"
#include "tests/fault/reply_texts.h"
#include "tests/sim/text.h"

namespace fault {
namespace {

// The work is cut into parts, so that processes can share it.
constexpr size_t kParts = 8;

bool WantsAllPairs() {
  return std::getenv("TAVRIN_ALL_PAIRS") != nullptr;
}

// `58,59`: this pair alone, as a finding tells it.
const char* OnlyPair() {
  return std::getenv("TAVRIN_PAIR");
}

unsigned Seed() {
  const char* const chosen = std::getenv("TAVRIN_PAIR_SEED");
  return chosen == nullptr ? 1 : static_cast<unsigned>(std::strtoul(chosen, nullptr, 10));
}

class FailingPair : public ::testing::TestWithParam<size_t> {
 protected:
  void SetUp() override {
    points = TakeSurvey(scene);
    ASSERT_FALSE(points.empty()) << "the run without faults failed";
    random.seed(Seed() * 1000 + static_cast<unsigned>(GetParam()));
  }

  void RunAllWith(size_t first) {
    Stage stage(scene);
    const FailingRun alone =
        RunFailing(stage, [&](sim::Machine& machine) { Arrange(machine, Mode::kOnce, first); });
    for (size_t second = first + 1; second < alone.calls.size(); ++second) {
      ++pairs;
      if (IsChosen(std::to_string(first + 1) + "," + std::to_string(second + 1))) {
        SCOPED_TRACE("calls " + std::to_string(first + 1) + " " + Describe(alone.calls[first]) +
                     " and " + std::to_string(second + 1) + " " + Describe(alone.calls[second]));
        RunPair(first, second, alone);
        ++runs;
      }
    }
  }

  bool IsChosen(const std::string& pair) {
    return OnlyPair() != nullptr ? pair == OnlyPair() : WantsAllPairs() || random() % 10 == 0;
  }

  void RunPair(size_t first, size_t second, const FailingRun& alone) {
    Stage stage(scene);
    const FailingRun run = RunFailing(stage, [&](sim::Machine& machine) {
      Arrange(machine, Mode::kOnce, first);
      machine.faults.FailAt(second + 1);
    });
    ASSERT_EQ(std::count_if(run.calls.begin(), run.calls.end(),
                            [](const sim::CallRecord& call) { return call.failed; }),
              2);
    CheckText(run, alone);
    CheckChildren(stage, run);
    CheckRemains(stage, run);
    ExpectNextConnectIsClean(stage);
  }

  // The first failure decides what the user reads, whatever goes wrong in undoing. Only the helpers
  // are all looked for before the first one that is missing is told, and Xray is told first.
  void CheckText(const FailingRun& run, const FailingRun& alone) const {
    const bool bothMissing =
        alone.text == L"tun2socks exe not found" &&
        std::any_of(run.calls.begin(), run.calls.end(), [](const sim::CallRecord& call) {
          return call.failed && Describe(call) == R"(GetFileAttributesW "C:\run\xray\xray.exe")";
        });
    if (bothMissing) {
      EXPECT_EQ(run.text, L"xray.exe not found");
    } else if (!alone.text.empty()) {
      EXPECT_EQ(run.text, alone.text);
    } else if (!run.text.empty()) {
      EXPECT_TRUE(IsKnownText(scene, run.text)) << sim::Narrow(run.text);
    }
  }

  static void CheckChildren(const Stage& stage, const FailingRun& run) {
    const Lines left = LeftOutside(run);
    EXPECT_EQ(run.afterConnect,
              run.text.empty() ? (Lines{"xray.exe", "tun2socks-windows-amd64.exe"}) : left);
    EXPECT_EQ(stage.machine->processes.Alive(), left);
  }

  // A child that gets into no job and can't be ended stays, suspended, for the next connect's look
  // for orphans.
  static Lines LeftOutside(const FailingRun& run) {
    Lines failed;
    for (const sim::CallRecord& call : run.calls) {
      if (call.failed) {
        failed.push_back(Describe(call));
      }
    }
    for (const char* child : {"xray.exe", "tun2socks-windows-amd64.exe"}) {
      const std::string process = std::string("process ") + child;
      if (failed == Lines{"AssignProcessToJobObject job, " + process,
                          "TerminateProcess " + process + ", 1"}) {
        return {child};
      }
    }
    return {};
  }

  // Each remainder has its cause among the two.
  static void CheckRemains(const Stage& stage, const FailingRun& run) {
    bool isDeletion = false;
    bool isNetsh = false;
    for (const sim::CallRecord& call : run.calls) {
      isDeletion |= call.failed && (call.name == "DeleteIpForwardEntry2" ||
                                    call.name == "ConvertInterfaceAliasToLuid");
      isNetsh |= call.failed &&
                 (call.name == "CreateProcessW" || call.text.starts_with("process netsh.exe"));
    }
    for (const std::string& line : Difference(LinesOf(stage.before), stage.Now())) {
      const bool isPin = line.starts_with("+ route 以太网 ");
      EXPECT_TRUE(isPin ? isDeletion : isNetsh) << line;
    }
  }

  const Scene& scene = AllScenes().front();
  std::vector<Point> points;
  std::mt19937 random;
  size_t pairs = 0;
  size_t runs = 0;
};

TEST_P(FailingPair, PutsNothingOutOfOrder) {
  for (size_t first = GetParam(); first < points.size(); first += kParts) {
    RunAllWith(first);
  }
  std::printf("%s, part %zu of %zu: N = %zu fallible calls, %zu pairs, %zu runs, seed %u\n",
              scene.name, GetParam() + 1, kParts, points.size(), pairs, runs, Seed());
}

INSTANTIATE_TEST_SUITE_P(Part, FailingPair, ::testing::Range<size_t>(0, kParts));

}  // namespace
}  // namespace fault
