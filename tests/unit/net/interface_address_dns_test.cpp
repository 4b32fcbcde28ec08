// The name servers of an interface.
#include "src/net/interface_address.h"
#include "tests/unit/net/net_fixture.h"
#include "tests/unit/status.h"

namespace unit {
namespace {

// A tunnel's adapter "tavrin" beside the Ethernet one.
class InterfaceDns : public NetTest {
 protected:
  InterfaceDns() { AddAdapter("tavrin", "tun2socks Tunnel"); }

  netmodel::Adapter& Tun() { return *machine.network.FindByAlias("tavrin"); }

  std::wstring error = L"as before";
};

// SetInterfaceDns, ClearInterfaceDns

TEST_F(InterfaceDns, TheNameServerIsSetOnItsInterfaceAlone) {
  EXPECT_TRUE(Succeeds(vpn::SetInterfaceDns(L"tavrin", L"1.1.1.1"), error));
  EXPECT_EQ(error, L"as before");
  EXPECT_EQ(Tun().dnsServers, Texts{"1.1.1.1"});
  EXPECT_FALSE(Tun().dnsFromDhcp);
  EXPECT_EQ(Ethernet().dnsServers, Texts{"192.168.1.1"});
  EXPECT_EQ(machine.calls.Names(),
            (Texts{"ConvertInterfaceAliasToLuid", "ConvertInterfaceLuidToGuid",
                   "SetInterfaceDnsSettings"}));
  EXPECT_EQ(machine.calls.TextsOf("SetInterfaceDnsSettings"), Texts{"\"1.1.1.1\", 0x2"});
}

TEST_F(InterfaceDns, AnEmptyServerIsAnEmptyTextAndClears) {
  Tun().dnsServers = {"1.1.1.1"};
  EXPECT_TRUE(Succeeds(vpn::SetInterfaceDns(L"tavrin", L""), error));
  EXPECT_EQ(machine.calls.TextsOf("SetInterfaceDnsSettings"), Texts{"\"\", 0x2"});
  EXPECT_EQ(Tun().dnsServers, Texts());
}

TEST_F(InterfaceDns, ANameServerOnAnUnknownAliasGivesTheUnknownInterfaceText) {
  EXPECT_FALSE(Succeeds(vpn::SetInterfaceDns(L"gone", L"1.1.1.1"), error));
  EXPECT_EQ(error, L"unknown interface gone");
  machine.faults.Fail("ConvertInterfaceLuidToGuid");
  EXPECT_FALSE(Succeeds(vpn::SetInterfaceDns(L"tavrin", L"1.1.1.1"), error));
  EXPECT_EQ(error, L"guid lookup failed for tavrin");
  EXPECT_EQ(machine.calls.Count("SetInterfaceDnsSettings"), 0u);
}

TEST_F(InterfaceDns, ARefusedNameServerGivesTheCode) {
  for (const std::uint32_t code : {2u, 5010u}) {
    SCOPED_TRACE(code);
    machine.faults.Fail("SetInterfaceDnsSettings", {.code = code});
    EXPECT_FALSE(Succeeds(vpn::SetInterfaceDns(L"tavrin", L"1.1.1.1"), error));
    EXPECT_EQ(error, code == 2 ? L"SetInterfaceDnsSettings failed 2"
                               : L"SetInterfaceDnsSettings failed 5010");
  }
  EXPECT_EQ(Tun().dnsServers, Texts());
}

TEST_F(InterfaceDns, ClearingTakesTheStaticServersAway) {
  Tun().dnsServers = {"1.1.1.1", "8.8.8.8"};
  Tun().dnsFromDhcp = false;
  EXPECT_TRUE(vpn::ClearInterfaceDns(L"tavrin"));
  EXPECT_EQ(Tun().dnsServers, Texts());
  EXPECT_TRUE(Tun().dnsFromDhcp);
}

TEST_F(InterfaceDns, ClearingOnAnAdapterThatHasVanishedIsFalse) {
  machine.network.RemoveAdapter(Tun().luid);
  EXPECT_FALSE(vpn::ClearInterfaceDns(L"tavrin"));
  machine.faults.Fail("SetInterfaceDnsSettings");
  EXPECT_FALSE(vpn::ClearInterfaceDns(kEthernet));
}

// ListInterfaceDnsServers

TEST_F(InterfaceDns, ServersAreListedInTheAdaptersOrder) {
  Tun().dnsServers = {"9.9.9.9", "1.1.1.1", "8.8.8.8"};
  EXPECT_EQ(vpn::ListInterfaceDnsServers(L"tavrin"),
            (WideTexts{L"9.9.9.9", L"1.1.1.1", L"8.8.8.8"}));
  EXPECT_EQ(vpn::ListInterfaceDnsServers(kEthernet), WideTexts{L"192.168.1.1"});
}

TEST_F(InterfaceDns, AdaptersAreListedTwiceWithTheirPrefixes) {
  (void)vpn::ListInterfaceDnsServers(L"tavrin");
  EXPECT_EQ(machine.calls.TextsOf("GetAdaptersAddresses"), (Texts{"2, 0x10", "2, 0x10"}));
}

TEST_F(InterfaceDns, Ipv6ServersAreSkipped) {
  Tun().dnsServers = {"2001:db8::53", "1.1.1.1", "fe80::1", "8.8.8.8", "2001:db8::54"};
  EXPECT_EQ(vpn::ListInterfaceDnsServers(L"tavrin"), (WideTexts{L"1.1.1.1", L"8.8.8.8"}));
}

TEST_F(InterfaceDns, AnEntryWithoutAnAddressIsSkipped) {
  Tun().dnsServers = {"1.1.1.1", "8.8.8.8"};
  machine.ipHelper.emptyServers.insert(Tun().luid);
  EXPECT_EQ(vpn::ListInterfaceDnsServers(L"tavrin"), (WideTexts{L"1.1.1.1", L"8.8.8.8"}));
}

TEST_F(InterfaceDns, AnAliasInOtherCaseOrLengthHasNoServers) {
  Tun().dnsServers = {"1.1.1.1"};
  for (const wchar_t* alias : {L"Tavrin", L"TAVRIN", L"tavri", L"tavrin ", L"tavrin 1", L""}) {
    EXPECT_EQ(vpn::ListInterfaceDnsServers(alias), WideTexts())
        << testing::PrintToString(std::wstring(alias));
  }
}

TEST_F(InterfaceDns, EveryAdapterOfThatNameCounts) {
  Tun().dnsServers = {"1.1.1.1"};
  AddAdapter("between").dnsServers = {"7.7.7.7"};
  AddAdapter("tavrin").dnsServers = {"8.8.8.8", "1.1.1.1"};
  EXPECT_EQ(vpn::ListInterfaceDnsServers(L"tavrin"),
            (WideTexts{L"1.1.1.1", L"8.8.8.8", L"1.1.1.1"}));
}

TEST_F(InterfaceDns, AnAdapterListThatCantBeReadIsEmpty) {
  machine.faults.Fail("GetAdaptersAddresses", {.nth = 2});
  EXPECT_EQ(vpn::ListInterfaceDnsServers(kEthernet), WideTexts());
  AllowNetworkChanges();
  machine.network.adapters.clear();
  EXPECT_EQ(vpn::ListInterfaceDnsServers(kEthernet), WideTexts());
}

TEST_F(InterfaceDns, AnAdapterWithoutANameIsPassedOver) {
  const std::uint64_t nameless = Ethernet().luid;
  machine.ipHelper.nullTexts.insert(nameless);
  Tun().dnsServers = {"1.1.1.1"};
  EXPECT_EQ(vpn::ListInterfaceDnsServers(L"tavrin"), WideTexts{L"1.1.1.1"});
  EXPECT_EQ(vpn::ListInterfaceDnsServers(L""), WideTexts()) << "no name is not the empty name";
}

}  // namespace
}  // namespace unit
