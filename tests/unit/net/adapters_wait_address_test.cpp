// Waiting for the address of an adapter.
#include "src/net/adapters.h"
#include "tests/unit/net/net_fixture.h"

namespace unit {
namespace {

class AddressWait : public NetTest {
 protected:
  netmodel::Adapter& AddTun(std::uint32_t status = netmodel::kOperStatusUp) {
    netmodel::Adapter& tun = AddAdapter("tavrin", "tun2socks Tunnel");
    tun.operStatus = status;
    return tun;
  }
  void GetsAddressAfter(std::uint64_t milliseconds) {
    AddTun();
    machine.clock.After(milliseconds, [this] {
      machine.network.FindByAlias("tavrin")->addresses = {{0xC0A87B01, 24}};
    });
  }

  bool WaitForIpv4(DWORD budget, const wchar_t* name = L"tavrin") {
    const std::uint64_t before = machine.clock.Now();
    const bool result = vpn::WaitForAdapterIpv4(name, budget);
    took = machine.clock.Now() - before;
    return result;
  }

  std::uint64_t took = 0;
};

TEST_F(AddressWait, AnAdapterWithAnAddressIsReadyAtOnce) {
  EXPECT_TRUE(WaitForIpv4(4000, kEthernet));
  EXPECT_EQ(took, 0u);
  EXPECT_EQ(machine.calls.TextsOf("GetAdaptersAddresses"), (Texts{"2, 0x10", "2, 0x10"}));
}

TEST_F(AddressWait, WhichAddressItIsDoesNotMatter) {
  AddTun().addresses = {{0xA9FE0102, 16}};
  EXPECT_TRUE(WaitForIpv4(1));
}

TEST_F(AddressWait, NeitherDoesTheStateOfTheAdapter) {
  AddTun(netmodel::kOperStatusDown).addresses = {{0xC0A87B01, 24}};
  EXPECT_TRUE(WaitForIpv4(1));
}

TEST_F(AddressWait, AnAddressIsAwaitedUntilTheLastPass) {
  GetsAddressAfter(3975);
  EXPECT_TRUE(WaitForIpv4(4000));
  EXPECT_EQ(took, 3975u);
}

TEST_F(AddressWait, AnAddressThatComesLaterIsTooLate) {
  GetsAddressAfter(3976);
  EXPECT_FALSE(WaitForIpv4(4000));
  EXPECT_EQ(took, 4000u);
  EXPECT_EQ(machine.calls.Count("Sleep"), 160u);
  EXPECT_EQ(machine.calls.TextsOf("Sleep").at(0), "25");
}

TEST_F(AddressWait, AnAliasInOtherCaseOrLengthNeverMatches) {
  AddTun().addresses = {{0xC0A87B01, 24}};
  for (const wchar_t* name : {L"Tavrin", L"TAVRIN", L"tavri", L"tavrin1", L""}) {
    EXPECT_FALSE(WaitForIpv4(50, name)) << testing::PrintToString(std::wstring(name));
    EXPECT_EQ(took, 50u);
  }
}

TEST_F(AddressWait, TheSecondAdapterOfThatNameMayHaveTheAddress) {
  AddTun();
  AddTun().addresses = {{0xC0A87B01, 24}};
  EXPECT_TRUE(WaitForIpv4(1));
}

TEST_F(AddressWait, ABudgetOfZeroLooksForNoAddress) {
  EXPECT_FALSE(WaitForIpv4(0, kEthernet));
  EXPECT_EQ(machine.calls.Count("GetAdaptersAddresses"), 0u);
}

TEST_F(AddressWait, AListingThatFailsCostsOnePassOfTheAddressWaitToo) {
  machine.faults.Fail("GetAdaptersAddresses", {.nth = 2});
  EXPECT_TRUE(WaitForIpv4(4000, kEthernet));
  EXPECT_EQ(took, 25u);
}

TEST_F(AddressWait, TheWrapDoesNotBreakTheAddressWaitEither) {
  machine.clock.Set(0xFFFFFF00);
  GetsAddressAfter(3000);
  EXPECT_TRUE(WaitForIpv4(4000));
  EXPECT_EQ(took, 3000u);
  machine.network.FindByAlias("tavrin")->addresses.clear();
  machine.clock.Set(0x1FFFFFF00);
  EXPECT_FALSE(WaitForIpv4(4000));
  EXPECT_EQ(took, 4000u);
}

}  // namespace
}  // namespace unit
