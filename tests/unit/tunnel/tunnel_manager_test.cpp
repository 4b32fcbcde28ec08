// The test of life that every reply reports, and the constants of the sequence.
#include "src/tunnel/tunnel_manager.h"

#include "src/common/deployment.h"
#include "tests/unit/tunnel/tunnel_fixture.h"

namespace unit {
namespace {

class TunnelLife : public TunnelTest {};

TEST_F(TunnelLife, ANewManagerIsNotRunningAndAsksNobody) {
  EXPECT_FALSE(manager->childrenAlive());
  EXPECT_EQ(machine.calls.Names(), Texts());
}

TEST_F(TunnelLife, BothChildrenAreAskedWithoutWaitingTun2socksFirst) {
  ASSERT_TRUE(Start());
  machine.calls.Clear();
  EXPECT_TRUE(manager->childrenAlive());
  EXPECT_EQ(machine.calls.Sequence({"WaitForSingleObject"}),
            (Texts{"WaitForSingleObject process tun2socks-windows-amd64.exe, 0",
                   "WaitForSingleObject process xray.exe, 0"}));
  EXPECT_EQ(machine.calls.Names().size(), 2u);
}

TEST_F(TunnelLife, ATunnelWithoutOneOfItsChildrenIsNotRunning) {
  for (const size_t dead : {0u, 1u}) {
    SCOPED_TRACE(dead);
    const size_t before = machine.processes.Started().size();
    ASSERT_TRUE(Start());
    machine.processes.Exit(machine.processes.Started().at(before + dead)->id, 0);
    EXPECT_FALSE(manager->childrenAlive());
    manager->stop();
  }
}

TEST_F(TunnelLife, AChildThatCantBeAskedCountsAsEnded) {
  ASSERT_TRUE(Start());
  for (const std::uint64_t nth : {1u, 2u}) {
    machine.faults.Fail("WaitForSingleObject", {.nth = nth});
    EXPECT_FALSE(manager->childrenAlive()) << nth;
    machine.faults.Clear();
  }
  EXPECT_TRUE(manager->childrenAlive());
}

TEST_F(TunnelLife, RoutesSayNothingAboutIt) {
  ASSERT_TRUE(Start());
  const netmodel::Network whole = machine.network;
  machine.network.routes.clear();
  EXPECT_TRUE(manager->childrenAlive());
  machine.network = whole;
}

TEST_F(TunnelLife, AStoppedTunnelIsNotRunning) {
  ASSERT_TRUE(Start());
  manager->stop();
  EXPECT_FALSE(manager->childrenAlive());
}

TEST_F(TunnelLife, ADeadChildIsNotRestarted) {
  ASSERT_TRUE(Start());
  machine.processes.Exit(machine.processes.Started().at(0)->id, 0);
  const size_t started = machine.processes.Started().size();
  machine.clock.Advance(600000);
  EXPECT_FALSE(manager->childrenAlive());
  EXPECT_EQ(machine.processes.Started().size(), started);
}

TEST(TunnelConstants, TheyAreTheseNumbersAndTexts) {
  EXPECT_EQ(vpn::kSocksPort, 17593);
  EXPECT_EQ(std::wstring(vpn::kAdapterName), L"tavrin");
  EXPECT_EQ(std::wstring(vpn::kDefaultTunAddress), L"192.168.123.1");
  EXPECT_EQ(vpn::kTunPrefixLength, 24);
  EXPECT_EQ(std::wstring(vpn::kTunNameServer), L"1.1.1.1");
  EXPECT_EQ(vpn::kHostRoutePrefix, 32);
  EXPECT_EQ(vpn::kHostRouteMetric, 1u);
  EXPECT_EQ(vpn::kSplitRoutePrefix, 1);
  EXPECT_EQ(vpn::kSplitRouteMetric, 5u);
}

}  // namespace
}  // namespace unit
