#include "tests/netmodel/network_model.h"

#include <gtest/gtest.h>

#include "tests/netmodel/network_json.h"

namespace netmodel {
namespace {

constexpr char kEthernet[] = "以太网";

TEST(NetworkModel, RouteWithTheSameKeyIsRefusedAndItsMetricKept) {
  Network network = TypicalNetwork();
  const std::uint64_t luid = network.FindByAlias(kEthernet)->luid;
  EXPECT_EQ(network.CreateRoute({luid, 0xCB007109, 32, 0xC0A80101, 1}), 0U);
  EXPECT_EQ(network.CreateRoute({luid, 0xCB007109, 32, 0xC0A80101, 9}), 5010U);
  EXPECT_EQ(network.routes.back().metric, 1U);
  EXPECT_EQ(network.CreateRoute({luid, 0xCB007109, 32, 0xC0A80102, 9}), 0U);
  EXPECT_EQ(network.CreateRoute({luid + 1, 0xCB007109, 32, 0xC0A80101, 1}), 1168U);
}

TEST(NetworkModel, RouteIsDeletedByItsKeyAlone) {
  Network network = TypicalNetwork();
  const Network before = network;
  const std::uint64_t luid = network.FindByAlias(kEthernet)->luid;
  EXPECT_EQ(network.CreateRoute({luid, 0xCB007109, 32, 0xC0A80101, 1}), 0U);
  EXPECT_EQ(network.DeleteRoute({luid, 0xCB007109, 32, 0xC0A80102}), 1168U);
  EXPECT_EQ(network.DeleteRoute({luid, 0xCB007109, 32, 0xC0A80101, 77}), 0U);
  EXPECT_EQ(network, before);
  EXPECT_EQ(network.DeleteRoute({luid, 0xCB007109, 32, 0xC0A80101}), 1168U);
}

TEST(NetworkModel, AdapterTakesItsRoutesAway) {
  Network network = TypicalNetwork();
  const Network before = network;
  const std::uint64_t luid = network.AddAdapter({.friendlyName = "tavrin", .ifType = 53}).luid;
  EXPECT_EQ(luid, (53ULL << 48) | (40ULL << 24));
  EXPECT_EQ(network.CreateRoute({luid, 0, 1, 0xC0A87B01, 5}), 0U);
  EXPECT_EQ(network.CreateAddress(luid, {0xC0A87B01, 24}), 0U);
  EXPECT_EQ(network.CreateAddress(luid, {0xC0A87B01, 24}), 5010U);
  EXPECT_EQ(network.DeleteAddress(luid, 0xC0A87B01), 0U);
  EXPECT_EQ(network.DeleteAddress(luid, 0xC0A87B01), 1168U);
  network.ipv6Routes.push_back({luid, "::/1"});
  network.RemoveAdapter(luid);
  network.RemoveAdapter(luid);
  EXPECT_EQ(network.nextIndex, 41U) << "an index is not given twice";
  network.nextIndex = before.nextIndex;
  EXPECT_EQ(network, before);
}

TEST(NetworkModel, NameServersAreSetAndCleared) {
  Network network = TypicalNetwork();
  Adapter* adapter = network.FindByAlias(kEthernet);
  EXPECT_EQ(network.SetDnsServers(adapter->guid, "1.1.1.1,8.8.8.8 9.9.9.9"), 0U);
  EXPECT_EQ(adapter->dnsServers, (std::vector<std::string>{"1.1.1.1", "8.8.8.8", "9.9.9.9"}));
  EXPECT_FALSE(adapter->dnsFromDhcp);
  EXPECT_EQ(network.SetDnsServers(adapter->guid, ""), 0U);
  EXPECT_EQ(network, TypicalNetwork());
  EXPECT_EQ(network.SetDnsServers({}, "1.1.1.1"), 2U);
}

TEST(NetworkModel, NetshTakesRouterDiscoveryAndItsRouteOffAndOn) {
  Network network = TypicalNetwork();
  EXPECT_EQ(network.RunNetsh("netsh interface ipv6 set interface \"以太网\" "
                             "routerdiscovery=disabled store=active"),
            0U);
  EXPECT_EQ(network.RunNetsh("netsh interface ipv6 delete route ::/0 interface=\"以太网\""), 0U);
  EXPECT_EQ(network.RunNetsh("netsh interface ipv6 delete route ::/0 interface=\"以太网\""), 1U);
  EXPECT_FALSE(network.FindByAlias(kEthernet)->ipv6RouterDiscovery);
  EXPECT_TRUE(network.ipv6Routes.empty());
  EXPECT_EQ(network.RunNetsh("netsh interface ipv6 set interface \"以太网\" "
                             "routerdiscovery=enabled store=active"),
            0U);
  EXPECT_EQ(network, TypicalNetwork());
}

TEST(NetworkModel, NetshSwitchesIpv6OffAndGivesNameServersBackToDhcp) {
  Network network = TypicalNetwork();
  EXPECT_EQ(network.RunNetsh("netsh interface ipv6 set interface \"以太网\" "
                             "admin=disabled store=active"),
            0U);
  EXPECT_FALSE(network.FindByAlias(kEthernet)->ipv6Enabled);
  EXPECT_TRUE(network.FindByAlias(kEthernet)->ipv6RouterDiscovery);
  network = TypicalNetwork();
  network.SetDnsServers(network.FindByAlias(kEthernet)->guid, "1.1.1.1");
  EXPECT_EQ(network.RunNetsh("netsh interface ipv4 set dnsservers name=\"以太网\" source=dhcp"),
            0U);
  EXPECT_EQ(network, TypicalNetwork());
}

TEST(NetworkModel, NetshRefusesWhatItDoesNotKnow) {
  Network network = TypicalNetwork();
  EXPECT_EQ(network.RunNetsh("netsh interface ipv6 delete route ::/0 interface=\"none\""), 1U);
  EXPECT_EQ(network.RunNetsh("netsh interface ipv6 delete route ::/0 interface=以太网"), 1U);
  EXPECT_EQ(network.RunNetsh("netsh interface ipv4 set dnsservers name=\"x\" source=dhcp"), 1U);
  EXPECT_EQ(network.RunNetsh("netsh winsock reset"), 1U);
  EXPECT_EQ(network, TypicalNetwork());
}

TEST(NetworkModel, AddressesAreFourPlainDecimalGroups) {
  std::uint32_t address = 7;
  EXPECT_TRUE(ParseIpv4("203.0.113.9", &address));
  EXPECT_EQ(address, 0xCB007109U);
  EXPECT_EQ(FormatIpv4(address), "203.0.113.9");
  for (const char* text : {"", "1.2.3", "1.2.3.4.5", "1.2.3.256", "1..3.4", "1.2.3.4 ", " 1.2.3.4",
                           "01.2.3.4", "+1.2.3.4", "...", "1.2.3.4.", "0x1.2.3.4"}) {
    EXPECT_FALSE(ParseIpv4(text, &address)) << text;
  }
  EXPECT_EQ(address, 0xCB007109U);
}

TEST(NetworkJson, EveryFieldSurvivesTheRoundTrip) {
  Network network = TypicalNetwork();
  network.AddAdapter({.friendlyName = "tavrin",
                      .description = "tun2socks Tunnel",
                      .operStatus = kOperStatusDown,
                      .ifType = 53,
                      .mtu = 65535,
                      .addresses = {{0xC0A87B01, 24}, {0x0A000001, 8}},
                      .dnsServers = {"1.1.1.1", "2001:db8::1"},
                      .dnsFromDhcp = false,
                      .dhcpDnsServers = {"10.0.0.53"},
                      .dadTransmits = 0,
                      .ipv6RouterDiscovery = false,
                      .advertisedIpv6Prefixes = {"2001:db8::/32"},
                      .ipv6Enabled = false});
  network.routes.push_back({network.adapters.back().luid, 0x80000000, 1, 0xC0A87B01, 5, 4, 60, 30});
  EXPECT_EQ(ParseNetwork(FormatNetwork(network)), network);
}

TEST(NetworkJson, DamagedTextThrows) {
  EXPECT_THROW((void)ParseNetwork("{"), nlohmann::json::exception);
  EXPECT_THROW((void)ParseNetwork(R"({"routes":[{"destination":"x","nextHop":"1.1.1.1"}]})"),
               nlohmann::json::exception);
}

}  // namespace
}  // namespace netmodel
