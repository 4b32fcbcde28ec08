#include "client/live/live_view.h"

#include "tests/unit/client/client_test.h"

namespace vpn {
namespace {

const std::vector<std::int64_t> kMedians = {0, 8, 14, -1, 1, 140, 115, 12, 16, 1340};

class LiveViewTest : public unit::ClientTest {
 protected:
  void SetUp() override {
    UseTerminal();
    view.expect(kMedians);
  }

  static std::wstring Detail(size_t step) { return step == 2 ? L"以太网 via 192.168.1.1" : L""; }
  // The screen after a look at the first `count` lines of the recorded connect.
  std::vector<std::string> After(size_t count, std::uint64_t now) {
    const TraceText trace = ParseTrace(unit::RecordedLines(count));
    view.update(trace.connects.empty() ? nullptr : &trace.connects.back(), now, now);
    return machine.console.terminal.Lines();
  }
  std::vector<std::string> Finished(size_t count, std::uint64_t now, bool failed, bool inChecks) {
    const TraceText trace = ParseTrace(unit::RecordedLines(count));
    view.finish(trace.connects.empty() ? nullptr : &trace.connects.back(), now, failed, inChecks);
    return machine.console.terminal.Lines();
  }

  // Made once the terminal is there.
  std::unique_ptr<Output> made =
      (machine.console.isTerminal = true, machine.console.terminal.columns = 100,
       std::make_unique<Output>(STD_OUTPUT_HANDLE));
  LiveView view{*made, Detail};
};

TEST_F(LiveViewTest, BeforeTheFirstMarkTheAccountIsBeingFetched) {
  EXPECT_EQ(After(0, 0), std::vector<std::string>{"  ⠋ account and node being fetched …"});
}

TEST_F(LiveViewTest, StepsStayAndTheNextOneMoves) {
  EXPECT_EQ(After(5, 100),
            (std::vector<std::string>{
                "  ✓ old tunnel stopped                0 ms",
                "  ✓ stale helpers looked for          8 ms",
                "  ✓ physical route found             14 ms   以太网 via 192.168.1.1",
                "  ✓ panel pinned                      1 ms",
                "  ⠙ Xray being started …               (about 140 ms)",
            }));
  EXPECT_EQ(machine.console.terminal.ColourOf(L"✓"), 0x0A);
}

TEST_F(LiveViewTest, ALostLineHidesNothingBehindIt) {
  const TraceText trace = ParseTrace(unit::RecordedLines(5) +
                                     "spawn tun2socks              +    2ms  total   164ms\r\n"
                                     "wintun adapter up            +  113ms  total   277ms\r\n");
  view.update(&trace.connects[0], 300, 300);
  const std::vector<std::string> screen = machine.console.terminal.Lines();
  ASSERT_EQ(screen.size(), 7u);
  EXPECT_EQ(screen[4], "  ✓ Xray listening                    3 ms");
  EXPECT_EQ(screen[5], "  ✓ adapter up                      251 ms");
  EXPECT_EQ(screen[6], "  ⠸ address and name server being set …");
}

TEST_F(LiveViewTest, WithoutEarlierConnectsThereIsNoEstimate) {
  LiveView fresh(*made, Detail);
  const TraceText trace = ParseTrace(unit::RecordedLines(5));
  fresh.update(&trace.connects[0], 0, 0);
  EXPECT_EQ(machine.console.terminal.Lines().back(), "  ⠋ Xray being started …");
}

TEST_F(LiveViewTest, AnEstimateOfASecondIsRoundedToATenth) {
  EXPECT_EQ(After(12, 400).back(), "  ⠴ IPv6 being blocked …               (about 1 300 ms)");
}

TEST_F(LiveViewTest, AWholeConnectLeavesNoCharactersBehind) {
  for (size_t count = 0; count <= 13; ++count) {
    After(count, count * 47);
  }
  EXPECT_EQ(Finished(13, 620, false, false),
            (std::vector<std::string>{
                "  ✓ old tunnel stopped                0 ms",
                "  ✓ stale helpers looked for          8 ms",
                "  ✓ physical route found             14 ms   以太网 via 192.168.1.1",
                "  ✓ panel pinned                      1 ms",
                "  ✓ Xray listening                  139 ms",
                "  ✓ adapter up                      115 ms",
                "  ✓ address, name server, IPv4       12 ms",
                "  ✓ routes installed                 16 ms",
                "  ✓ IPv6 blocked                    307 ms",
                "",
            }));
  EXPECT_TRUE(machine.console.terminal.cursorVisible);
}

TEST_F(LiveViewTest, TheStepThatFailedIsMarkedWithItsTime) {
  After(5, 30);
  After(5, 5000);
  EXPECT_EQ(Finished(5, 5031, true, false).at(4), "  ✗ Xray listening                5 004 ms");
  EXPECT_EQ(machine.console.terminal.ColourOf(L"✗"), 0x0C);
}

TEST_F(LiveViewTest, ARefusalIsMarkedAsTheChecks) {
  After(2, 10);
  EXPECT_EQ(Finished(2, 15, true, true).at(2), "  ✗ checks before the start           5 ms");
}

TEST_F(LiveViewTest, AFailureBeforeTheTraceHasNoStep) {
  After(0, 10);
  EXPECT_EQ(Finished(0, 15, true, false), std::vector<std::string>{""});
}

TEST_F(LiveViewTest, ANameServerThatCouldNotBeSetIsARemark) {
  const TraceText trace = ParseTrace(unit::RecordedLines(9) +
                                     "set tun dns (api fail)       +    4ms  total   287ms\r\n"
                                     "tun ipv4 ready               +    2ms  total   289ms\r\n");
  view.update(&trace.connects[0], 300, 300);
  EXPECT_EQ(machine.console.terminal.Lines().at(6),
            "  ! address, name server, IPv4       12 ms   the name server could not be set");
}

}  // namespace
}  // namespace vpn
