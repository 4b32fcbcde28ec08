#include "src/net/host_resolve.h"

#include "src/net/ip_helper.h"

#include "tests/unit/net/net_fixture.h"

namespace unit {
namespace {

class HostResolve : public NetTest {};

TEST_F(HostResolve, AnEmptyHostHasNoAddressAndAsksNobody) {
  EXPECT_EQ(vpn::ResolveHostIpv4(L""), WideTexts());
  EXPECT_EQ(machine.calls.Names(), Texts());
}

TEST_F(HostResolve, ALiteralIsHandedBackWithoutALookUp) {
  EXPECT_EQ(vpn::ResolveHostIpv4(L"198.51.100.7"), WideTexts{L"198.51.100.7"});
  EXPECT_EQ(vpn::ResolveHostIpv4(L"999.1.2.3"), WideTexts{L"999.1.2.3"}) << "by its shape alone";
  EXPECT_EQ(vpn::ResolveHostIpv4(L"..."), WideTexts{L"..."});
  EXPECT_EQ(machine.calls.Names(), Texts());
}

TEST_F(HostResolve, AddressesComeSortedAsTextAndOnce) {
  machine.names.Set("panel.example", {"9.0.0.1", "10.0.0.2", "9.0.0.1", "100.0.0.3", "10.0.0.2"});
  EXPECT_EQ(vpn::ResolveHostIpv4(L"panel.example"),
            (WideTexts{L"10.0.0.2", L"100.0.0.3", L"9.0.0.1"}));
}

TEST_F(HostResolve, ALookUpOpensWinsockAsksForTheHostAloneAndClosesAgain) {
  machine.names.Set("panel.example", std::vector<std::string>{"10.0.0.1"});
  ASSERT_EQ(vpn::ResolveHostIpv4(L"panel.example"), WideTexts{L"10.0.0.1"});
  EXPECT_EQ(machine.calls.Names(),
            (Texts{"WSAStartup", "GetAddrInfoW", "InetNtopW", "FreeAddrInfoW", "WSACleanup"}));
  EXPECT_EQ(machine.calls.TextsOf("WSAStartup"), Texts{"0x202"});
  EXPECT_EQ(machine.calls.TextsOf("GetAddrInfoW"),
            Texts{"\"panel.example\", null, family 2, type 1"});
}

TEST_F(HostResolve, AHostWithIpv6AddressesAloneHasNone) {
  machine.names.Set("six.example", sim::HostEntry{.ipv4 = {}, .hasIpv6 = true});
  EXPECT_EQ(vpn::ResolveHostIpv4(L"six.example"), WideTexts());
  EXPECT_EQ(machine.names.Asked(), Texts{"six.example"});
}

TEST_F(HostResolve, AHostThatDoesNotResolveHasNoAddress) {
  EXPECT_EQ(vpn::ResolveHostIpv4(L"nowhere.example"), WideTexts());
  EXPECT_EQ(machine.calls.Names(), (Texts{"WSAStartup", "GetAddrInfoW", "WSACleanup"}))
      << "there is nothing to free";
}

TEST_F(HostResolve, WhereWinsockDoesNotStartTheLookUpIsTriedAllTheSameAndNothingClosed) {
  machine.names.Set("panel.example", std::vector<std::string>{"10.0.0.1"});
  machine.faults.Fail("WSAStartup");
  EXPECT_EQ(vpn::ResolveHostIpv4(L"panel.example"), WideTexts());
  EXPECT_EQ(machine.calls.Names(), (Texts{"WSAStartup", "GetAddrInfoW"}));
}

TEST_F(HostResolve, WhereWinsockIsOpenAlreadyAFailedStartDoesNotMatter) {
  machine.names.Set("panel.example", std::vector<std::string>{"10.0.0.1"});
  const vpn::WinsockScope open;
  ASSERT_TRUE(open.isOpen());
  machine.faults.Fail("WSAStartup");
  EXPECT_EQ(vpn::ResolveHostIpv4(L"panel.example"), WideTexts{L"10.0.0.1"});
  EXPECT_EQ(machine.calls.Count("WSACleanup"), 0u);
}

TEST_F(HostResolve, AnAddressThatThePlatformCantWriteIsLeftOut) {
  machine.names.Set("panel.example", {"10.0.0.1", "10.0.0.2", "10.0.0.3"});
  machine.faults.Fail("InetNtopW", {.nth = 2});
  EXPECT_EQ(vpn::ResolveHostIpv4(L"panel.example"), (WideTexts{L"10.0.0.1", L"10.0.0.3"}));
}

TEST_F(HostResolve, ALookUpThatSucceedsWithoutAListHasNoAddress) {
  machine.names.Set("panel.example", sim::HostEntry{.ipv4 = {"10.0.0.1"}, .noList = true});
  EXPECT_EQ(vpn::ResolveHostIpv4(L"panel.example"), WideTexts());
  EXPECT_EQ(machine.calls.Names(), (Texts{"WSAStartup", "GetAddrInfoW", "WSACleanup"}));
}

TEST_F(HostResolve, EntriesOfAnotherFamilyAndWithoutAnAddressAreLeftOut) {
  machine.names.Set("panel.example",
                    sim::HostEntry{.ipv4 = {"10.0.0.2", "10.0.0.1"}, .oddEntries = true});
  EXPECT_EQ(vpn::ResolveHostIpv4(L"panel.example"), (WideTexts{L"10.0.0.1", L"10.0.0.2"}));
}

TEST_F(HostResolve, ASlowResolverIsWaitedForAsLongAsItTakes) {
  machine.names.Set("slow.example", sim::HostEntry{.ipv4 = {"10.0.0.1"}, .takes = 40000});
  const std::uint64_t before = machine.clock.Now();
  EXPECT_EQ(vpn::ResolveHostIpv4(L"slow.example"), WideTexts{L"10.0.0.1"});
  EXPECT_EQ(machine.clock.Now() - before, 40000u);
}

TEST_F(HostResolve, WhatOnlyLooksLikeALiteralIsLookedUp) {
  for (const wchar_t* host : {L"1.2.3", L"1.2.3.4.5", L"1.2.3.4a", L"localhost"}) {
    (void)vpn::ResolveHostIpv4(host);
  }
  EXPECT_EQ(machine.names.Asked(), (Texts{"1.2.3", "1.2.3.4.5", "1.2.3.4a", "localhost"}));
}

}  // namespace
}  // namespace unit
