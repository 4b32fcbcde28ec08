// The teardown: its order, and what it leaves.
#include <algorithm>

#include "tests/unit/tunnel/tunnel_fixture.h"

namespace unit {
namespace {

class TunnelStop : public TunnelTest {
 protected:
  void StartAndForgetCalls() {
    ASSERT_TRUE(Start());
    machine.calls.Clear();
  }
};

TEST_F(TunnelStop, AnIdleManagerAsksThePlatformForNothing) {
  manager->stop();
  manager->stop();
  EXPECT_EQ(machine.calls.Names(), Texts());
}

TEST_F(TunnelStop, ATunnelIsTakenDownByTheseCallsInThisOrder) {
  LetAdapterLinger(1000);
  StartAndForgetCalls();
  manager->stop();
  const Texts netshTail = {"WaitForSingleObject process netsh.exe, 2500",
                           "CloseHandle thread of netsh.exe", "CloseHandle process netsh.exe"};
  Texts expected = {"WaitForSingleObject process tun2socks-windows-amd64.exe, 0",
                    "TerminateProcess process tun2socks-windows-amd64.exe, 0",
                    "WaitForSingleObject process xray.exe, 0",
                    "TerminateProcess process xray.exe, 0",
                    "WaitForSingleObject process tun2socks-windows-amd64.exe, 200",
                    "WaitForSingleObject process xray.exe, 200",
                    "CloseHandle thread of tun2socks-windows-amd64.exe",
                    "CloseHandle thread of xray.exe",
                    "CloseHandle process tun2socks-windows-amd64.exe",
                    "CloseHandle process xray.exe",
                    "CloseHandle job",
                    "DeleteIpForwardEntry2 \"以太网\" 198.51.100.20/32 via 192.168.1.1",
                    "DeleteIpForwardEntry2 \"以太网\" 198.51.100.30/32 via 192.168.1.1",
                    "DeleteIpForwardEntry2 \"以太网\" 198.51.100.30/32 via 192.168.1.1",
                    "DeleteIpForwardEntry2 \"tavrin\" 0.0.0.0/1 via 192.168.123.1",
                    "DeleteIpForwardEntry2 \"tavrin\" 128.0.0.0/1 via 192.168.123.1",
                    "SetInterfaceDnsSettings \"\", 0x2"};
  for (const char* line :
       {"interface ipv6 set interface \"以太网\" routerdiscovery=enabled store=active",
        "interface ipv6 delete route ::/1 interface=\"tavrin\"",
        "interface ipv6 delete route 8000::/1 interface=\"tavrin\""}) {
    expected.push_back(NetshCall(line));
    expected.insert(expected.end(), netshTail.begin(), netshTail.end());
  }
  EXPECT_EQ(machine.calls.Sequence({"WaitForSingleObject", "TerminateProcess", "CloseHandle",
                                    "DeleteIpForwardEntry2", "SetInterfaceDnsSettings",
                                    "CreateProcessW", "CreateIpForwardEntry2",
                                    "CreateUnicastIpAddressEntry", "SetIpInterfaceEntry"}),
            expected);
}

TEST_F(TunnelStop, TheMachineIsAsBeforeAndTheManagerIdle) {
  StartAndForgetCalls();
  manager->stop();
  EXPECT_FALSE(manager->childrenAlive());
  EXPECT_EQ(machine.processes.Alive(), Texts());
  EXPECT_EQ(machine.OpenHandles(), Texts());
  ExpectNetworkAsBefore();
  for (const auto& child : {machine.processes.Started().at(0), machine.processes.Started().at(1)}) {
    EXPECT_EQ(child->exitCode, 0u);
  }
}

TEST_F(TunnelStop, TheSecondOfTwoStopsDoesNothing) {
  StartAndForgetCalls();
  manager->stop();
  machine.calls.Clear();
  manager->stop();
  EXPECT_EQ(machine.calls.Names(), Texts());
}

TEST_F(TunnelStop, TheChildrenAreGoneBeforeTheirHandlesAreClosed) {
  StartAndForgetCalls();
  machine.faults.Before("CloseHandle", 1,
                        [this] { EXPECT_EQ(machine.processes.Alive(), Texts()); });
  manager->stop();
}

TEST_F(TunnelStop, TheDestructorStops) {
  StartAndForgetCalls();
  manager.reset();
  EXPECT_EQ(machine.processes.Alive(), Texts());
  EXPECT_EQ(machine.OpenHandles(), Texts());
  ExpectNetworkAsBefore();
}

TEST_F(TunnelStop, RouterDiscoveryBringsTheDefaultRouteBackAndNothingIsAddedByHand) {
  StartAndForgetCalls();
  ASSERT_FALSE(Ethernet().ipv6RouterDiscovery);
  const std::uint64_t ethernet = Ethernet().luid;
  const netmodel::Ipv6Route defaultRoute = {ethernet, "::/0"};
  const auto holds = [&] {
    const auto& routes = machine.network.ipv6Routes;
    return std::find(routes.begin(), routes.end(), defaultRoute) != routes.end();
  };
  ASSERT_FALSE(holds());
  manager->stop();
  EXPECT_TRUE(holds());
  EXPECT_EQ(machine.calls.Count("CreateIpForwardEntry2"), 0u);
}

TEST_F(TunnelStop, Ipv6OnTheTunnelsInterfaceStaysOff) {
  LetAdapterLinger(1000);
  StartAndForgetCalls();
  manager->stop();
  ASSERT_NE(Tun(), nullptr) << "the adapter is about to vanish";
  EXPECT_FALSE(Tun()->ipv6Enabled);
  EXPECT_EQ(TunRoutes(), Texts());
  EXPECT_EQ(Tun()->dnsServers, Texts());
}

TEST_F(TunnelStop, AnAdapterThatWentWithItsProcessIsTheNormalCase) {
  StartAndForgetCalls();
  manager->stop();
  EXPECT_EQ(machine.calls.TextsOf("DeleteIpForwardEntry2"),
            Texts({"\"以太网\" 198.51.100.20/32 via 192.168.1.1",
                   "\"以太网\" 198.51.100.30/32 via 192.168.1.1",
                   "\"以太网\" 198.51.100.30/32 via 192.168.1.1"}))
      << "there is no interface to delete the split routes on";
  EXPECT_EQ(machine.calls.Count("SetInterfaceDnsSettings"), 0u);
  EXPECT_EQ(machine.calls.Count("CreateProcessW"), 3u) << "the commands run all the same";
}

TEST_F(TunnelStop, ANodeThatIsAPanelHostTooIsPinnedAndListedOnce) {
  machine.names.Set("panel.example", {"198.51.100.30", "198.51.100.20"});
  ASSERT_TRUE(Start());
  EXPECT_EQ(Pins(), (Texts{"198.51.100.20", "198.51.100.30"}));
  machine.calls.Clear();
  manager->stop();
  const Texts deletions = machine.calls.TextsOf("DeleteIpForwardEntry2");
  EXPECT_EQ(deletions, (Texts{"\"以太网\" 198.51.100.20/32 via 192.168.1.1",
                              "\"以太网\" 198.51.100.30/32 via 192.168.1.1",
                              "\"以太网\" 198.51.100.30/32 via 192.168.1.1"}));
}

// A start that failed

TEST_F(TunnelStop, AfterAFailedAdapterWaitChildrenAndPinsGoAndNoCommandRuns) {
  machine.programs.On(L"tun2socks*.exe", sim::Idle());
  ASSERT_FALSE(Start());
  EXPECT_EQ(machine.processes.Alive(), Texts());
  EXPECT_EQ(Pins(), Texts());
  EXPECT_EQ(NetshLines(), Texts());
  EXPECT_EQ(machine.calls.TextsOf("DeleteIpForwardEntry2"),
            (Texts{"\"以太网\" 198.51.100.20/32 via 192.168.1.1",
                   "\"以太网\" 198.51.100.20/32 via 192.168.1.1",
                   "\"以太网\" 198.51.100.30/32 via 192.168.1.1"}))
      << "before the pin, and in the stop";
}

TEST_F(TunnelStop, WithoutAGatewayNoRouteIsDeletedAndTheListEndsEmpty) {
  machine.faults.Fail("InetNtopW");
  EXPECT_FALSE(Start());
  EXPECT_EQ(error, L"invalid IPv4 route 198.51.100.30 via ");
  EXPECT_EQ(machine.calls.Count("CreateIpForwardEntry2"), 0u);
  EXPECT_EQ(machine.calls.Count("InitializeIpForwardEntry"), 2u)
      << "for the node's pin, whose deletion and creation were tried; none in the stop";
  machine.calls.Clear();
  manager->stop();
  EXPECT_EQ(machine.calls.Names(), Texts());
}

}  // namespace
}  // namespace unit
