// The process is killed in front of each fallible call of a connect and disconnect.
#include <gtest/gtest.h>

#include <cstdio>
#include <map>

#include "tests/fault/next_connect.h"
#include "tests/fault/survey.h"

namespace fault {
namespace {

class KilledProcess : public ::testing::TestWithParam<Scene> {
 protected:
  void SetUp() override { points = TakeSurvey(GetParam()); }

  void KillAt(size_t index) {
    Stage stage(GetParam());
    sim::Machine& machine = *stage.machine;
    BeginProcess();
    const sim::ProcessRun run = machine.RunProcess([&machine, &stage, index] {
      EXPECT_TRUE(stage.Prepare());
      machine.faults.ResetCount();
      machine.faults.KillAt(index + 1);
      (void)Connect();
      Disconnect();
    });
    ASSERT_TRUE(run.killed);
    machine.clock.Advance(10'000);
    EXPECT_EQ(machine.OpenHandles(), Lines());
    EXPECT_EQ(machine.Violations(), Lines());
    EXPECT_EQ(Missing(stage.Foreign(), stage.Now()), Lines());
    EXPECT_EQ(Difference(SettledLines(stage, points, index), stage.Now()), Lines());
    EXPECT_EQ(machine.processes.Alive(), points[index].outsideJob);
    NoteRemains(stage, index);
    ExpectNextConnectIsClean(stage);
  }

  void NoteRemains(const Stage& stage, size_t index) {
    std::string text;
    for (const std::string& line : Difference(LinesOf(stage.before), stage.Now())) {
      text += "  " + line + "\n";
    }
    for (const std::string& name : stage.machine->processes.Alive()) {
      text += "  + process " + name + "\n";
    }
    if (remains.empty() || remains.back().second != text) {
      remains.emplace_back("from call " + std::to_string(index + 1) + " [" + points[index].step +
                               "] " + points[index].name,
                           text);
    }
  }

  std::vector<Point> points;
  std::vector<std::pair<std::string, std::string>> remains;
};

TEST_P(KilledProcess, LeavesNothingThatTheNextOneDoesNotPutRight) {
  ASSERT_FALSE(points.empty()) << "the run without faults failed";
  for (size_t index = 0; index < points.size(); ++index) {
    SCOPED_TRACE("call " + std::to_string(index + 1) + " [" + points[index].step + "] " +
                 Describe(points[index]));
    KillAt(index);
  }
  std::printf("%s: N = %zu fallible calls, %zu runs\n", GetParam().name, points.size(),
              points.size());
  for (const auto& [where, text] : remains) {
    std::printf("%s leaves\n%s", where.c_str(), text.empty() ? "  nothing\n" : text.c_str());
  }
}

INSTANTIATE_TEST_SUITE_P(Scenes, KilledProcess, ::testing::ValuesIn(AllScenes()),
                         [](const auto& scene) { return std::string(scene.param.name); });

}  // namespace
}  // namespace fault
