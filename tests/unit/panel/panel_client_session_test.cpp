// The one WinHTTP session of the process.
#include <chrono>
#include <set>
#include <thread>

#include "src/panel/panel_client.h"
#include "tests/unit/fresh_process.h"
#include "tests/unit/panel/panel_client_test.h"

namespace vpn {
namespace {

class HttpSession : public HttpTest {
 protected:
  void SetUp() override { machine.http.On("GET", url, {.body = "abc"}); }
};

TEST_F(HttpSession, TheFirstCallOpensItWithoutAProxyAndSetsItsTimeOuts) {
  EXPECT_IN_FRESH_PROCESS(([&] {
    EXPECT_TRUE(sim::OpenSessions().empty());
    EXPECT_TRUE(Get());
    EXPECT_EQ(machine.calls.TextsOf("WinHttpOpen"), Texts{R"("Tavrin/0.1", 1, null, null, 0x0)"});
    EXPECT_EQ(machine.calls.TextsOf("WinHttpSetTimeouts"),
              Texts{"session, 8000, 12000, 15000, 20000"});
    EXPECT_EQ(machine.calls.Sequence(
                  {"WinHttpCrackUrl", "WinHttpOpen", "WinHttpSetTimeouts", "WinHttpConnect"}),
              (Texts{R"(WinHttpCrackUrl "https://panel.example/api/x?y=1", 0, 0x0)",
                     R"(WinHttpOpen "Tavrin/0.1", 1, null, null, 0x0)",
                     "WinHttpSetTimeouts session, 8000, 12000, 15000, 20000",
                     R"(WinHttpConnect session, "panel.example", 443, 0)"}));
  }));
}

TEST_F(HttpSession, LaterCallsUseTheSameOneAndNeverCloseIt) {
  EXPECT_IN_FRESH_PROCESS([&] {
    EXPECT_TRUE(Get());
    EXPECT_TRUE(Get());
    EXPECT_EQ(machine.calls.Count("WinHttpOpen"), 1u);
    EXPECT_EQ(machine.calls.Count("WinHttpSetTimeouts"), 1u);
    EXPECT_EQ(sim::OpenSessions().size(), 1u);
    EXPECT_EQ(machine.calls.TextsOf("WinHttpCloseHandle"),
              (Texts{"request", "connection", "request", "connection"}));
  });
}

TEST_F(HttpSession, ABadAddressOpensNone) {
  EXPECT_IN_FRESH_PROCESS([&] {
    EXPECT_FALSE(Get(L"x"));
    EXPECT_EQ(machine.calls.Count("WinHttpOpen"), 0u);
  });
}

TEST_F(HttpSession, WhenItCanNotBeOpenedTheCallFailsAndTheNextOneTriesAgain) {
  EXPECT_IN_FRESH_PROCESS([&] {
    machine.faults.Fail("WinHttpOpen", {.code = 12029});
    EXPECT_FALSE(Get());
    EXPECT_EQ(error, L"无法初始化网络请求");
    EXPECT_EQ(status, 0u);
    EXPECT_EQ(response, "earlier body");
    EXPECT_EQ(machine.calls.Count("WinHttpSetTimeouts"), 0u);
    EXPECT_EQ(machine.calls.Count("WinHttpConnect"), 0u);
    EXPECT_TRUE(Get());
    EXPECT_EQ(machine.calls.Count("WinHttpOpen"), 2u);
  });
}

TEST_F(HttpSession, TimeOutsThatCanNotBeSetAreNoFailure) {
  EXPECT_IN_FRESH_PROCESS([&] {
    machine.faults.Fail("WinHttpSetTimeouts");
    EXPECT_TRUE(Get());
    EXPECT_TRUE(Get());
    EXPECT_EQ(machine.calls.Count("WinHttpSetTimeouts"), 1u);
  });
}

// The second thread gets to the session while the first one is opening it.
TEST_F(HttpSession, TwoThreadsThatMakeTheFirstCallAtOnceOpenOneSession) {
  EXPECT_IN_FRESH_PROCESS([&] {
    const auto get = [] {
      EXPECT_EQ(PanelClient{L"https://panel.example/api/x?y=1"}.get(L"").body, "abc");
    };
    std::thread other;
    machine.faults.Before("WinHttpOpen", 1, [&] {
      other = std::thread(get);
      std::this_thread::sleep_for(std::chrono::milliseconds(100));
    });
    get();
    other.join();
    EXPECT_EQ(machine.calls.Count("WinHttpOpen"), 1u);
    EXPECT_EQ(machine.calls.Count("WinHttpSetTimeouts"), 1u);
    EXPECT_EQ(sim::OpenSessions().size(), 1u);
  });
}

TEST_F(HttpSession, ARequestDoesNotKeepOthersWaiting) {
  machine.faults.Before("WinHttpSendRequest", 1, [&] {
    std::thread other(
        [] { EXPECT_TRUE(PanelClient{L"https://panel.example/api/x?y=1"}.get(L"").ok()); });
    other.join();
  });
  EXPECT_TRUE(Get());
  EXPECT_EQ(machine.http.Lines().size(), 2u);
}

TEST_F(HttpSession, ARequestHoldsAReferenceForItsWholeDuration) {
  EXPECT_EQ(SharedHttpSession().use_count(), 2);  // the process's and the one that is asked
  long during = 0;
  machine.faults.Before("WinHttpReceiveResponse", 1,
                        [&] { during = SharedHttpSession().use_count(); });
  EXPECT_TRUE(Get());
  EXPECT_EQ(during, 3);
  EXPECT_EQ(SharedHttpSession().use_count(), 2);
}

TEST_F(HttpSession, ManyThreadsShareIt) {
  std::vector<std::thread> threads;
  for (int i = 0; i < 8; ++i) {
    threads.emplace_back([] {
      for (int call = 0; call < 25; ++call) {
        const PanelReply reply = PanelClient{L"https://panel.example/api/x?y=1", L"token"}.get(L"");
        EXPECT_TRUE(reply.ok());
        EXPECT_EQ(reply.body, "abc");
      }
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  EXPECT_EQ(machine.http.Lines().size(), 200u);
  EXPECT_EQ(sim::OpenSessions().size(), 1u);
}

}  // namespace
}  // namespace vpn
