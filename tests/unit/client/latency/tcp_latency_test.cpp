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

TEST_F(TcpLatencyTest, NamesAreLookedUpAtOnceAndNoMoreThan32) {
  machine.names.Set("hk2.node.example", sim::HostEntry{.ipv4 = {"198.51.100.7"}});
  const std::vector<LatencyGoal> goals(40, {L"hk2.node.example", 443});
  size_t askedAtFirst = 0;
  size_t connectsAtFirst = 1;
  const std::vector<Latency> results = MeasureLatency(
      goals, {[&](size_t) {
                EXPECT_EQ(machine.WaitForThreads(), 0u);  // each look-up is over by now
                if (askedAtFirst == 0) {
                  askedAtFirst = machine.names.Asked().size();
                  connectsAtFirst = machine.calls.Count("connect");
                }
              },
              [] { return false; }});
  EXPECT_EQ(askedAtFirst, 32u);
  EXPECT_EQ(connectsAtFirst, 0u);
  EXPECT_EQ(machine.names.Asked().size(), 40u);
  EXPECT_EQ(results.size(), 40u);
  EXPECT_EQ(results.back().kind, Latency::Kind::kNoAnswer);
}

TEST_F(TcpLatencyTest, TheLookUpIsInTheLimitButNotInTheTime) {
  machine.names.Set("hk2.node.example", sim::HostEntry{.ipv4 = {"198.51.100.7"}, .takes = 1500});
  machine.connects.Next({Plan::Kind::kConnectsAfter, 38});
  EXPECT_EQ(Measure({{L"hk2.node.example", 443}})[0].milliseconds, 38u);
  const std::uint64_t start = machine.clock.Now();
  EXPECT_EQ(Measure({{L"hk2.node.example", 443}})[0].kind, Latency::Kind::kNoAnswer);
  EXPECT_EQ(machine.clock.Now() - start, 2000u);
}

TEST_F(TcpLatencyTest, ANameThatTakesLongerThanTheLimitIsGivenUp) {
  machine.names.Set("hk2.node.example", sim::HostEntry{.ipv4 = {"198.51.100.7"}, .takes = 2000});
  EXPECT_EQ(Measure({{L"hk2.node.example", 443}})[0].kind, Latency::Kind::kSlowName);
  EXPECT_EQ(machine.calls.Count("connect"), 0u);
}

TEST_F(TcpLatencyTest, WithoutAThreadTheNameIsLookedUpAllTheSame) {
  machine.faults.Fail("CreateThread", {.nth = 1});
  machine.names.Set("hk2.node.example", {"198.51.100.7"});
  machine.connects.Next({Plan::Kind::kConnectsAtOnce});
  EXPECT_EQ(Measure({{L"hk2.node.example", 443}})[0].kind, Latency::Kind::kConnected);
}

TEST_F(TcpLatencyTest, WhatIsNoIpv4PlaceIsNotTried) {
  const std::vector<Latency> results = Measure({{L"2001:db8::1", 443},
                                                {L"203.0.113.77", 70000},
                                                {L"203.0.113.77", 0},
                                                {L"203.0.113.77", -1},
                                                {L"999.0.113.77", 443}});
  EXPECT_EQ(results[0].kind, Latency::Kind::kIpv6);
  EXPECT_EQ(results[1].kind, Latency::Kind::kNoPort);
  EXPECT_EQ(results[2].kind, Latency::Kind::kNoPort);
  EXPECT_EQ(results[3].kind, Latency::Kind::kNoPort);
  EXPECT_EQ(results[4].kind, Latency::Kind::kNoAddress);
  EXPECT_EQ(machine.calls.Count("connect"), 0u);
}

TEST_F(TcpLatencyTest, TheLastPortIsTried) {
  machine.connects.Next({Plan::Kind::kConnectsAtOnce});
  EXPECT_EQ(Measure({{L"203.0.113.77", 65535}})[0].kind, Latency::Kind::kConnected);
}

TEST_F(TcpLatencyTest, TimesComeFromThePerformanceCounter) {
  machine.connects.Next({Plan::Kind::kConnectsAfter, 3});
  EXPECT_EQ(Measure({{L"203.0.113.77", 443}})[0].milliseconds, 3u);
  EXPECT_EQ(machine.calls.Count("GetTickCount64"), 0u);
  EXPECT_EQ(machine.calls.Count("Sleep"), 0u);
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
