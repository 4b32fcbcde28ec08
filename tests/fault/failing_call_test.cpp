// Each fallible call of a connect and disconnect fails in turn, alone or with all that follow.
#include <gmock/gmock.h>

#include <algorithm>

#include "tests/fault/failing_run.h"
#include "tests/fault/next_connect.h"
#include "tests/fault/reply_texts.h"

namespace fault {
namespace {

const Lines& Children() {
  static const auto& names = *new Lines{"xray.exe", "tun2socks-windows-amd64.exe"};
  return names;
}

bool Holds(const Lines& lines, const std::string& line) {
  return std::find(lines.begin(), lines.end(), line) != lines.end();
}

std::string PinLine(const std::string& address) {
  return "route 以太网 " + address + "/32 via 192.168.1.1 metric 1";
}

netmodel::Network WithoutTunnel(netmodel::Network network) {
  while (const netmodel::Adapter* const adapter = network.FindByAlias("tavrin")) {
    network.RemoveAdapter(adapter->luid);
  }
  return network;
}

// What remains when one call has failed: after the failure of a disconnect the panel's pin whose
// deletion it was, or router discovery if the command that turns it on did not run, and else
// nothing. The node's pin is deleted twice, so that one failure does not keep it.
Lines RemainsOnce(const Stage& stage, const Point& point) {
  Lines lines = LinesOf(stage.before);
  if (point.step != "disconnect") {
    return lines;
  }
  const bool deletion =
      point.name == "DeleteIpForwardEntry2" || point.name == "ConvertInterfaceAliasToLuid";
  const auto pin = static_cast<size_t>(point.ordinal) - 1;
  if (deletion && pin + 1 < stage.scene.pins.size()) {
    lines.push_back(PinLine(stage.scene.pins[pin]));
  }
  const bool enabling = (point.name == "CreateProcessW" && point.ordinal == 1) ||
                        (point.waitsForNetsh() && point.ordinal == 5);
  if (enabling) {
    std::erase(lines, "ipv6 of 以太网: router discovery on");
    std::erase(lines, "ipv6 route 以太网 ::/0");
    lines.push_back("ipv6 of 以太网: router discovery off");
  }
  std::sort(lines.begin(), lines.end());
  return lines;
}

class FailingCall : public ::testing::TestWithParam<Scene> {
 protected:
  void SetUp() override { points = TakeSurvey(GetParam()); }

  void RunAll(Mode mode) {
    EachCall(GetParam().name, DescribeWithSteps(points),
             [&](size_t index) { RunOne(index, mode); });
  }

 private:
  void RunOne(size_t index, Mode mode) {
    Stage stage(GetParam());
    const FailingRun run =
        RunFailing(stage, [&](sim::Machine& machine) { Arrange(machine, mode, index); });
    if (mode == Mode::kOnwards) {
      CheckOnwards(stage, index, run.text);
    } else if (stage.scene.start == Start::kOrphans) {
      CheckOrphansOnce(stage, index, run.text);
    } else {
      CheckOnce(stage, index, run.text, run.afterConnect);
    }
    ExpectNextConnectIsClean(stage);
  }

  void CheckOnwards(const Stage& stage, size_t index, const std::wstring& text) {
    EXPECT_EQ(text, ExpectedText(stage.scene, points, index, Mode::kOnwards));
    EXPECT_EQ(Difference(SettledLines(stage, points, index), stage.Now()), Lines());
    EXPECT_EQ(stage.machine->processes.Alive(), points[index].outsideJob);
  }

  void CheckOnce(const Stage& stage, size_t index, const std::wstring& text,
                 const Lines& afterConnect) {
    const Point& point = points[index];
    EXPECT_EQ(text, ExpectedText(stage.scene, points, index, Mode::kOnce));
    EXPECT_EQ(Difference(RemainsOnce(stage, point), stage.Now()), Lines());
    EXPECT_EQ(stage.machine->processes.Alive(), Lines());
    // A connect that fails before the tunnel is touched leaves an old one up; one that fails
    // later has taken everything back by itself.
    const bool up = text.empty() || (stage.scene.start == Start::kUp && point.step == "account");
    EXPECT_EQ(afterConnect, up ? Children() : Lines());
  }

  // A start that fails before it knows the physical route leaves the killed run's pin of the node,
  // and only the scan can leave an orphan. A surviving Xray holds the port.
  void CheckOrphansOnce(const Stage& stage, size_t index, const std::wstring& text) {
    const Point& point = points[index];
    const Lines alive = stage.machine->processes.Alive();
    if (point.step == "account" && !text.empty()) {
      EXPECT_EQ(text, ExpectedText(stage.scene, points, index, Mode::kOnce));
      EXPECT_EQ(alive, Children());
      EXPECT_EQ(Difference(LinesOf(stage.start), stage.Now()), Lines());
      return;
    }
    if (point.step != "kill stale (hit)") {
      EXPECT_EQ(alive, Lines());
    }
    const bool portTaken = Holds(alive, "xray.exe");
    EXPECT_EQ(text,
              portTaken ? kPortTakenText : ExpectedText(stage.scene, points, index, Mode::kOnce));
    Lines expected = RemainsOnce(stage, point);
    if (portTaken || (point.step == "find physical route" && !text.empty())) {
      expected.push_back(PinLine("198.51.100.7"));
      std::sort(expected.begin(), expected.end());
    }
    EXPECT_EQ(Difference(expected, LinesOf(WithoutTunnel(stage.machine->network))), Lines());
  }

  std::vector<Point> points;
};

TEST_P(FailingCall, AlonePutsNothingOutOfOrder) {
  RunAll(Mode::kOnce);
}

TEST_P(FailingCall, WithAllThatFollowPutsNothingOutOfOrder) {
  RunAll(Mode::kOnwards);
}

INSTANTIATE_TEST_SUITE_P(Scenes, FailingCall, ::testing::ValuesIn(AllScenes()),
                         [](const auto& scene) { return std::string(scene.param.name); });

}  // namespace
}  // namespace fault
