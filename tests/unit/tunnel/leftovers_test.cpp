#include "src/tunnel/leftovers.h"

#include "tests/unit/net/net_fixture.h"

namespace unit {
namespace {

const std::string kDiscoveryOn =
    "netsh interface ipv6 set interface \"以太网\" routerdiscovery=enabled store=active";

// An adapter "tavrin" as a crashed run leaves it.
class Leftovers : public NetTest {
 protected:
  Leftovers() {
    netmodel::Adapter& tun = AddAdapter("tavrin", "tun2socks Tunnel");
    tun.dnsServers = {"1.1.1.1"};
    tun.dnsFromDhcp = false;
    luid = tun.luid;
    for (const std::uint32_t half : {0u, 0x80000000u}) {
      machine.network.routes.push_back({luid, half, 1, 0xC0A87B01, 5});
    }
    machine.network.ipv6Routes.push_back({luid, "::/1"});
    machine.network.ipv6Routes.push_back({luid, "8000::/1"});
  }

  netmodel::Adapter& Tun() { return *machine.network.FindByLuid(luid); }
  size_t Ipv6RoutesOfTun() const {
    size_t count = 0;
    for (const netmodel::Ipv6Route& route : machine.network.ipv6Routes) {
      count += route.luid == luid ? 1 : 0;
    }
    return count;
  }
  Texts Lines() const { return machine.processes.StartedCommandLines(); }

