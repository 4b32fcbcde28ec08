// The one session of the process, and the handles of the calls.
#include <windows.h>

#include <thread>

#include "src/panel/panel_client.h"
#include "tests/e2e/panel/account/account_test.h"
#include "tests/e2e/panel/harness/winhttp_counter.h"
#include "tests/standins/text.h"

namespace e2e {
namespace {

class FirstCall : public AccountTest {};

TEST_F(FirstCall, OfTwoThreadsAtOnceOpensOneSession) {
  ASSERT_EQ(CountedWinHttpHandles().sessions, 0) << "to be run in a process of its own";
  const HANDLE go = CreateEventW(nullptr, TRUE, FALSE, nullptr);
  const std::wstring url = apiBase + L"/api/v1/guest/comm/config";
  bool answered[2] = {};
  std::thread threads[2];
  for (int i = 0; i < 2; ++i) {
    threads[i] = std::thread([&, i] {
      WaitForSingleObject(go, INFINITE);
      answered[i] = vpn::PanelClient{url}.get(L"").ok();
    });
  }
  SetEvent(go);
  for (std::thread& thread : threads) thread.join();
  CloseHandle(go);
  EXPECT_TRUE(answered[0]);
  EXPECT_TRUE(answered[1]);
  const WinHttpCounts counts = CountedWinHttpHandles();
  EXPECT_EQ(counts.sessions, 1);
  EXPECT_EQ(counts.connections, 2);
  EXPECT_EQ(counts.requests, 2);
  EXPECT_EQ(counts.closed, 4);
  EXPECT_EQ(panel.Requests().size(), 2U);
}

class ManyCalls : public AccountTest {
 protected:
  void Call(const std::wstring& url) const {
    (void)vpn::PanelClient{url, L"credential"}.post(L"", "{}");
  }

  // What every call can come to: an answer, a refusal, no answer, no connection, no address.
  void CallInEveryWay() const {
    Call(apiBase + L"/api/v1/guest/comm/config");
    Call(apiBase + L"/refused");
    Call(apiBase + L"/garbage");
    Call(standins::ToWide(panel.nowhere()));
    Call(L"no address at all");
  }
};

TEST_F(ManyCalls, LeakNoHandle) {
  constexpr int kRounds = 200;          // of five calls
  constexpr int kNoiseOfPlatform = 20;  // its own threads and pooled connections come and go
  panel.Answer("/refused", 500);
  panel.Behave({{"path", "/garbage"}, {"do", "garbage"}});
  for (int i = 0; i < 10; ++i) CallInEveryWay();
  const WinHttpCounts before = CountedWinHttpHandles();
  const int handlesBefore = CountProcessHandles();
  for (int i = 0; i < kRounds; ++i) CallInEveryWay();
  const WinHttpCounts after = CountedWinHttpHandles();
  EXPECT_EQ(after.sessions, before.sessions);
  EXPECT_EQ(after.connections - before.connections, 800);
  EXPECT_EQ(after.requests - before.requests, 800);
  EXPECT_EQ(after.closed - before.closed, 1600);
  EXPECT_GT(handlesBefore, 0);
  EXPECT_LE(CountProcessHandles(), handlesBefore + kNoiseOfPlatform);
}

}  // namespace
}  // namespace e2e
