// The pins of the panel's hosts, as a start makes them.
#include <algorithm>

#include "tests/unit/tunnel/tunnel_fixture.h"

namespace unit {
namespace {

class PanelPins : public TunnelTest {
 protected:
  PanelPins() { config.panelHosts.clear(); }

  // Route calls up to the creation of the job.
  Texts StartAndGetPinning() {
    EXPECT_TRUE(Start());
    Texts calls = machine.calls.Sequence(
        {"CreateIpForwardEntry2", "DeleteIpForwardEntry2", "CreateJobObjectW"});
    calls.erase(std::find(calls.begin(), calls.end(), "CreateJobObjectW null"), calls.end());
    return calls;
  }
};

TEST_F(PanelPins, EachAddressMakesRoomAndIsThenPinnedWithMetricOne) {
  machine.names.Set("a.example", {"198.51.100.2", "198.51.100.1"});
  config.panelHosts = {L"a.example"};
  EXPECT_EQ(StartAndGetPinning(),
            (Texts{"DeleteIpForwardEntry2 \"以太网\" 198.51.100.1/32 via 192.168.1.1",
                   "CreateIpForwardEntry2 \"以太网\" 198.51.100.1/32 via 192.168.1.1 metric 1",
                   "DeleteIpForwardEntry2 \"以太网\" 198.51.100.2/32 via 192.168.1.1",
                   "CreateIpForwardEntry2 \"以太网\" 198.51.100.2/32 via 192.168.1.1 metric 1"}));
}

TEST_F(PanelPins, ALiteralIsPinnedWithoutALookUp) {
  config.panelHosts = {L"198.51.100.5"};
  EXPECT_EQ(StartAndGetPinning().size(), 2u);
  EXPECT_EQ(Pins(), (Texts{"198.51.100.5", "198.51.100.30"}));
  EXPECT_EQ(machine.calls.Count("GetAddrInfoW"), 0u);
}

TEST_F(PanelPins, TwoHostsThatShareAnAddressYieldOneRoute) {
  machine.names.Set("a.example", {"198.51.100.1", "198.51.100.2"});
  machine.names.Set("b.example", {"198.51.100.2", "198.51.100.3"});
  config.panelHosts = {L"a.example", L"b.example", L"198.51.100.3"};
  EXPECT_EQ(StartAndGetPinning().size(), 6u);
  EXPECT_EQ(Pins(), (Texts{"198.51.100.1", "198.51.100.2", "198.51.100.3", "198.51.100.30"}));
  EXPECT_EQ(machine.names.Asked(), (Texts{"a.example", "b.example"}));
}

TEST_F(PanelPins, AHostWithIpv6AloneYieldsNothing) {
  machine.names.Set("six.example", sim::HostEntry{.ipv4 = {}, .hasIpv6 = true});
  config.panelHosts = {L"six.example"};
  EXPECT_EQ(StartAndGetPinning(), Texts());
}

TEST_F(PanelPins, AnEmptyListDoesNotTouchTheTable) {
  EXPECT_EQ(StartAndGetPinning(), Texts());
  EXPECT_EQ(machine.calls.Count("GetAddrInfoW"), 0u);
  EXPECT_EQ(Labels(), kFirstStartLabels) << "it has its mark all the same";
}

TEST_F(PanelPins, WithoutAGatewayNothingIsPinned) {
  config.panelHosts = {L"198.51.100.5"};
  machine.faults.Fail("InetNtopW");
  EXPECT_FALSE(Start());
  EXPECT_EQ(machine.calls.TextsOf("InetPtonW"),
            (Texts{"\"127.0.0.1\"", "\"127.0.0.1\"", "\"192.168.123.1\"", "\"198.51.100.30\"",
                   "\"\"", "\"198.51.100.30\"", "\"\""}))
      << "no route is even prepared for the panel";
}

TEST_F(PanelPins, OnAnInterfaceWithoutANameNothingIsPinned) {
  config.panelHosts = {L"198.51.100.5"};
  Ethernet().friendlyName.clear();
  ASSERT_TRUE(Start());
  const Texts asked = machine.calls.TextsOf("InetPtonW");
  EXPECT_EQ(std::count(asked.begin(), asked.end(), "\"198.51.100.5\""), 0)
      << "no route is even prepared for the panel";
  manager->stop();
  machine.network.FindByAlias("")->friendlyName = "以太网";
  // This machine knows the interface by its empty name, and the node's pin was made there.
  std::erase_if(machine.network.routes, [this](const netmodel::Route& route) {
    return route.luid == Ethernet().luid && route.nextHop == kGateway && route.metric == 1 &&
           netmodel::FormatIpv4(route.destination) == "198.51.100.30" && route.prefixLength == 32;
  });
}

TEST_F(PanelPins, AnOlderRouteToThatDestinationGivesWay) {
  AllowNetworkChanges();
  machine.network.routes.push_back({Ethernet().luid, 0xC6336405, 32, kGateway, 77});
  config.panelHosts = {L"198.51.100.5"};
  ASSERT_TRUE(Start());
  EXPECT_EQ(Pins(), (Texts{"198.51.100.5", "198.51.100.30"})) << "with metric 1 now";
}

TEST_F(PanelPins, WhatOnlyLooksLikeAnAddressIsTriedAndNotRecorded) {
  config.panelHosts = {L"999.1.1.1", L"198.51.100.5"};
  ASSERT_TRUE(Start());
  EXPECT_EQ(error, L"as before") << "its text is dropped";
  EXPECT_EQ(Pins(), (Texts{"198.51.100.5", "198.51.100.30"}));
}

TEST_F(PanelPins, ARefusedRouteIsNotRecordedAndTheNextIsTried) {
  config.panelHosts = {L"198.51.100.5", L"198.51.100.6", L"198.51.100.5"};
  machine.faults.Fail("CreateIpForwardEntry2", {.nth = 1});
  ASSERT_TRUE(Start());
  EXPECT_EQ(error, L"as before");
  EXPECT_EQ(Pins(), (Texts{"198.51.100.6", "198.51.100.5", "198.51.100.30"}))
      << "the second mention of the refused one had its own attempt";
}

TEST_F(PanelPins, ARefusedPinIsNotDeletedByTheStop) {
  config.panelHosts = {L"198.51.100.5"};
  machine.faults.Fail("CreateIpForwardEntry2", {.nth = 1});
  ASSERT_TRUE(Start());
  machine.calls.Clear();
  manager->stop();
  EXPECT_EQ(machine.calls.TextsOf("DeleteIpForwardEntry2"),
            Texts(2, "\"以太网\" 198.51.100.30/32 via 192.168.1.1"));
}

TEST_F(PanelPins, ANodeThatIsAPanelHostTooIsRememberedOnce) {
  config.panelHosts = {L"198.51.100.30"};
  ASSERT_TRUE(Start());
  machine.calls.Clear();
  manager->stop();
  EXPECT_EQ(machine.calls.TextsOf("DeleteIpForwardEntry2").size(), 2u)
      << "once as a pin and once as the node; the split routes went with their adapter";
}

TEST_F(PanelPins, APinThatStandsAlreadyCountsAsMade) {
  config.panelHosts = {L"198.51.100.5"};
  machine.faults.Fail("CreateIpForwardEntry2", {.nth = 1, .code = 5010});
  ASSERT_TRUE(Start());
  machine.calls.Clear();
  manager->stop();
  EXPECT_EQ(machine.calls.TextsOf("DeleteIpForwardEntry2").at(0),
            "\"以太网\" 198.51.100.5/32 via 192.168.1.1");
}

TEST_F(PanelPins, HostsAreResolvedOneAfterTheOtherBeforeAnyIsPinned) {
  machine.names.Set("slow.example", sim::HostEntry{.ipv4 = {"198.51.100.7"}, .takes = 8000});
  machine.names.Set("a.example", sim::HostEntry{.ipv4 = {"198.51.100.8"}, .takes = 3000});
  config.panelHosts = {L"slow.example", L"a.example"};
  const std::uint64_t before = machine.clock.Now();
  ASSERT_TRUE(Start());
  EXPECT_EQ(machine.clock.Now() - before, 11000u + 1710u);
  const Texts order = machine.calls.Names();
  const auto firstRoute = std::find(order.begin(), order.end(), "CreateIpForwardEntry2");
  EXPECT_EQ(std::count(order.begin(), firstRoute, "GetAddrInfoW"), 2);
  EXPECT_EQ(Pins(), (Texts{"198.51.100.7", "198.51.100.8", "198.51.100.30"}));
}

}  // namespace
}  // namespace unit
