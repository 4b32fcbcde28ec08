// Fetches that overlap, and what is held meanwhile.
#include "src/control/account_cache.h"
#include "tests/unit/control/control_fixture.h"
#include "tests/unit/control/scripted/scripted_control_plane.h"
#include "tests/unit/status.h"

namespace vpn {
namespace {

using unit::Node;

class OverlappingFetches : public unit::ControlTest {
 protected:
  OverlappingFetches() { script = unit::ControlPlaneScript(); }
  void TearDown() override {
    EXPECT_EQ(script.answers.size(), 0u) << "fetches that were not made";
    ControlTest::TearDown();
  }
  // The first node's name, or nothing.
  std::wstring Fetch() {
    AccountSession session;
    const bool fetched = static_cast<bool>(FetchAccountCached(L"C:\\run", session));
    return fetched && !session.nodes.empty() ? session.nodes[0].name : L"";
  }
  unit::ControlPlaneScript& script = unit::TheScript();
  const NodeInfo first = Node(L"first", L"198.51.100.1");
  const NodeInfo second = Node(L"second", L"198.51.100.2");
};

TEST_F(OverlappingFetches, NoLockIsHeldDuringAFetch) {
  script.answers.push_back({true, {first}, L"", [] {
                              InvalidateAccountCache();  // would wait for ever
                            }});
  EXPECT_EQ(Fetch(), L"first");
}

TEST_F(OverlappingFetches, AreNotMergedAndTheLaterStoreWins) {
  script.answers.push_back({true, {first}, L"", [this] { EXPECT_EQ(Fetch(), L"second"); }});
  script.answers.push_back({true, {second}, L"", {}});
  EXPECT_EQ(Fetch(), L"first");
  EXPECT_EQ(Fetch(), L"first");  // from the cache
}

TEST_F(OverlappingFetches, FailedOneLeavesTheCacheAsItStands) {
  script.answers.push_back({false, {}, L"offline", [this] { EXPECT_EQ(Fetch(), L"second"); }});
  script.answers.push_back({true, {second}, L"", {}});
  EXPECT_EQ(Fetch(), L"");
  EXPECT_EQ(Fetch(), L"second");
}

TEST_F(OverlappingFetches, SessionWithoutNodesIsStoredButNeverServed) {
  script.answers.push_back({true, {}, L"", {}});
  script.answers.push_back({true, {}, L"", {}});
  script.answers.push_back({true, {first}, L"", {}});
  EXPECT_EQ(Fetch(), L"");
  EXPECT_EQ(Fetch(), L"");
  EXPECT_EQ(Fetch(), L"first");
}

TEST_F(OverlappingFetches, SessionWithoutNodesReplacesAnOlderOne) {
  script.answers.push_back({true, {}, L"", [this] { EXPECT_EQ(Fetch(), L"second"); }});
  script.answers.push_back({true, {second}, L"", {}});
  script.answers.push_back({true, {first}, L"", {}});
  EXPECT_EQ(Fetch(), L"");
  EXPECT_EQ(Fetch(), L"first");  // the second one is no longer stored
}

TEST_F(OverlappingFetches, EveryFetchBuildsAndDestroysABackendOfItsOwn) {
  int during = 0;
  script.answers.push_back({true, {first}, L"", [&] { during = script.alive; }});
  EXPECT_EQ(Fetch(), L"first");
  EXPECT_EQ(during, 1);
  EXPECT_EQ(script.alive, 0);
  EXPECT_EQ(Fetch(), L"first");
  EXPECT_EQ(script.runtimeDirs.size(), 1u);  // the cache needs none
}

TEST_F(OverlappingFetches, FailedFetchWithoutATextLeavesTheTextAlone) {
  script.answers.push_back({false, {}, L"", {}});
  AccountSession session;
  std::wstring error;
  EXPECT_FALSE(unit::Succeeds(FetchAccountCached(L"C:\\run", session), error));
  EXPECT_EQ(error, L"");
}

}  // namespace
}  // namespace vpn