  std::uint64_t luid = 0;
};

TEST_F(Leftovers, EverythingOfACrashedRunIsUndoneInThisOrder) {
  vpn::CleanupLeftoverNetwork(L"192.168.123.1", kEthernet);
  EXPECT_EQ(RoutesOf(luid), Texts());
  EXPECT_EQ(Tun().dnsServers, Texts());
  EXPECT_EQ(Ipv6RoutesOfTun(), 0u);
  EXPECT_TRUE(Ethernet().ipv6RouterDiscovery);
  EXPECT_EQ(Lines(),
            (Texts{kDiscoveryOn, "netsh interface ipv6 delete route ::/1 interface=\"tavrin\"",
                   "netsh interface ipv6 delete route 8000::/1 interface=\"tavrin\""}));
  EXPECT_EQ(machine.calls.Sequence({"DeleteIpForwardEntry2", "SetInterfaceDnsSettings",
                                    "GetAdaptersAddresses", "GetExitCodeProcess"}),
            (Texts{"GetExitCodeProcess process netsh.exe", "GetAdaptersAddresses 0, 0x0",
                   "GetAdaptersAddresses 0, 0x0",
                   "DeleteIpForwardEntry2 \"tavrin\" 0.0.0.0/1 via 192.168.123.1",
                   "DeleteIpForwardEntry2 \"tavrin\" 128.0.0.0/1 via 192.168.123.1",
                   "SetInterfaceDnsSettings \"\", 0x2", "GetExitCodeProcess process netsh.exe",
                   "GetExitCodeProcess process netsh.exe"}));
}

TEST_F(Leftovers, TheAdapterItselfAndItsAddressStay) {
  Tun().addresses = {{0xC0A87B01, 24}};
  Tun().ipv6Enabled = false;
  vpn::CleanupLeftoverNetwork(L"192.168.123.1", kEthernet);
  EXPECT_EQ(Tun().addresses.size(), 1u);
  EXPECT_FALSE(Tun().ipv6Enabled);
}

TEST_F(Leftovers, OnlyRoutesOverThisTunAddressAreDeleted) {
  machine.network.routes.push_back({luid, 0, 1, 0x0A070701, 5});
  machine.network.routes.push_back({Ethernet().luid, 0, 1, 0xC0A87B01, 5});
  vpn::CleanupLeftoverNetwork(L"192.168.123.1", kEthernet);
  EXPECT_EQ(RoutesOf(luid), Texts{"0.0.0.0/1 via 10.7.7.1 metric 5"});
  EXPECT_EQ(RoutesOf(Ethernet().luid).size(), 4u);
}

TEST_F(Leftovers, WithNoAdapterLeftOnlyRouterDiscoveryIsRestored) {
  machine.network.RemoveAdapter(luid);
  vpn::CleanupLeftoverNetwork(L"192.168.123.1", kEthernet);
  EXPECT_EQ(Lines(), Texts{kDiscoveryOn});
  EXPECT_EQ(machine.calls.Count("DeleteIpForwardEntry2"), 0u);
  EXPECT_EQ(machine.calls.Count("SetInterfaceDnsSettings"), 0u);
  EXPECT_EQ(machine.calls.TextsOf("Sleep"), Texts{"25"}) << "one pass over the list";
}

TEST_F(Leftovers, WithNoAdapterAndNoAliasNotEvenThat) {
  machine.network.RemoveAdapter(luid);
  vpn::CleanupLeftoverNetwork(L"192.168.123.1", L"");
  EXPECT_EQ(Lines(), Texts());
}

TEST_F(Leftovers, WithoutAnAliasTheAdapterIsCleanedAllTheSame) {
  vpn::CleanupLeftoverNetwork(L"192.168.123.1", L"");
  EXPECT_EQ(Lines(), (Texts{"netsh interface ipv6 delete route ::/1 interface=\"tavrin\"",
                            "netsh interface ipv6 delete route 8000::/1 interface=\"tavrin\""}));
  EXPECT_EQ(RoutesOf(luid), Texts());
}

TEST_F(Leftovers, AnAdapterThatIsDownCountsAsGone) {
  Tun().operStatus = netmodel::kOperStatusDown;
  vpn::CleanupLeftoverNetwork(L"192.168.123.1", kEthernet);
  EXPECT_EQ(RoutesOf(luid).size(), 2u);
  EXPECT_EQ(Lines(), Texts{kDiscoveryOn});
}

TEST_F(Leftovers, AnAdapterWithoutANameIsNotTouched) {
  Tun().friendlyName = "";
  Tun().description = "tavrin tun2socks Tunnel";
  vpn::CleanupLeftoverNetwork(L"192.168.123.1", kEthernet);
  EXPECT_EQ(RoutesOf(luid).size(), 2u);
  EXPECT_EQ(Tun().dnsServers, Texts{"1.1.1.1"});
  EXPECT_EQ(Lines(), Texts{kDiscoveryOn});
}

TEST_F(Leftovers, AFailureKeepsNothingFromRunning) {
  machine.faults.FailAlways("DeleteIpForwardEntry2");
  machine.faults.FailAlways("SetInterfaceDnsSettings");
  machine.programs.OnNext(L"netsh.exe", sim::Script().FailsToStart(5));
  vpn::CleanupLeftoverNetwork(L"192.168.123.1", kEthernet);
  EXPECT_EQ(machine.calls.Count("DeleteIpForwardEntry2"), 2u);
  EXPECT_EQ(machine.calls.Count("SetInterfaceDnsSettings"), 1u);
  EXPECT_EQ(Lines().size(), 2u);
  EXPECT_EQ(Ipv6RoutesOfTun(), 0u);
}

TEST_F(Leftovers, TwiceIsAsGoodAsOnce) {
  vpn::CleanupLeftoverNetwork(L"192.168.123.1", kEthernet);
  const netmodel::Network once = machine.network;
  vpn::CleanupLeftoverNetwork(L"192.168.123.1", kEthernet);
  EXPECT_TRUE(machine.network == once);
}

TEST_F(Leftovers, TheCommandsHaveTheBudgetOfTwoAndAHalfSeconds) {
  machine.programs.On(L"netsh.exe", sim::Idle());
  const std::uint64_t before = machine.clock.Now();
  vpn::CleanupLeftoverNetwork(L"192.168.123.1", kEthernet);
  EXPECT_EQ(machine.clock.Now() - before, 7500u);
}

TEST_F(Leftovers, TheTunSideAloneIsTwoRoutesAndTheNameServer) {
  vpn::ClearTunIpv4(L"tavrin", L"192.168.123.1");
  EXPECT_EQ(machine.calls.Sequence(
                {"DeleteIpForwardEntry2", "SetInterfaceDnsSettings", "CreateProcessW"}),
            (Texts{"DeleteIpForwardEntry2 \"tavrin\" 0.0.0.0/1 via 192.168.123.1",
                   "DeleteIpForwardEntry2 \"tavrin\" 128.0.0.0/1 via 192.168.123.1",
                   "SetInterfaceDnsSettings \"\", 0x2"}));
  EXPECT_EQ(RoutesOf(luid), Texts());
  EXPECT_EQ(Tun().dnsServers, Texts());
}

TEST_F(Leftovers, AnInterfaceThatIsGoneIsNoMistake) {
  vpn::ClearTunIpv4(L"no such", L"192.168.123.1");
  EXPECT_EQ(machine.calls.Count("DeleteIpForwardEntry2"), 0u);
  EXPECT_EQ(RoutesOf(luid).size(), 2u);
}

}  // namespace
}  // namespace unit
