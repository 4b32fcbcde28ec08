#include "src/net/physical_route.h"

#include <algorithm>

#include "tests/unit/net/net_fixture.h"
#include "tests/unit/status.h"

namespace unit {
namespace {

class PhysicalRoutes : public NetTest {
 protected:
  PhysicalRoutes() { AllowNetworkChanges(); }

  // A default route over a new adapter of this name.
  std::uint64_t AddDefault(const std::string& name, std::uint32_t metric,
                           std::uint32_t nextHop = 0x0A000001) {
    const std::uint64_t luid = AddAdapter(name).luid;
    machine.network.routes.push_back({luid, 0, 0, nextHop, metric});
    return luid;
  }
  void RemoveEthernetDefault() { machine.network.routes.erase(machine.network.routes.begin()); }

  bool Find() { return Succeeds(vpn::FindPhysicalRoute(route), error); }

  vpn::PhysicalRoute route;
  std::wstring error = L"as before";
};

TEST_F(PhysicalRoutes, TheTypicalMachinesRouteIsFoundWithAliasGatewayAndIndex) {
  ASSERT_TRUE(Find());
  EXPECT_EQ(route.interfaceAlias, L"以太网");
  EXPECT_EQ(route.gateway, L"192.168.1.1");
  EXPECT_EQ(route.interfaceIndex, 12u);
  EXPECT_EQ(error, L"as before");
  EXPECT_EQ(machine.calls.TextsOf("GetIpForwardTable2"), Texts{"2"}) << "IPv4 alone";
}

TEST_F(PhysicalRoutes, TheLowerMetricWinsWhereverItStandsInTheTable) {
  AddDefault("WLAN", 35, 0x0A000001);
  for (const bool reversed : {false, true}) {
    SCOPED_TRACE(reversed);
    if (reversed) {
      std::reverse(machine.network.routes.begin(), machine.network.routes.end());
    }
    ASSERT_TRUE(Find());
    EXPECT_EQ(route.interfaceAlias, L"以太网");
    EXPECT_EQ(route.gateway, L"192.168.1.1");
  }
}

TEST_F(PhysicalRoutes, OfThreeTheLowestWinsAndNotTheLast) {
  AddDefault("WLAN", 5);
  AddDefault("USB", 15);
  ASSERT_TRUE(Find());
  EXPECT_EQ(route.interfaceAlias, L"WLAN");
  EXPECT_EQ(route.gateway, L"10.0.0.1");
}

TEST_F(PhysicalRoutes, OnlyWhatCanDecideIsAskedOfThePlatform) {
  AddDefault("second", 35);
  AddDefault("third", 5);
  AddDefault("fourth", 5);
  ASSERT_TRUE(Find());
  EXPECT_EQ(route.interfaceAlias, L"third");
  EXPECT_EQ(machine.calls.TextsOf("ConvertInterfaceLuidToAlias"),
            (Texts{"\"以太网\"", "\"third\""}));
  EXPECT_EQ(machine.calls.TextsOf("ConvertInterfaceLuidToIndex"), Texts{"\"third\""});
  EXPECT_EQ(machine.calls.Count("InetNtopW"), 1u);
}

TEST_F(PhysicalRoutes, OfEqualMetricsTheFirstInTableOrderWins) {
  AddDefault("WLAN", 25);
  ASSERT_TRUE(Find());
  EXPECT_EQ(route.interfaceAlias, L"以太网");
  std::reverse(machine.network.routes.begin(), machine.network.routes.end());
  ASSERT_TRUE(Find());
  EXPECT_EQ(route.interfaceAlias, L"WLAN");
}

TEST_F(PhysicalRoutes, MetricsCompareWithoutASign) {
  machine.network.routes[0].metric = 0x80000000;
  AddDefault("WLAN", 0x7FFFFFFF);
  ASSERT_TRUE(Find());
  EXPECT_EQ(route.interfaceAlias, L"WLAN");
}

TEST_F(PhysicalRoutes, TheHighestMetricCanNeverBeChosenAndTheOneBelowItCan) {
  machine.network.routes[0].metric = 0xFFFFFFFF;
  EXPECT_FALSE(Find());
  EXPECT_EQ(error, L"no physical default gateway");
  machine.network.routes[0].metric = 0xFFFFFFFE;
  EXPECT_TRUE(Find());
  machine.network.routes[0].metric = 0;
  EXPECT_TRUE(Find());
}

TEST_F(PhysicalRoutes, AVirtualInterfaceIsPassedOverHoweverGoodItsMetricIs) {
  AddDefault("vEthernet (WSL)", 1);
  ASSERT_TRUE(Find());
  EXPECT_EQ(route.interfaceAlias, L"以太网");
}

TEST_F(PhysicalRoutes, AMachineWithAVirtualDefaultAloneHasNoPhysicalGateway) {
  RemoveEthernetDefault();
  AddDefault("vEthernet (Default Switch)", 25);
  route = {L"old", L"10.9.9.9", 3};
  EXPECT_FALSE(Find());
  EXPECT_EQ(error, L"no physical default gateway");
  EXPECT_EQ(route.interfaceAlias, L"old") << "the record stays as it was";
  EXPECT_EQ(route.gateway, L"10.9.9.9");
  EXPECT_EQ(route.interfaceIndex, 3u);
}

TEST_F(PhysicalRoutes, AnAliasWithXrayOrWintunInCapitalsIsPassedOver) {
  RemoveEthernetDefault();
  AddDefault("my XRAY adapter", 1);
  AddDefault("WINTUN", 1);
  EXPECT_FALSE(Find());
  EXPECT_EQ(error, L"no physical default gateway");
}

TEST_F(PhysicalRoutes, AnOnLinkDefaultNeverQualifiesWhateverItsInterfaceIsCalled) {
  machine.network.routes[0].nextHop = 0;
  AddDefault("WLAN", 1, 0);
  EXPECT_FALSE(Find());
  EXPECT_EQ(error, L"no physical default gateway");
  EXPECT_EQ(machine.calls.Count("ConvertInterfaceLuidToAlias"), 0u);
}

TEST_F(PhysicalRoutes, ARouteThatIsNoDefaultNeverQualifies) {
  RemoveEthernetDefault();
  const std::uint64_t ethernet = Ethernet().luid;
  machine.network.routes.push_back({ethernet, 0, 1, kGateway, 1});
  machine.network.routes.push_back({ethernet, 0x80000000, 1, kGateway, 1});
  machine.network.routes.push_back({ethernet, 0, 32, kGateway, 1});
  EXPECT_FALSE(Find());
  EXPECT_EQ(error, L"no physical default gateway");
}

TEST_F(PhysicalRoutes, AnInterfaceWithoutANameCostsOnlyItsRow) {
  const std::uint64_t nameless = AddDefault("WLAN", 1);
  machine.ipHelper.withoutAlias.insert(nameless);
  ASSERT_TRUE(Find());
  EXPECT_EQ(route.interfaceAlias, L"以太网");
  machine.ipHelper.withoutAlias.insert(Ethernet().luid);
  EXPECT_FALSE(Find());
  EXPECT_EQ(error, L"no physical default gateway");
}

TEST_F(PhysicalRoutes, AnIndexThatThePlatformDoesNotTellIsZero) {
  machine.faults.Fail("ConvertInterfaceLuidToIndex");
  route.interfaceIndex = 77;
  ASSERT_TRUE(Find());
  EXPECT_EQ(route.interfaceIndex, 0u);
  EXPECT_EQ(route.interfaceAlias, L"以太网");
}

TEST_F(PhysicalRoutes, NeitherDescriptionNorTypeNorStateIsLookedAt) {
  Ethernet().description = "VMware Virtual Ethernet Adapter";
  Ethernet().operStatus = netmodel::kOperStatusDown;
  Ethernet().ifType = 53;
  ASSERT_TRUE(Find());
  EXPECT_EQ(route.interfaceAlias, L"以太网");
  EXPECT_EQ(machine.calls.Count("GetAdaptersAddresses"), 0u);
}

TEST_F(PhysicalRoutes, TheLongestAliasOfThePlatformFits) {
  RemoveEthernetDefault();
  AddDefault(std::string(256, 'n'), 25);
  ASSERT_TRUE(Find());
  EXPECT_EQ(route.interfaceAlias, std::wstring(256, L'n'));
}

TEST_F(PhysicalRoutes, AnUnreadableOrNullTableFailsWithItsText) {
  route.interfaceAlias = L"old";
  machine.faults.Fail("GetIpForwardTable2");
  EXPECT_FALSE(Find());
  EXPECT_EQ(error, L"GetIpForwardTable2 failed");
  error.clear();
  machine.ipHelper.nullTables = true;
  EXPECT_FALSE(Find());
  EXPECT_EQ(error, L"GetIpForwardTable2 failed");
  EXPECT_EQ(route.interfaceAlias, L"old");
}

TEST_F(PhysicalRoutes, AnEmptyTableHasNoGateway) {
  machine.network.routes.clear();
  EXPECT_FALSE(Find());
  EXPECT_EQ(error, L"no physical default gateway");
}

TEST_F(PhysicalRoutes, AGatewayThatThePlatformCantWriteIsEmpty) {
  machine.faults.Fail("InetNtopW");
  ASSERT_TRUE(Find());
  EXPECT_EQ(route.gateway, L"");
}

}  // namespace
}  // namespace unit
