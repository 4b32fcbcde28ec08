#include "client/latency/tcp_latency.h"

#include "tests/unit/client/client_test.h"

#include <winsock2.h>

namespace vpn {
namespace {

using Plan = sim::ConnectPlan;

class TcpLatencyTest : public unit::ClientTest {
 protected:
  std::vector<Latency> Measure(const std::vector<LatencyGoal>& goals) {
    return MeasureLatency(
        goals, {[this](size_t done) { progress.push_back(done); }, [this] { return interrupted; }});
  }
  std::vector<size_t> progress;
  bool interrupted = false;
};

TEST_F(TcpLatencyTest, AllAreAskedAtOnce) {
  machine.connects.Next({Plan::Kind::kConnectsAfter, 38});
  machine.connects.Next({Plan::Kind::kConnectsAfter, 12});
  machine.connects.Next({Plan::Kind::kConnectsAtOnce});
  const std::vector<Latency> results =
      Measure({{L"203.0.113.77", 443}, {L"203.0.113.78", 443}, {L"203.0.113.79", 443}});
  ASSERT_EQ(results.size(), 3u);
  EXPECT_EQ(results[0].kind, Latency::Kind::kConnected);
  EXPECT_EQ(results[0].milliseconds, 38u);
  EXPECT_EQ(results[1].milliseconds, 12u);
  EXPECT_EQ(results[2].milliseconds, 0u);
  EXPECT_EQ(progress.front(), 1u);
  EXPECT_EQ(progress.back(), 3u);
}

TEST_F(TcpLatencyTest, SilenceEndsAfterTwoSeconds) {
  const std::uint64_t start = machine.clock.Now();
  const std::vector<Latency> results = Measure({{L"203.0.113.77", 443}, {L"203.0.113.78", 443}});
  EXPECT_EQ(results[0].kind, Latency::Kind::kNoAnswer);
  EXPECT_EQ(results[1].kind, Latency::Kind::kNoAnswer);
  EXPECT_EQ(machine.clock.Now() - start, 2000u);
}

TEST_F(TcpLatencyTest, ARefusalIsToldWheneverItComes) {
  machine.connects.Next({Plan::Kind::kRefusedAtOnce, WSAECONNREFUSED});
  machine.connects.Next({Plan::Kind::kSocketError, WSAECONNREFUSED});
  const std::vector<Latency> results = Measure({{L"203.0.113.77", 443}, {L"203.0.113.78", 443}});
  EXPECT_EQ(results[0].kind, Latency::Kind::kRefused);
  EXPECT_EQ(results[1].kind, Latency::Kind::kRefused);
}

TEST_F(TcpLatencyTest, NamesAreLookedUp) {
  machine.names.Set("hk2.node.example", {"198.51.100.7"});
  machine.connects.Next({Plan::Kind::kConnectsAfter, 8});
  const std::vector<Latency> results =
      Measure({{L"hk2.node.example", 443}, {L"gone.node.example", 443}});
  EXPECT_EQ(results[0].kind, Latency::Kind::kConnected);
  EXPECT_EQ(results[1].kind, Latency::Kind::kNoAddress);
}

TEST_F(TcpLatencyTest, AnInterruptEndsTheRest) {
  interrupted = true;
  const std::vector<Latency> results = Measure({{L"203.0.113.77", 443}});
  EXPECT_EQ(results[0].kind, Latency::Kind::kInterrupted);
}

TEST_F(TcpLatencyTest, NothingToMeasureEndsAtOnce) {
  EXPECT_TRUE(Measure({}).empty());
}

}  // namespace
}  // namespace vpn
