#include "src/net/netsh.h"

#include "tests/unit/net/net_fixture.h"

namespace unit {
namespace {

class Netsh : public NetTest {
 protected:
  Texts Lines() const { return machine.processes.StartedCommandLines(); }
};

TEST_F(Netsh, TheResetOfNameServersGoesBackToDhcp) {
  AllowNetworkChanges();
  Ethernet().dnsServers = {"1.1.1.1"};
  Ethernet().dnsFromDhcp = false;
  vpn::NetshResetDns(kEthernet);
  EXPECT_EQ(Lines(), Texts{"netsh interface ipv4 set dnsservers name=\"以太网\" source=dhcp"});
  EXPECT_EQ(Ethernet().dnsServers, Texts{"192.168.1.1"});
  EXPECT_TRUE(Ethernet().dnsFromDhcp);
}

TEST_F(Netsh, RouterDiscoveryIsSwitchedOffAndOnForTheActiveStore) {
  vpn::NetshSetRouterDiscovery(kEthernet, false);
  EXPECT_FALSE(Ethernet().ipv6RouterDiscovery);
  vpn::NetshSetRouterDiscovery(kEthernet, true);
  EXPECT_TRUE(Ethernet().ipv6RouterDiscovery);
  EXPECT_EQ(
      Lines(),
      (Texts{
          "netsh interface ipv6 set interface \"以太网\" routerdiscovery=disabled store=active",
          "netsh interface ipv6 set interface \"以太网\" routerdiscovery=enabled store=active"}));
}

TEST_F(Netsh, Ipv6IsSwitchedOffOnAnInterface) {
  AllowNetworkChanges();
  vpn::NetshDisableIpv6(kEthernet);
  EXPECT_EQ(Lines(),
            Texts{"netsh interface ipv6 set interface \"以太网\" admin=disabled store=active"});
  EXPECT_FALSE(Ethernet().ipv6Enabled);
}

TEST_F(Netsh, AnIpv6RouteIsDeletedByPrefixAndInterface) {
  AllowNetworkChanges();
  vpn::NetshDeleteIpv6Route(L"::/0", kEthernet);
  EXPECT_EQ(Lines(), Texts{"netsh interface ipv6 delete route ::/0 interface=\"以太网\""});
  EXPECT_TRUE(machine.network.ipv6Routes.empty());
}

TEST_F(Netsh, TheSplitRoutesAreDeletedLowerHalfFirst) {
  vpn::NetshDeleteIpv6SplitRoutes(L"tavrin 2");
  EXPECT_EQ(Lines(), (Texts{"netsh interface ipv6 delete route ::/1 interface=\"tavrin 2\"",
                            "netsh interface ipv6 delete route 8000::/1 interface=\"tavrin 2\""}));
}

TEST_F(Netsh, AnAliasGoesIntoTheLineAsItStands) {
  vpn::NetshDisableIpv6(L"a\"b c\\");
  EXPECT_EQ(Lines(),
            Texts{"netsh interface ipv6 set interface \"a\"b c\\\" admin=disabled store=active"});
}

TEST_F(Netsh, EveryCommandHasTwoAndAHalfSeconds) {
  machine.programs.On(L"netsh.exe", sim::Idle());
  const std::uint64_t before = machine.clock.Now();
  vpn::NetshResetDns(kEthernet);
  vpn::NetshSetRouterDiscovery(kEthernet, true);
  vpn::NetshDisableIpv6(kEthernet);
  vpn::NetshDeleteIpv6Route(L"::/0", kEthernet);
  vpn::NetshDeleteIpv6SplitRoutes(kEthernet);
  EXPECT_EQ(machine.clock.Now() - before, 15000u);
  size_t budgets = 0;
  for (const std::string& wait : machine.calls.TextsOf("WaitForSingleObject")) {
    budgets += wait == "process netsh.exe, 2500" ? 1 : 0;
  }
  EXPECT_EQ(budgets, 6u);
  EXPECT_EQ(machine.processes.Alive(), Texts()) << "those that hung were killed";
}

TEST_F(Netsh, AFailureKeepsNothingFromRunning) {
  machine.programs.OnNext(L"netsh.exe", sim::Script().FailsToStart(5));
  vpn::NetshDeleteIpv6SplitRoutes(L"tavrin");
  EXPECT_EQ(Lines(), Texts{"netsh interface ipv6 delete route 8000::/1 interface=\"tavrin\""});
}

TEST_F(Netsh, WithoutAnAliasNoIpv6CommandRuns) {
  vpn::NetshSetRouterDiscovery(L"", true);
  vpn::NetshDisableIpv6(L"");
  vpn::NetshDeleteIpv6Route(L"::/0", L"");
  vpn::NetshDeleteIpv6SplitRoutes(L"");
  EXPECT_EQ(machine.calls.Count("CreateProcessW"), 0u);
}

}  // namespace
}  // namespace unit
