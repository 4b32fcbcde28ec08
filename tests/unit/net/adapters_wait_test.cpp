#include "src/net/adapters.h"

#include "tests/unit/net/net_fixture.h"

namespace unit {
namespace {

class AdapterWait : public NetTest {
 protected:
  netmodel::Adapter& AddTun(std::uint32_t status = netmodel::kOperStatusUp) {
    netmodel::Adapter& tun = AddAdapter("tavrin", "tun2socks Tunnel");
    tun.operStatus = status;
    return tun;
  }
  // The adapter "tavrin" goes up after so many milliseconds.
  void GoesUpAfter(std::uint64_t milliseconds) {
    AddTun(netmodel::kOperStatusDown);
    machine.clock.After(milliseconds, [this] {
      machine.network.FindByAlias("tavrin")->operStatus = netmodel::kOperStatusUp;
    });
  }

  bool WaitForTun(DWORD budget) {
    const std::uint64_t before = machine.clock.Now();
    const std::optional<std::wstring> found = vpn::WaitForTunAdapter(L"tavrin", budget);
    took = machine.clock.Now() - before;
    alias = found.value_or(alias);
    return found.has_value();
  }

  std::wstring alias = L"as before";
  std::uint64_t took = 0;
};

TEST_F(AdapterWait, AnAdapterThatIsUpIsTakenAtOnce) {
  AddTun();
  EXPECT_TRUE(WaitForTun(15000));
  EXPECT_EQ(alias, L"tavrin");
  EXPECT_EQ(took, 0u);
  EXPECT_EQ(machine.calls.TextsOf("GetAdaptersAddresses"), (Texts{"0, 0x0", "0, 0x0"}));
  EXPECT_EQ(machine.calls.Count("Sleep"), 0u);
}

TEST_F(AdapterWait, AnAdapterThatIsNotUpIsNotTakenAndThePollGoesOn) {
  GoesUpAfter(90);
  EXPECT_TRUE(WaitForTun(15000));
  EXPECT_EQ(took, 100u) << "the pass after 75 ms is too early, the next is 25 ms on";
  EXPECT_EQ(machine.calls.TextsOf("Sleep"), (Texts{"25", "25", "25", "25"}));
}

TEST_F(AdapterWait, OnlyTheStateUpCounts) {
  for (std::uint32_t status = 2; status <= 7; ++status) {
    SCOPED_TRACE(status);
    AddTun(status);
    EXPECT_FALSE(WaitForTun(50));
    EXPECT_EQ(took, 50u);
  }
  EXPECT_EQ(alias, L"as before");
}

TEST_F(AdapterWait, TheLastPassOfABudgetIsOneIntervalBeforeItsEnd) {
  GoesUpAfter(14975);
  EXPECT_TRUE(WaitForTun(15000));
  EXPECT_EQ(took, 14975u);
}

TEST_F(AdapterWait, WhatComesAfterTheLastPassIsTooLate) {
  GoesUpAfter(14976);
  EXPECT_FALSE(WaitForTun(15000));
  EXPECT_EQ(took, 15000u);
  EXPECT_EQ(alias, L"as before");
}

TEST_F(AdapterWait, AMillisecondMoreOfBudgetBuysOneMorePass) {
  GoesUpAfter(14976);
  EXPECT_TRUE(WaitForTun(15001));
  EXPECT_EQ(took, 15000u);
}

TEST_F(AdapterWait, ABudgetOfOneMillisecondMakesOnePassOneSleepAndGivesUp) {
  EXPECT_FALSE(WaitForTun(1));
  EXPECT_EQ(machine.calls.Names(), (Texts{"GetTickCount", "GetTickCount", "GetAdaptersAddresses",
                                          "GetAdaptersAddresses", "Sleep", "GetTickCount"}));
  EXPECT_EQ(took, 25u);
}

TEST_F(AdapterWait, ABudgetOfZeroMakesNoPass) {
  AddTun();
  EXPECT_FALSE(WaitForTun(0));
  EXPECT_EQ(machine.calls.Count("GetAdaptersAddresses"), 0u);
  EXPECT_EQ(took, 0u);
}

TEST_F(AdapterWait, ABudgetThatIsOverBeforeTheFirstPassMakesNone) {
  AddTun();
  machine.faults.Before("GetTickCount", 2, [this] { machine.clock.Advance(1); });
  EXPECT_FALSE(WaitForTun(1));
  EXPECT_EQ(machine.calls.Count("GetAdaptersAddresses"), 0u);
}

TEST_F(AdapterWait, WithNoAdapterAtAllAPassIsOneCallAndASleep) {
  AllowNetworkChanges();
  machine.network.adapters.clear();
  EXPECT_FALSE(WaitForTun(50));
  EXPECT_EQ(machine.calls.Sequence({"GetAdaptersAddresses", "Sleep"}),
            (Texts{"GetAdaptersAddresses 0, 0x0", "Sleep 25", "GetAdaptersAddresses 0, 0x0",
                   "Sleep 25"}));
}

TEST_F(AdapterWait, AListingThatFailsCostsOnePass) {
  AddTun();
  machine.faults.Fail("GetAdaptersAddresses", {.nth = 2});
  EXPECT_TRUE(WaitForTun(15000));
  EXPECT_EQ(took, 25u);
  machine.faults.Fail("GetAdaptersAddresses", {.nth = 1});
  EXPECT_TRUE(WaitForTun(15000));
  EXPECT_EQ(took, 25u) << "a size that can't be had costs a pass too";
}

TEST_F(AdapterWait, TheBufferIsSizedAnewInEveryPass) {
  GoesUpAfter(40);
  machine.faults.Before("GetAdaptersAddresses", 2, [this] { AddAdapter("one more"); });
  EXPECT_TRUE(WaitForTun(15000));
  EXPECT_EQ(took, 50u);
  EXPECT_EQ(machine.calls.Count("GetAdaptersAddresses"), 6u);
}

struct NameCase {
  const char* friendlyName;
  const char* description;
  bool taken;
};

TEST_F(AdapterWait, AnAdapterHasToBeAWintunOneAndTheWantedOne) {
  const NameCase cases[] = {
      {"tavrin", "tun2socks Tunnel", true},
      {"tavrin", "tun2socks Tunnel #2", true},
      {"tavrin 1", "tun2socks Tunnel", true},
      {"tavrin", "Wintun Userspace Tunnel", true},
      {"TAVRIN", "WINTUN", true},
      {"wintun", "TAVRIN", true},             // the wanted name in the description
      {"my Wintun", "for tavrin", true},      // the kind in the friendly name
      {"wintun tavrin", "", true},            // both in the friendly name
      {"", "Tavrin Tun2Socks", true},         // both in the description
      {"tavrin", "WireGuard Tunnel", false},  // the kind is missing
      {"tavrin", "Intel Ethernet", false},
      {"tavrin", "", false},
      {"tun2socks tavrin", "", false},               // that word counts in the description alone
      {"Wintun", "Wintun Userspace Tunnel", false},  // the wanted name is missing
      {"other", "tun2socks Tunnel", false},
      {"tavri", "tun2socks Tunnel", false},
      {"", "", false},
  };
  for (const NameCase& one : cases) {
    SCOPED_TRACE(std::string(one.friendlyName) + " / " + one.description);
    const std::uint64_t luid = AddAdapter(one.friendlyName, one.description).luid;
    alias = L"as before";
    EXPECT_EQ(WaitForTun(1), one.taken);
    EXPECT_EQ(alias == L"as before", !one.taken);
    machine.network.RemoveAdapter(luid);
  }
}

TEST_F(AdapterWait, TheAliasIsTheFriendlyNameEvenWhereTheDescriptionHit) {
  AddAdapter("本地连接* 3", "tavrin wintun");
  EXPECT_TRUE(WaitForTun(1));
  EXPECT_EQ(alias, L"本地连接* 3");
}

TEST_F(AdapterWait, OfSeveralTheFirstInListOrderIsTaken) {
  AddAdapter("tavrin 2", "tun2socks Tunnel").operStatus = netmodel::kOperStatusDown;
  AddAdapter("tavrin 1", "tun2socks Tunnel");
  AddAdapter("tavrin", "tun2socks Tunnel");
  EXPECT_TRUE(WaitForTun(1));
  EXPECT_EQ(alias, L"tavrin 1");
}

TEST_F(AdapterWait, AnAdapterWithoutTextsIsPassedOver) {
  machine.ipHelper.nullTexts.insert(AddTun().luid);
  EXPECT_FALSE(WaitForTun(1));
  AddAdapter("tavrin", "tun2socks Tunnel");
  EXPECT_TRUE(WaitForTun(1));
}

TEST_F(AdapterWait, TheWrapOfTheTickCounterDoesNotBreakTheBudget) {
  machine.clock.Set(0xFFFFFFF0);
  EXPECT_FALSE(WaitForTun(1000));
  EXPECT_EQ(took, 1000u);
  EXPECT_EQ(machine.calls.Count("Sleep"), 40u);
}

TEST_F(AdapterWait, AnAdapterThatComesUpBehindTheWrapIsFound) {
  machine.clock.Set(0xFFFFFFF0);
  GoesUpAfter(100);
  EXPECT_TRUE(WaitForTun(15000));
  EXPECT_EQ(took, 100u);
}

TEST_F(AdapterWait, AWaitThatStartsAtTheLastTickHasItsWholeBudget) {
  machine.clock.Set(0x1FFFFFFFF);
  GoesUpAfter(14975);
  EXPECT_TRUE(WaitForTun(15000));
  EXPECT_EQ(took, 14975u);
}

}  // namespace
}  // namespace unit
