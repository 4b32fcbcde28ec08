#include "src/net/routes.h"

#include <cstring>

#include "src/net/net_internal.h"
#include "tests/unit/net/net_fixture.h"
#include "tests/unit/status.h"

namespace unit {
namespace {

class Routes : public NetTest {
 protected:
  Texts With(const std::string& route) const {
    Texts texts = kEthernetRoutes;
    texts.push_back(route);
    return texts;
  }

  std::uint64_t ethernet = Ethernet().luid;
  std::wstring error = L"as before";
};

// BuildRouteRow

TEST_F(Routes, ARowHoldsEveryFieldOfTheRoute) {
  MIB_IPFORWARD_ROW2 row;
  std::memset(&row, 0x5A, sizeof row);
  ASSERT_TRUE(
      Succeeds(vpn::BuildRouteRow(kEthernet, L"203.0.113.10", 32, L"192.168.1.1", 1, row), error));
  EXPECT_EQ(row.InterfaceLuid.Value, ethernet);
  EXPECT_EQ(row.InterfaceIndex, 12u);
  EXPECT_EQ(row.DestinationPrefix.Prefix.si_family, 2);
  EXPECT_EQ(ntohl(row.DestinationPrefix.Prefix.Ipv4.sin_addr.s_addr), 0xCB00710Au);
  EXPECT_EQ(row.DestinationPrefix.PrefixLength, 32);
  EXPECT_EQ(row.NextHop.si_family, 2);
  EXPECT_EQ(ntohl(row.NextHop.Ipv4.sin_addr.s_addr), 0xC0A80101u);
  EXPECT_EQ(row.ValidLifetime, 0xFFFFFFFFu);
  EXPECT_EQ(row.PreferredLifetime, 0xFFFFFFFFu);
  EXPECT_EQ(row.Metric, 1u);
  EXPECT_EQ(static_cast<int>(row.Protocol), 3);
  EXPECT_EQ(error, L"as before");
}

TEST_F(Routes, ARowStartsFromThePlatformsOwnDefaults) {
  MIB_IPFORWARD_ROW2 row;
  std::memset(&row, 0x5A, sizeof row);
  ASSERT_TRUE(
      Succeeds(vpn::BuildRouteRow(kEthernet, L"10.0.0.0", 8, L"192.168.1.1", 7, row), error));
  EXPECT_EQ(row.SitePrefixLength, 255) << "only the platform's initialization sets it so";
  EXPECT_EQ(row.Loopback, 1);
  EXPECT_EQ(row.AutoconfigureAddress, 1);
  EXPECT_EQ(row.Publish, 1);
  EXPECT_EQ(row.Immortal, 1);
  EXPECT_EQ(row.Age, 0u);
}

TEST_F(Routes, ARowIsBuiltInAFixedOrderOfCalls) {
  MIB_IPFORWARD_ROW2 row = {};
  ASSERT_TRUE(
      Succeeds(vpn::BuildRouteRow(kEthernet, L"203.0.113.10", 32, L"192.168.1.1", 1, row), error));
  EXPECT_EQ(machine.calls.Names(),
            (Texts{"InitializeIpForwardEntry", "ConvertInterfaceAliasToLuid", "InetPtonW",
                   "InetPtonW", "ConvertInterfaceLuidToIndex"}));
  EXPECT_EQ(machine.calls.TextsOf("InetPtonW"), (Texts{"\"203.0.113.10\"", "\"192.168.1.1\""}));
}

TEST_F(Routes, AnUnknownInterfaceIsNamedBeforeTheAddressesAreLookedAt) {
  MIB_IPFORWARD_ROW2 row = {};
  EXPECT_FALSE(
      Succeeds(vpn::BuildRouteRow(L"tavrin", L"no address", 32, L"neither", 1, row), error));
  EXPECT_EQ(error, L"unknown interface tavrin");
  EXPECT_EQ(machine.calls.Count("InetPtonW"), 0u);
}

TEST_F(Routes, ATextThatIsNoIpv4AddressFailsWithBothOperandsShown) {
  struct Case {
    const wchar_t* destination;
    const wchar_t* nextHop;
    const wchar_t* text;
  };
  const Case cases[] = {
      {L"203.0.113.10", L"gateway", L"invalid IPv4 route 203.0.113.10 via gateway"},
      {L"203.0.113.10", L"", L"invalid IPv4 route 203.0.113.10 via "},
      {L"node.example", L"192.168.1.1", L"invalid IPv4 route node.example via 192.168.1.1"},
      {L"", L"192.168.1.1", L"invalid IPv4 route  via 192.168.1.1"},
      {L"...", L"192.168.1.1", L"invalid IPv4 route ... via 192.168.1.1"},
      {L"256.0.0.1", L"192.168.1.1", L"invalid IPv4 route 256.0.0.1 via 192.168.1.1"},
      {L"10.0.0.1", L"2001:db8::1", L"invalid IPv4 route 10.0.0.1 via 2001:db8::1"},
      {L"bad", L"worse", L"invalid IPv4 route bad via worse"},
  };
  for (const Case& one : cases) {
    SCOPED_TRACE(testing::PrintToString(std::wstring(one.text)));
    MIB_IPFORWARD_ROW2 row = {};
    error = L"as before";
    EXPECT_FALSE(
        Succeeds(vpn::BuildRouteRow(kEthernet, one.destination, 32, one.nextHop, 1, row), error));
    EXPECT_EQ(error, one.text);
    EXPECT_FALSE(Succeeds(vpn::AddRoute(kEthernet, one.destination, 32, one.nextHop, 1), error));
    EXPECT_EQ(error, one.text);
    EXPECT_FALSE(vpn::DeleteRoute(kEthernet, one.destination, 32, one.nextHop));
  }
  EXPECT_EQ(machine.calls.Count("CreateIpForwardEntry2"), 0u);
  EXPECT_EQ(machine.calls.Count("DeleteIpForwardEntry2"), 0u);
}

TEST_F(Routes, AnAddressReaderThatFailsCountsAsNoAddress) {
  MIB_IPFORWARD_ROW2 row = {};
  machine.faults.Fail("InetPtonW", {.nth = 2});
  EXPECT_FALSE(
      Succeeds(vpn::BuildRouteRow(kEthernet, L"10.0.0.1", 32, L"192.168.1.1", 1, row), error));
  EXPECT_EQ(error, L"invalid IPv4 route 10.0.0.1 via 192.168.1.1");
}

TEST_F(Routes, AnUnknownIndexIsNoObstacle) {
  MIB_IPFORWARD_ROW2 row = {};
  machine.faults.Fail("ConvertInterfaceLuidToIndex");
  EXPECT_TRUE(
      Succeeds(vpn::BuildRouteRow(kEthernet, L"10.0.0.1", 32, L"192.168.1.1", 1, row), error));
  EXPECT_EQ(row.InterfaceIndex, 0u);
  EXPECT_EQ(row.InterfaceLuid.Value, ethernet);
}

// AddRoute

TEST_F(Routes, AddingARoutePutsItIntoTheTable) {
  EXPECT_TRUE(Succeeds(vpn::AddRoute(kEthernet, L"203.0.113.10", 32, L"192.168.1.1", 1), error));
  EXPECT_EQ(error, L"as before");
  EXPECT_EQ(RoutesOf(ethernet), With("203.0.113.10/32 via 192.168.1.1 metric 1"));
  const netmodel::Route& made = machine.network.routes.back();
  EXPECT_EQ(made.protocol, 3u);
  EXPECT_EQ(made.validLifetime, 0xFFFFFFFFu);
  EXPECT_EQ(made.preferredLifetime, 0xFFFFFFFFu);
}

TEST_F(Routes, AddingARouteThatStandsIsASuccessWithNoErrorAndChangesNothing) {
  ASSERT_TRUE(Succeeds(vpn::AddRoute(kEthernet, L"203.0.113.10", 32, L"192.168.1.1", 9), error));
  EXPECT_TRUE(Succeeds(vpn::AddRoute(kEthernet, L"203.0.113.10", 32, L"192.168.1.1", 1), error));
  EXPECT_EQ(error, L"as before");
  EXPECT_EQ(RoutesOf(ethernet), With("203.0.113.10/32 via 192.168.1.1 metric 9"));
}

TEST_F(Routes, ARefusedRouteGivesTheCodeAsAnUnsignedDecimal) {
  struct Case {
    std::uint32_t code;
    const wchar_t* text;
  };
  const Case cases[] = {
      {5, L"CreateIpForwardEntry2 failed 5 for 203.0.113.10"},
      {183, L"CreateIpForwardEntry2 failed 183 for 203.0.113.10"},
      {5009, L"CreateIpForwardEntry2 failed 5009 for 203.0.113.10"},
      {5011, L"CreateIpForwardEntry2 failed 5011 for 203.0.113.10"},
      {0xFFFFFFFF, L"CreateIpForwardEntry2 failed 4294967295 for 203.0.113.10"},
  };
  for (const Case& one : cases) {
    SCOPED_TRACE(one.code);
    machine.faults.Fail("CreateIpForwardEntry2", {.code = one.code});
    EXPECT_FALSE(Succeeds(vpn::AddRoute(kEthernet, L"203.0.113.10", 32, L"192.168.1.1", 1), error));
    EXPECT_EQ(error, one.text);
  }
  EXPECT_EQ(machine.calls.Count("CreateIpForwardEntry2"), 5u) << "nothing is tried twice";
  EXPECT_EQ(RoutesOf(ethernet), kEthernetRoutes);
}

TEST_F(Routes, TheCodeForAnObjectThatExistsCountsAsSuccess) {
  machine.faults.Fail("CreateIpForwardEntry2", {.code = 5010});
  EXPECT_TRUE(Succeeds(vpn::AddRoute(kEthernet, L"203.0.113.10", 32, L"192.168.1.1", 1), error));
  EXPECT_EQ(error, L"as before");
}

TEST_F(Routes, AddingOnAnUnknownInterfaceAsksThePlatformForNothing) {
  EXPECT_FALSE(Succeeds(vpn::AddRoute(L"tavrin", L"0.0.0.0", 1, L"192.168.123.1", 5), error));
  EXPECT_EQ(error, L"unknown interface tavrin");
  EXPECT_EQ(machine.calls.Count("CreateIpForwardEntry2"), 0u);
}

// DeleteRoute

TEST_F(Routes, ADeletionTakesExactlyTheRouteWithThisKey) {
  const std::uint64_t other = AddAdapter("WLAN").luid;
  machine.network.routes.push_back({ethernet, 0xCB00710A, 32, kGateway, 77});
  machine.network.routes.push_back({ethernet, 0xCB00710A, 32, 0xC0A801FE, 1});
  machine.network.routes.push_back({ethernet, 0xCB00710A, 31, kGateway, 1});
  machine.network.routes.push_back({ethernet, 0xCB00710B, 32, kGateway, 1});
  machine.network.routes.push_back({other, 0xCB00710A, 32, kGateway, 1});
  EXPECT_TRUE(vpn::DeleteRoute(kEthernet, L"203.0.113.10", 32, L"192.168.1.1"))
      << "whatever its metric is";
  Texts left = With("203.0.113.10/32 via 192.168.1.254 metric 1");
  left.push_back("203.0.113.10/31 via 192.168.1.1 metric 1");
  left.push_back("203.0.113.11/32 via 192.168.1.1 metric 1");
  EXPECT_EQ(RoutesOf(ethernet), left);
  EXPECT_EQ(RoutesOf(other), Texts{"203.0.113.10/32 via 192.168.1.1 metric 1"});
}

TEST_F(Routes, DeletingARouteThatIsNotThereIsFalseAndDisturbsNothing) {
  const netmodel::Network before = machine.network;
  EXPECT_FALSE(vpn::DeleteRoute(kEthernet, L"203.0.113.10", 32, L"192.168.1.1"));
  EXPECT_TRUE(machine.network == before);
  EXPECT_EQ(machine.calls.Count("DeleteIpForwardEntry2"), 1u);
}

TEST_F(Routes, DeletingOnAnUnknownInterfaceIsFalse) {
  EXPECT_FALSE(vpn::DeleteRoute(L"tavrin", L"0.0.0.0", 1, L"192.168.123.1"));
  EXPECT_EQ(machine.calls.Count("DeleteIpForwardEntry2"), 0u);
}

TEST_F(Routes, AnyOtherResultOfADeletionIsFalse) {
  for (const std::uint32_t code : {5u, 87u, 5010u}) {
    machine.faults.Fail("DeleteIpForwardEntry2", {.code = code});
    EXPECT_FALSE(vpn::DeleteRoute(kEthernet, L"0.0.0.0", 0, L"192.168.1.1")) << code;
  }
  EXPECT_EQ(RoutesOf(ethernet), kEthernetRoutes);
}

// RouteExists

TEST_F(Routes, ARouteIsFoundByInterfacePrefixAndLength) {
  EXPECT_TRUE(vpn::RouteExists(kEthernet, L"192.168.1.0", 24));
  EXPECT_TRUE(vpn::RouteExists(kEthernet, L"192.168.1.20", 32)) << "the last row of the table";
  EXPECT_TRUE(vpn::RouteExists(kEthernet, L"0.0.0.0", 0)) << "the first row of the table";
  EXPECT_FALSE(vpn::RouteExists(kEthernet, L"0.0.0.0", 1)) << "another length";
  EXPECT_FALSE(vpn::RouteExists(kEthernet, L"192.168.1.0", 23)) << "a shorter one";
  EXPECT_FALSE(vpn::RouteExists(kEthernet, L"192.168.1.0", 25)) << "a longer one";
  EXPECT_FALSE(vpn::RouteExists(kEthernet, L"128.0.0.0", 0)) << "another destination";
  EXPECT_FALSE(vpn::RouteExists(kEthernet, L"127.0.0.0", 8)) << "another interface";
  EXPECT_TRUE(vpn::RouteExists(L"Loopback Pseudo-Interface 1", L"127.0.0.0", 8));
}

TEST_F(Routes, ARouteWithAnotherNextHopAndMetricExistsAllTheSame) {
  machine.network.routes.push_back({ethernet, 0, 1, 0x0A090807, 4000});
  EXPECT_TRUE(vpn::RouteExists(kEthernet, L"0.0.0.0", 1));
}

TEST_F(Routes, ForAnUnknownAliasTheTableIsNotRead) {
  EXPECT_FALSE(vpn::RouteExists(L"tavrin", L"0.0.0.0", 0));
  EXPECT_EQ(machine.calls.Names(), Texts{"ConvertInterfaceAliasToLuid"});
}

TEST_F(Routes, ForATextThatIsNoAddressTheTableIsNotRead) {
  EXPECT_FALSE(vpn::RouteExists(kEthernet, L"0.0.0", 0));
  EXPECT_EQ(machine.calls.Count("GetIpForwardTable2"), 0u);
}

TEST_F(Routes, AnUnreadableANullAndAnEmptyTableHoldNoRoute) {
  machine.faults.Fail("GetIpForwardTable2");
  EXPECT_FALSE(vpn::RouteExists(kEthernet, L"0.0.0.0", 0));
  machine.ipHelper.nullTables = true;
  EXPECT_FALSE(vpn::RouteExists(kEthernet, L"0.0.0.0", 0));
  machine.ipHelper.nullTables = false;
  AllowNetworkChanges();
  machine.network.routes.clear();
  EXPECT_FALSE(vpn::RouteExists(kEthernet, L"0.0.0.0", 0));
  EXPECT_EQ(machine.calls.TextsOf("GetIpForwardTable2"), (Texts{"2", "2", "2"}))
      << "IPv4 alone is asked for";
}

}  // namespace
}  // namespace unit
