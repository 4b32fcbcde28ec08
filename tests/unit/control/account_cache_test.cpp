#include "src/control/account_cache.h"

#include "tests/unit/control/control_fixture.h"
#include "tests/unit/status.h"

namespace vpn {
namespace {

class SessionCache : public unit::ControlTest {
 protected:
  bool Fetch() {
    session = AccountSession();
    error.clear();
    return unit::Succeeds(FetchAccountCached(L"C:\\run", session), error);
  }
  void RemoveSession() { machine.files.Remove(L"C:\\run\\session.json"); }

  AccountSession session;
  std::wstring error;
};

TEST_F(SessionCache, FirstFetchGoesToTheBackend) {
  EXPECT_TRUE(Fetch());
  EXPECT_EQ(Fetches(), 1);
  EXPECT_EQ(session.email, L"a@b.example");
  ASSERT_EQ(session.nodes.size(), 1u);
  EXPECT_EQ(session.nodes[0].name, L"Tokyo");
}

TEST_F(SessionCache, SecondFetchIsACopyOfTheFirst) {
  EXPECT_TRUE(Fetch());
  machine.files.Put(L"C:\\run\\account.json", unit::AccountJson("Osaka"));
  EXPECT_TRUE(Fetch());
  EXPECT_EQ(Fetches(), 1);
  EXPECT_EQ(session.email, L"a@b.example");
  EXPECT_EQ(session.expiryDate, L"2030-01-01");
  EXPECT_EQ(session.deviceLimit, 3);
  EXPECT_TRUE(session.loggedIn);
  ASSERT_EQ(session.nodes.size(), 1u);
  EXPECT_EQ(session.nodes[0].name, L"Tokyo");
  EXPECT_EQ(session.nodes[0].address, L"198.51.100.7");
}

TEST_F(SessionCache, CopyThatWasHandedOutIsTheCallersOwn) {
  EXPECT_TRUE(Fetch());
  session.nodes[0].name = L"changed";
  EXPECT_TRUE(Fetch());
  EXPECT_EQ(session.nodes[0].name, L"Tokyo");
}

TEST_F(SessionCache, OneMillisecondUnder90SecondsIsFresh) {
  EXPECT_TRUE(Fetch());
  machine.clock.Advance(89999);
  EXPECT_TRUE(Fetch());
  EXPECT_EQ(Fetches(), 1);
}

TEST_F(SessionCache, Exactly90SecondsIsStale) {
  EXPECT_TRUE(Fetch());
  machine.clock.Advance(90000);
  EXPECT_TRUE(Fetch());
  EXPECT_EQ(Fetches(), 2);
}

TEST_F(SessionCache, UseDoesNotProlongItsLife) {
  EXPECT_TRUE(Fetch());
  machine.clock.Advance(60000);
  EXPECT_TRUE(Fetch());
  machine.clock.Advance(60000);
  EXPECT_TRUE(Fetch());
  EXPECT_EQ(Fetches(), 2);
}

TEST_F(SessionCache, LifeBeginsWhenTheAnswerIsStored) {
  // The file takes its time, so that the fetch lasts three times that long.
  machine.faults.Delay("_wfsopen", 50000);
  EXPECT_TRUE(Fetch());
  machine.faults.Clear();
  machine.clock.Advance(89999);
  EXPECT_TRUE(Fetch());
  EXPECT_EQ(Fetches(), 1);
}

TEST_F(SessionCache, WrapOfTheThirtyTwoBitTickIsNoMatter) {
  machine.clock.Set(0xFFFFFFF0);
  EXPECT_TRUE(Fetch());
  machine.clock.Advance(89999);
  EXPECT_TRUE(Fetch());
  EXPECT_EQ(Fetches(), 1);
  machine.clock.Advance(1);
  EXPECT_TRUE(Fetch());
  EXPECT_EQ(Fetches(), 2);
}

TEST_F(SessionCache, StoreAtTickZeroCountsAsInvalid) {
  machine.clock.Set(0);
  EXPECT_TRUE(Fetch());
  EXPECT_TRUE(Fetch());
  EXPECT_EQ(Fetches(), 2);
}

TEST_F(SessionCache, InvalidatedCacheIsNotServed) {
  EXPECT_TRUE(Fetch());
  InvalidateAccountCache();
  machine.files.Put(L"C:\\run\\account.json", unit::AccountJson("Osaka"));
  EXPECT_TRUE(Fetch());
  EXPECT_EQ(Fetches(), 2);
  EXPECT_EQ(session.nodes[0].name, L"Osaka");
}

TEST_F(SessionCache, FailureHandsOutTheBackendsText) {
  RemoveSession();
  EXPECT_FALSE(Fetch());
  EXPECT_EQ(error, L"not logged in");
}

TEST_F(SessionCache, FailureIsNotCached) {
  RemoveSession();
  EXPECT_FALSE(Fetch());
  unit::PutLocalAccount(machine);
  EXPECT_TRUE(Fetch());
}

TEST_F(SessionCache, FreshCacheIsServedWhateverTheBackendWouldSay) {
  EXPECT_TRUE(Fetch());
  RemoveSession();
  EXPECT_TRUE(Fetch());
  EXPECT_EQ(error, L"");
}

TEST_F(SessionCache, ServedCopyMakesNoFileCall) {
  EXPECT_TRUE(Fetch());
  machine.calls.Clear();
  EXPECT_TRUE(Fetch());
  EXPECT_EQ(machine.calls.Names(), std::vector<std::string>{"GetTickCount64"});
}

TEST_F(SessionCache, WarmUpFillsIt) {
  WarmAccountCache(L"C:\\run");
  EXPECT_TRUE(Fetch());
  EXPECT_EQ(Fetches(), 1);
}

TEST_F(SessionCache, WarmUpThatFailsIsSilent) {
  RemoveSession();
  WarmAccountCache(L"C:\\run");
  EXPECT_EQ(Log(), "");
  unit::PutLocalAccount(machine);
  EXPECT_TRUE(Fetch());
  EXPECT_EQ(Fetches(), 1);
}

TEST_F(SessionCache, WarmUpUsesTheDirectoryThatItIsGiven) {
  unit::PutLocalAccount(machine, L"D:\\elsewhere");
  WarmAccountCache(L"D:\\elsewhere");
  EXPECT_EQ(Fetches(), 0);
  EXPECT_EQ(machine.calls.TextsOf("_wfsopen"),
            (std::vector<std::string>{R"("D:\elsewhere\panel.json", "rb", 64)",
                                      R"("D:\elsewhere\session.json", "rb", 64)",
                                      R"("D:\elsewhere\account.json", "rb", 64)"}));
}

}  // namespace
}  // namespace vpn
