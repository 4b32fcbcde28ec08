// The process is killed in front of each fallible call of a connect and disconnect.
#include <gtest/gtest.h>

#include <cstdio>
#include <utility>

#include "tests/fault/each_call.h"
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
      Arrange(machine, Mode::kKilled, index);
      (void)Connect();
      Disconnect();
    });
    ASSERT_TRUE(run.killed);
    machine.clock.Advance(10'000);  // what lives on by itself comes to its end
    EXPECT_EQ(machine.OpenHandles(), Lines());
    EXPECT_EQ(machine.Violations(), Lines());
    EXPECT_EQ(Missing(stage.Foreign(), stage.Now()), Lines());
    EXPECT_EQ(Difference(SettledLines(stage, points, index), stage.Now()), Lines());
    EXPECT_EQ(machine.processes.Alive(), points[index].outsideJob);
    NoteRemains(stage, index);
    ExpectNextConnectIsClean(stage);
  }

  // For the list at the end: what a kill at this call leaves, where that differs from the one
  // before.
  void NoteRemains(const Stage& stage, size_t index) {
    std::string text;
    for (const std::string& line : Difference(LinesOf(stage.before), stage.Now())) {
      text += "    " + line + "\n";
    }
    for (const std::string& name : stage.machine->processes.Alive()) {
      text += "    + process " + name + "\n";
    }
    if (remains.empty() || remains.back().second != text) {
      remains.emplace_back("call " + std::to_string(index + 1) + " [" + points[index].step + "]",
                           text);
    }
  }

  void PrintRemains() const {
    std::printf("%s: a kill leaves\n", GetParam().name);
    for (const auto& [where, text] : remains) {
      std::printf("  from %s on:\n%s", where.c_str(),
                  text.empty() ? "    nothing\n" : text.c_str());
    }
  }

  std::vector<Point> points;
  std::vector<std::pair<std::string, std::string>> remains;
};

TEST_P(KilledProcess, LeavesNothingThatTheNextOneDoesNotPutRight) {
  EachCall(GetParam().name, DescribeWithSteps(points), [this](size_t index) { KillAt(index); });
  PrintRemains();
}

INSTANTIATE_TEST_SUITE_P(Scenes, KilledProcess, ::testing::ValuesIn(AllScenes()),
                         [](const auto& scene) { return std::string(scene.param.name); });

// A tunnel that is up loses its process.
class KilledWhileUp : public ::testing::Test {
 protected:
  void SetUp() override {
    BeginProcess();
    const sim::ProcessRun run = stage.machine->RunProcess([this] {
      EXPECT_EQ(Connect(), L"");
      stage.machine->faults.ResetCount();
      stage.machine->faults.KillAt(1);
      Disconnect();
    });
    ASSERT_TRUE(run.killed);
    stage.machine->faults.Clear();
    stage.machine->clock.Advance(1000);
    BeginProcess();
  }

  Lines Remains() const { return Difference(LinesOf(stage.before), stage.Now()); }

  const Lines documented = {"+ ipv6 of 以太网: router discovery off",
                            "+ route 以太网 198.51.100.7/32 via 192.168.1.1 metric 1",
                            "+ route 以太网 203.0.113.77/32 via 192.168.1.1 metric 1",
                            "- ipv6 of 以太网: router discovery on", "- ipv6 route 以太网 ::/0"};
  Stage stage{AllScenes().front()};
};

TEST_F(KilledWhileUp, LeavesThePinsAndTheIpv6SettingsOfThePhysicalInterface) {
  EXPECT_EQ(Remains(), documented);
  EXPECT_EQ(stage.machine->processes.Alive(), Lines());
  EXPECT_TRUE(stage.machine->files.Exists(L"C:\\run\\session.json.xray.json"));
}

TEST_F(KilledWhileUp, IsNotPutRightByAProcessThatDoesNotConnect) {
  stage.machine->RunProcess([] {
    Disconnect();
    EndProcess();
  });
  EXPECT_EQ(Remains(), documented);
}

TEST_F(KilledWhileUp, KeepsThePinOfANodeThatTheNextConnectDoesNotUse) {
  stage.machine->files.Put(L"C:\\run\\account.json",
                           R"({"email":"user@example.com","password":"p","expireAt":"2030-01-01",)"
                           R"("address":"198.51.100.99","port":443,"uuid":"u"})");
  stage.machine->RunProcess([] {
    EXPECT_EQ(Connect(), L"");
    Disconnect();
    EndProcess();
  });
  EXPECT_EQ(Remains(), Lines{"+ route 以太网 198.51.100.7/32 via 192.168.1.1 metric 1"});
}

}  // namespace
}  // namespace fault
