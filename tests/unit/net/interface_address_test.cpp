#include "src/net/interface_address.h"

#include "src/net/net_internal.h"
#include "tests/unit/net/net_fixture.h"
#include "tests/unit/status.h"

namespace unit {
namespace {

using netmodel::UnicastAddress;

// A tunnel's adapter "tavrin" beside the Ethernet one.
class InterfaceAddresses : public NetTest {
 protected:
  InterfaceAddresses() { AddAdapter("tavrin", "tun2socks Tunnel"); }

  netmodel::Adapter& Tun() { return *machine.network.FindByAlias("tavrin"); }
  bool Set(const wchar_t* address, std::uint8_t prefixLength = 24) {
    return Succeeds(vpn::SetInterfaceAddress(L"tavrin", address, prefixLength), error);
  }

  std::wstring error = L"as before";
};

// LookupInterfaceIds

TEST_F(InterfaceAddresses, BothIdsOfAnAliasAreFound) {
  NET_LUID luid = {};
  GUID guid = {};
  ASSERT_TRUE(Succeeds(vpn::LookupInterfaceIds(kEthernet, luid, guid), error));
  EXPECT_EQ(luid.Value, Ethernet().luid);
  EXPECT_EQ(guid.Data1, 12u);
  EXPECT_EQ(guid.Data4[7], 0x4E);
  EXPECT_EQ(error, L"as before");
}

TEST_F(InterfaceAddresses, AnAliasWithoutALuidIsUnknown) {
  NET_LUID luid = {};
  GUID guid = {};
  EXPECT_FALSE(Succeeds(vpn::LookupInterfaceIds(L"no such", luid, guid), error));
  EXPECT_EQ(error, L"unknown interface no such");
  EXPECT_EQ(machine.calls.Count("ConvertInterfaceLuidToGuid"), 0u);
}

TEST_F(InterfaceAddresses, AnAliasWithoutAGuidFailsByItsOwnText) {
  NET_LUID luid = {};
  GUID guid = {};
  machine.faults.Fail("ConvertInterfaceLuidToGuid");
  EXPECT_FALSE(Succeeds(vpn::LookupInterfaceIds(L"tavrin", luid, guid), error));
  EXPECT_EQ(error, L"guid lookup failed for tavrin");
}

// SetInterfaceAddress

TEST_F(InterfaceAddresses, TheAddressBecomesTheOnlyOneOfItsInterface) {
  Tun().addresses = {{0xA9FE0102, 16}, {0x0A000005, 8}};
  EXPECT_TRUE(Set(L"192.168.123.1"));
  EXPECT_EQ(error, L"as before");
  EXPECT_EQ(Tun().addresses, (std::vector<UnicastAddress>{{0xC0A87B01, 24}}));
  EXPECT_EQ(Ethernet().addresses, (std::vector<UnicastAddress>{{0xC0A80114, 24}}));
}

TEST_F(InterfaceAddresses, AnAddressThatIsThereAlreadyIsDeletedAndMadeAnew) {
  Tun().addresses = {{0xC0A87B01, 16}};
  EXPECT_TRUE(Set(L"192.168.123.1"));
  EXPECT_EQ(machine.calls.Sequence({"DeleteUnicastIpAddressEntry", "CreateUnicastIpAddressEntry"}),
            (Texts{"DeleteUnicastIpAddressEntry \"tavrin\", 192.168.123.1/16",
                   "CreateUnicastIpAddressEntry \"tavrin\", 192.168.123.1/24"}));
  EXPECT_EQ(Tun().addresses, (std::vector<UnicastAddress>{{0xC0A87B01, 24}}));
}

TEST_F(InterfaceAddresses, TheWholeAssignmentIsMadeOfTheseCallsInThisOrder) {
  Tun().addresses = {{0xA9FE0102, 16}};
  ASSERT_TRUE(Set(L"192.168.123.1"));
  EXPECT_EQ(machine.calls.Names(),
            (Texts{"ConvertInterfaceAliasToLuid", "ConvertInterfaceLuidToGuid", "InetPtonW",
                   "GetUnicastIpAddressTable", "DeleteUnicastIpAddressEntry", "FreeMibTable",
                   "InitializeIpInterfaceEntry", "GetIpInterfaceEntry", "SetIpInterfaceEntry",
                   "InitializeUnicastIpAddressEntry", "ConvertInterfaceLuidToIndex",
                   "CreateUnicastIpAddressEntry"}));
  EXPECT_EQ(machine.calls.TextsOf("GetUnicastIpAddressTable"), Texts{"2"});
}

TEST_F(InterfaceAddresses, DuplicateAddressDetectionIsSwitchedOffOnThatInterfaceAlone) {
  ASSERT_TRUE(Set(L"192.168.123.1"));
  EXPECT_EQ(machine.calls.TextsOf("SetIpInterfaceEntry"), Texts{"\"tavrin\", 0"});
  EXPECT_EQ(Tun().dadTransmits, 0u);
  EXPECT_EQ(Ethernet().dadTransmits, 3u);
}

TEST_F(InterfaceAddresses, AnotherPrefixLengthIsHandedOn) {
  ASSERT_TRUE(Set(L"10.1.2.3", 30));
  EXPECT_EQ(Tun().addresses, (std::vector<UnicastAddress>{{0x0A010203, 30}}));
}

TEST_F(InterfaceAddresses, AnInvalidAddressChangesNothing) {
  Tun().addresses = {{0xA9FE0102, 16}};
  const netmodel::Network before = machine.network;
  for (const wchar_t* text : {L"", L"...", L"192.168.123", L"192.168.123.256", L"tun.example",
                              L"192.168.123.1/24", L"::1"}) {
    SCOPED_TRACE(testing::PrintToString(std::wstring(text)));
    EXPECT_FALSE(Set(text));
    EXPECT_EQ(error, std::wstring(L"invalid IPv4 address ") + text);
  }
  EXPECT_TRUE(machine.network == before);
  EXPECT_EQ(machine.calls.Count("GetUnicastIpAddressTable"), 0u);
  EXPECT_EQ(machine.calls.Count("CreateUnicastIpAddressEntry"), 0u);
}

TEST_F(InterfaceAddresses, AnUnknownInterfaceIsNamedBeforeTheAddressIsRead) {
  EXPECT_FALSE(Succeeds(vpn::SetInterfaceAddress(L"gone", L"no address", 24), error));
  EXPECT_EQ(error, L"unknown interface gone");
  machine.faults.Fail("ConvertInterfaceLuidToGuid");
  EXPECT_FALSE(Set(L"no address"));
  EXPECT_EQ(error, L"guid lookup failed for tavrin");
  EXPECT_EQ(machine.calls.Count("InetPtonW"), 0u);
}

TEST_F(InterfaceAddresses, ATableThatCantBeReadOrIsNullOnlyLeavesTheOldAddresses) {
  Tun().addresses = {{0xA9FE0102, 16}};
  machine.faults.Fail("GetUnicastIpAddressTable");
  EXPECT_TRUE(Set(L"192.168.123.1"));
  EXPECT_EQ(Tun().addresses, (std::vector<UnicastAddress>{{0xA9FE0102, 16}, {0xC0A87B01, 24}}));
  machine.ipHelper.nullTables = true;
  EXPECT_TRUE(Set(L"10.1.2.3"));
  EXPECT_EQ(Tun().addresses.size(), 3u);
  EXPECT_EQ(error, L"as before");
}

TEST_F(InterfaceAddresses, ADeletionThatFailsDoesNotKeepTheNextFromRunning) {
  Tun().addresses = {{0xA9FE0102, 16}, {0x0A000005, 8}};
  machine.faults.Fail("DeleteUnicastIpAddressEntry");
  EXPECT_TRUE(Set(L"192.168.123.1"));
  EXPECT_EQ(Tun().addresses, (std::vector<UnicastAddress>{{0xA9FE0102, 16}, {0xC0A87B01, 24}}));
}

TEST_F(InterfaceAddresses, SettingsThatCantBeReadAreNotWritten) {
  machine.faults.Fail("GetIpInterfaceEntry");
  EXPECT_TRUE(Set(L"192.168.123.1"));
  EXPECT_EQ(machine.calls.Count("SetIpInterfaceEntry"), 0u);
  EXPECT_EQ(Tun().dadTransmits, 3u);
}

TEST_F(InterfaceAddresses, SettingsThatCantBeWrittenAreNoObstacle) {
  machine.faults.Fail("SetIpInterfaceEntry");
  EXPECT_TRUE(Set(L"192.168.123.1"));
  EXPECT_EQ(error, L"as before");
  EXPECT_EQ(Tun().addresses, (std::vector<UnicastAddress>{{0xC0A87B01, 24}}));
}

TEST_F(InterfaceAddresses, AnUnknownIndexIsNoObstacle) {
  machine.faults.Fail("ConvertInterfaceLuidToIndex");
  EXPECT_TRUE(Set(L"192.168.123.1"));
  EXPECT_EQ(Tun().addresses, (std::vector<UnicastAddress>{{0xC0A87B01, 24}}));
}

TEST_F(InterfaceAddresses, TheCodeForAnObjectThatExistsCountsAsSuccess) {
  machine.faults.Fail("CreateUnicastIpAddressEntry", {.code = 5010});
  EXPECT_TRUE(Set(L"192.168.123.1"));
  EXPECT_EQ(error, L"as before");
}

TEST_F(InterfaceAddresses, ARefusedAddressGivesTheCodeAsAnUnsignedDecimal) {
  struct Case {
    std::uint32_t code;
    const wchar_t* text;
  };
  const Case cases[] = {{5, L"CreateUnicastIpAddressEntry failed 5"},
                        {1168, L"CreateUnicastIpAddressEntry failed 1168"},
                        {5009, L"CreateUnicastIpAddressEntry failed 5009"},
                        {0x80070005, L"CreateUnicastIpAddressEntry failed 2147942405"}};
  for (const Case& one : cases) {
    SCOPED_TRACE(one.code);
    machine.faults.Fail("CreateUnicastIpAddressEntry", {.code = one.code});
    EXPECT_FALSE(Set(L"192.168.123.1"));
    EXPECT_EQ(error, one.text);
  }
  EXPECT_EQ(machine.calls.Count("CreateUnicastIpAddressEntry"), 4u) << "nothing is tried twice";
}

}  // namespace
}  // namespace unit
