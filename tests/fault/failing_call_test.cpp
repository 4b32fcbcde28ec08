// Each fallible call of a connect and disconnect fails in turn, alone or with all that follow.
#include <gmock/gmock.h>

#include <algorithm>
#include <cstdio>

#include "tests/fault/next_connect.h"
#include "tests/fault/reply_texts.h"

namespace fault {
namespace {

constexpr char kNodePin[] = "route 以太网 198.51.100.7/32 via 192.168.1.1 metric 1";
constexpr char kOrphanXray[] = "xray.exe";
constexpr char kOrphanTun2socks[] = "tun2socks-windows-amd64.exe";

bool Holds(const Lines& lines, const std::string& line) {
  return std::find(lines.begin(), lines.end(), line) != lines.end();
}

class FailingCall : public ::testing::TestWithParam<Scene> {
 protected:
  void SetUp() override { points = TakeSurvey(GetParam()); }

  void RunAll(Mode mode) {
    ASSERT_FALSE(points.empty()) << "the run without faults failed";
    size_t bad = 0;
    for (size_t index = 0; index < points.size(); ++index) {
      SCOPED_TRACE("call " + std::to_string(index + 1) + " [" + points[index].step + "] " +
                   Describe(points[index]));
      const int before =
          ::testing::UnitTest::GetInstance()->current_test_info()->result()->total_part_count();
      RunOne(index, mode);
      bad +=
          ::testing::UnitTest::GetInstance()->current_test_info()->result()->total_part_count() ==
                  before
              ? 0
              : 1;
    }
    std::printf("%s: N = %zu fallible calls, %zu runs, %zu with a finding\n", GetParam().name,
                points.size(), points.size(), bad);
  }

 private:
  void RunOne(size_t index, Mode mode) {
    Stage stage(GetParam());
    sim::Machine& machine = *stage.machine;
    std::wstring text;
    Lines afterConnect;
    BeginProcess();
    machine.RunProcess([&] {
      EXPECT_TRUE(stage.Prepare());
      machine.faults.ResetCount();
      mode == Mode::kOnce ? machine.faults.FailAt(index + 1) : machine.faults.FailFrom(index + 1);
      text = Connect();
      afterConnect = machine.processes.Alive();
      Disconnect();
      EndProcess();
    });
    machine.faults.Clear();
    machine.clock.Advance(10'000);  // what was started and can't be stopped comes to its end

    EXPECT_EQ(machine.OpenHandles(), Lines());
    EXPECT_EQ(machine.Violations(), Lines());
    EXPECT_EQ(Missing(stage.Foreign(), stage.Now()), Lines());
    if (mode == Mode::kOnce) {
      CheckOnce(stage, index, text, afterConnect);
    } else {
      EXPECT_EQ(text, ExpectedText(stage.scene, points, index, mode));
      EXPECT_EQ(Difference(SettledLines(stage, points, index), stage.Now()), Lines());
      EXPECT_EQ(machine.processes.Alive(), points[index].outsideJob);
    }
    ExpectNextConnectIsClean(stage);
  }

  void CheckOnce(const Stage& stage, size_t index, const std::wstring& text,
                 const Lines& afterConnect) {
    const Point& point = points[index];
    if (stage.scene.start == Start::kOrphans) {
      CheckOrphansOnce(stage, index, text);
      return;
    }
    EXPECT_EQ(text, ExpectedText(stage.scene, points, index, Mode::kOnce));
    EXPECT_EQ(Difference(RemainsOnce(stage, point), stage.Now()), Lines());
    EXPECT_EQ(stage.machine->processes.Alive(), Lines());
    // A connect that fails before the tunnel is touched leaves an old one up; one that fails
    // later has taken everything back by itself.
    const bool up = text.empty() || (stage.scene.start == Start::kUp && point.step == "account");
    EXPECT_EQ(afterConnect, up ? (Lines{"xray.exe", "tun2socks-windows-amd64.exe"}) : Lines());
  }

  // A failure in front of the pins leaves what the killed run had left, an orphan that could not
  // be ended among it; after every other, and after success, that is gone.
  void CheckOrphansOnce(const Stage& stage, size_t index, const std::wstring& text) {
    const Point& point = points[index];
    const Lines alive = stage.machine->processes.Alive();
    const bool scanned = point.step != "account" || text.empty();
    if (scanned && Holds(alive, kOrphanXray)) {
      EXPECT_EQ(point.step, "kill stale (hit)");
      EXPECT_EQ(text, kPortTakenText);
    } else {
      EXPECT_EQ(text, ExpectedText(stage.scene, points, index, Mode::kOnce));
    }
    if (Holds(alive, kOrphanTun2socks)) {
      EXPECT_THAT(point.step, ::testing::AnyOf("account", "kill stale (hit)"));
    }
    const Lines now = LinesOf(WithoutTunnel(stage.machine->network));
    if (text.empty()) {
      EXPECT_EQ(Difference(RemainsOnce(stage, point), now), Lines());
      return;
    }
    Lines known = LinesOf(stage.before);
    if (point.step == "account") {
      known = LinesOf(WithoutTunnel(stage.start));
    } else if (text == kPortTakenText || IsRefusal(point)) {
      known.push_back(kNodePin);
      std::sort(known.begin(), known.end());
    }
    EXPECT_EQ(Difference(known, now), Lines());
  }

  // These stop a start before it knows the physical route, and thus the pins.
  static bool IsRefusal(const Point& point) { return point.step == "find physical route"; }

  static netmodel::Network WithoutTunnel(netmodel::Network network) {
    while (const netmodel::Adapter* const adapter = network.FindByAlias("tavrin")) {
      network.RemoveAdapter(adapter->luid);
    }
    return network;
  }

  // What remains after a disconnect in which one call has failed: the panel's pin whose deletion
  // failed, or router discovery if the command that turns it on did not run. The node's pin is
  // deleted twice, so that one failure does not keep it.
  static Lines RemainsOnce(const Stage& stage, const Point& point) {
    Lines lines = LinesOf(stage.before);
    if (point.step != "disconnect") {
      return lines;
    }
    const bool deletion =
        point.name == "DeleteIpForwardEntry2" || point.name == "ConvertInterfaceAliasToLuid";
    const size_t panelPins = stage.scene.pins.size() - 1;
    if (deletion && static_cast<size_t>(point.ordinal) <= panelPins) {
      const std::string& pin = stage.scene.pins[static_cast<size_t>(point.ordinal) - 1];
      lines.push_back("route 以太网 " + pin + "/32 via 192.168.1.1 metric 1");
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
