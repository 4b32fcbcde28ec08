#include "tests/fault/survey.h"

#include <gtest/gtest.h>

#include <map>

#include "tests/fault/reply_texts.h"

namespace fault {
namespace {

// The steps in the order in which the run comes to them.
Lines StepsOf(const std::vector<Point>& points) {
  Lines steps;
  for (const Point& point : points) {
    if (steps.empty() || steps.back() != point.step) {
      steps.push_back(point.step);
    }
  }
  return steps;
}

Lines ExpectedSteps(const Lines& first) {
  Lines steps = {"account"};
  steps.insert(steps.end(), first.begin(), first.end());
  for (const char* step :
       {"find physical route", "pin panel hosts", "spawn xray", "xray socks listening",
        "spawn tun2socks", "wintun adapter up", "set tun address (api)", "set tun dns (api)",
        "tun ipv4 ready", "routes installed", "ipv6 leak blocked", "disconnect"}) {
    steps.push_back(step);
  }
  return steps;
}

TEST(Survey, TheRunWithoutFaultsPassesEveryStep) {
  const std::map<std::string, Lines> first = {
      {"FirstConnect", {"stop() idle", "kill stale (clean)"}},
      {"ConnectWhileUp", {"stop() own session", "skip orphan scan"}},
      {"AfterOrphans", {"stop() idle", "kill stale (hit)"}},
      {"FourPanelHosts", {"stop() idle", "kill stale (clean)"}},
  };
  ASSERT_EQ(AllScenes().size(), first.size());
  for (const Scene& scene : AllScenes()) {
    SCOPED_TRACE(scene.name);
    const std::vector<Point> points = TakeSurvey(scene);
    EXPECT_GT(points.size(), 150u);
    EXPECT_EQ(StepsOf(points), ExpectedSteps(first.at(scene.name)));
  }
}

TEST(Survey, EveryTextOfTheTableBelongsToACall) {
  for (const Scene& scene : AllScenes()) {
    // While a tunnel is up the account comes from the cache, and its files are not read.
    if (scene.start != Start::kUp) {
      SCOPED_TRACE(scene.name);
      EXPECT_EQ(UnreachedTexts(scene, TakeSurvey(scene)), Lines());
    }
  }
}

TEST(Survey, IsTheSameEachTime) {
  for (const Scene& scene : AllScenes()) {
    SCOPED_TRACE(scene.name);
    const std::vector<Point> first = TakeSurvey(scene);
    const std::vector<Point> second = TakeSurvey(scene);
    ASSERT_EQ(first.size(), second.size());
    for (size_t i = 0; i < first.size(); ++i) {
      EXPECT_EQ(Describe(first[i]), Describe(second[i]));
    }
  }
}

TEST(Survey, EveryPinOfTheSceneIsMadeInItsOrder) {
  for (const Scene& scene : AllScenes()) {
    SCOPED_TRACE(scene.name);
    Lines made;
    for (const Point& point : TakeSurvey(scene)) {
      if (point.name == "CreateIpForwardEntry2" && point.text.starts_with("\"以太网\"")) {
        made.push_back(point.text);
      }
    }
    Lines expected;
    for (const std::string& pin : scene.pins) {
      expected.push_back("\"以太网\" " + pin + "/32 via 192.168.1.1 metric 1");
    }
    EXPECT_EQ(made, expected);
  }
}

TEST(Stage, HoldsTwentyLookAlikesAndMore) {
  const Stage stage(AllScenes().front());
  const Lines own = LinesOf(netmodel::TypicalNetwork());
  EXPECT_GE(Missing(stage.Foreign(), own).size(), 20u);
  EXPECT_EQ(Missing(own, stage.Foreign()),
            (Lines{"ipv6 of 以太网: router discovery on", "ipv6 route 以太网 ::/0"}))
      << "the only settings of others that a run may change while it lasts";
}

}  // namespace
}  // namespace fault
