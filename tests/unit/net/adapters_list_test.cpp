#include "src/net/adapters.h"

#include "tests/unit/net/net_fixture.h"

namespace unit {
namespace {

class AdapterLists : public NetTest {};

TEST_F(AdapterLists, AdaptersStandInThePlatformsOrder) {
  AddAdapter("tavrin", "tun2socks Tunnel");
  const vpn::AdapterList adapters(AF_UNSPEC, 0);
  WideTexts names;
  for (const auto* adapter = adapters.first(); adapter != nullptr; adapter = adapter->Next) {
    names.push_back(adapter->FriendlyName);
  }
  EXPECT_EQ(names, (WideTexts{L"以太网", L"Loopback Pseudo-Interface 1", L"tavrin"}));
  EXPECT_EQ(machine.calls.TextsOf("GetAdaptersAddresses"), (Texts{"0, 0x0", "0, 0x0"}))
      << "once for the size and once for the list";
}

TEST_F(AdapterLists, WithoutAnyAdapterThereIsNoSecondCall) {
  AllowNetworkChanges();
  machine.network.adapters.clear();
  EXPECT_EQ(vpn::AdapterList(AF_UNSPEC, 0).first(), nullptr);
  EXPECT_EQ(machine.calls.Count("GetAdaptersAddresses"), 1u);
}

TEST_F(AdapterLists, AListThatOutgrowsItsBufferIsUnreadableAndNotTriedAgain) {
  machine.faults.Before("GetAdaptersAddresses", 2, [this] { AddAdapter("new one"); });
  EXPECT_EQ(vpn::AdapterList(AF_UNSPEC, 0).first(), nullptr);
  EXPECT_EQ(machine.calls.Count("GetAdaptersAddresses"), 2u);
}

TEST_F(AdapterLists, AListThatShrinksInBetweenIsReadable) {
  AddAdapter("short-lived");
  machine.faults.Before("GetAdaptersAddresses", 2, [this] {
    machine.network.RemoveAdapter(machine.network.FindByAlias("short-lived")->luid);
  });
  EXPECT_NE(vpn::AdapterList(AF_UNSPEC, 0).first(), nullptr);
}

TEST_F(AdapterLists, AFailingCallGivesNoAdapter) {
  machine.faults.Fail("GetAdaptersAddresses");
  EXPECT_EQ(vpn::AdapterList(AF_INET, 0).first(), nullptr) << "no size, no list";
  machine.faults.Fail("GetAdaptersAddresses", {.nth = 2});
  EXPECT_EQ(vpn::AdapterList(AF_INET, 0).first(), nullptr);
}

TEST(AdapterNames, NullCountsAsTheEmptyText) {
  std::wstring name = L"tavrin";
  std::wstring description = L"tun2socks Tunnel";
  IP_ADAPTER_ADDRESSES adapter = {};
  EXPECT_EQ(vpn::NamesOf(adapter).friendlyName, L"");
  EXPECT_EQ(vpn::NamesOf(adapter).description, L"");
  adapter.Description = description.data();
  EXPECT_EQ(vpn::NamesOf(adapter).friendlyName, L"");
  EXPECT_EQ(vpn::NamesOf(adapter).description, L"tun2socks Tunnel");
  adapter.FriendlyName = name.data();
  EXPECT_EQ(vpn::NamesOf(adapter).friendlyName, L"tavrin");
}

TEST(AdapterNames, AFriendlyNameMatchesExactlyAndNullMatchesNothing) {
  std::wstring name = L"tavrin";
  IP_ADAPTER_ADDRESSES adapter = {};
  EXPECT_FALSE(vpn::HasFriendlyName(adapter, L""));
  EXPECT_FALSE(vpn::HasFriendlyName(adapter, L"tavrin"));
  adapter.FriendlyName = name.data();
  EXPECT_TRUE(vpn::HasFriendlyName(adapter, L"tavrin"));
  EXPECT_FALSE(vpn::HasFriendlyName(adapter, L"Tavrin"));
  EXPECT_FALSE(vpn::HasFriendlyName(adapter, L"tavri"));
  EXPECT_FALSE(vpn::HasFriendlyName(adapter, L"tavrin1"));
  EXPECT_FALSE(vpn::HasFriendlyName(adapter, std::wstring(L"tavrin\0", 7)));
}

}  // namespace
}  // namespace unit
