#include "src/tunnel/preflight.h"

#include "src/tunnel/tunnel_internal.h"
#include "tests/unit/net/net_fixture.h"
#include "tests/unit/status.h"

namespace unit {
namespace {

constexpr wchar_t kSettings[] = L"Software\\Microsoft\\Windows\\CurrentVersion\\Internet Settings";

class Preflight : public NetTest {
 protected:
  bool Conflicts(const wchar_t* ownName = L"tavrin") {
    const std::optional<std::wstring> adapter = vpn::FindConflictingAdapter(ownName);
    found = adapter.value_or(L"");
    return adapter.has_value();
  }
  void SwitchProxyOn(const wchar_t* server) {
    machine.registry.SetDword(kSettings, L"ProxyEnable", 1);
    machine.registry.SetText(kSettings, L"ProxyServer", server);
  }
  std::wstring found = L"as before";
  std::wstring error = L"as before";
};

// FindConflictingAdapter

TEST_F(Preflight, ATypicalMachineHasNoConflict) {
  EXPECT_FALSE(Conflicts());
  EXPECT_EQ(found, L"");
  EXPECT_EQ(machine.calls.TextsOf("GetAdaptersAddresses"), (Texts{"0, 0x0", "0, 0x0"}));
}

TEST_F(Preflight, AnotherTunnelsAdapterThatIsUpIsAConflictByItsFriendlyName) {
  AddAdapter("公司 VPN", "WireGuard Tunnel");
  EXPECT_TRUE(Conflicts());
  EXPECT_EQ(found, L"公司 VPN");
}

TEST_F(Preflight, AnAdapterThatIsDownIsNeverAConflict) {
  for (std::uint32_t status = 2; status <= 7; ++status) {
    AddAdapter("wintun", "WireGuard Tunnel").operStatus = status;
  }
  EXPECT_FALSE(Conflicts());
}

TEST_F(Preflight, OurOwnAdapterIsNoneByItsFriendlyNameAlone) {
  AddAdapter("tavrin", "Wintun Userspace Tunnel");
  AddAdapter("My TAVRIN 2", "tun2socks Tunnel");
  EXPECT_FALSE(Conflicts());
  AddAdapter("other", "Wintun for tavrin");
  EXPECT_TRUE(Conflicts()) << "the description does not spare it";
  EXPECT_EQ(found, L"other");
}

TEST_F(Preflight, EachTunnelWordHitsInBothTextsAndInAnyCase) {
  for (const char* word :
       {"wintun",      "Wintun",    "sing-tun",   "SING-TUN",    "singbox",
        "SingBox",     "tun2socks", "Tun2Socks",  "TAP-Windows", "tap-windows adapter v9",
        "WireGuard",   "wireguard", "OpenVPN",    "openvpn tap", "Clash",
        "clash-verge", "Tailscale", "tailscale0", "ZeroTier",    "zerotier one"}) {
    SCOPED_TRACE(word);
    const std::uint64_t byName = AddAdapter(word, "plain").luid;
    EXPECT_TRUE(Conflicts());
    machine.network.RemoveAdapter(byName);
    const std::uint64_t byDescription = AddAdapter("plain", word).luid;
    EXPECT_TRUE(Conflicts());
    EXPECT_EQ(found, L"plain");
    machine.network.RemoveAdapter(byDescription);
  }
}

TEST_F(Preflight, TheWordTunnelCountsInTheDescriptionOnly) {
  const std::uint64_t byName = AddAdapter("my tunnel Tunnel", "plain").luid;
  EXPECT_FALSE(Conflicts());
  machine.network.RemoveAdapter(byName);
  AddAdapter("plain", "some TUNNEL device");
  EXPECT_TRUE(Conflicts());
  EXPECT_EQ(found, L"plain");
}

TEST_F(Preflight, EachIgnoredWordSparesAnAdapterInBothTextsAndInAnyCase) {
  for (const char* word : {"Teredo", "TEREDO", "ISATAP", "isatap", "6to4", "6TO4", "Loopback",
                           "loopback", "IP-HTTPS", "ip-https"}) {
    SCOPED_TRACE(word);
    const std::uint64_t byDescription =
        AddAdapter("wintun", std::string(word) + " Tunnel Adapter").luid;
    EXPECT_FALSE(Conflicts());
    machine.network.RemoveAdapter(byDescription);
    const std::uint64_t byName = AddAdapter(word, "WireGuard Tunnel").luid;
    EXPECT_FALSE(Conflicts());
    machine.network.RemoveAdapter(byName);
  }
}

TEST_F(Preflight, WordsThatAreOnlySimilarAreNoConflict) {
  for (const char* word :
       {"win tun", "sing tun", "sing-box", "tun2sock", "TAP Windows", "Wire Guard", "Open VPN",
        "Clas", "Tail scale", "Zero Tier", "Tunne", "VMware"}) {
    AddAdapter(word, word);
  }
  EXPECT_FALSE(Conflicts());
}

TEST_F(Preflight, TheFirstConflictInListOrderIsNamed) {
  AddAdapter("WireGuard down", "WireGuard Tunnel").operStatus = netmodel::kOperStatusDown;
  AddAdapter("Teredo", "Teredo Tunneling");
  AddAdapter("tavrin", "tun2socks Tunnel");
  AddAdapter("Clash", "");
  AddAdapter("wg0", "WireGuard Tunnel");
  EXPECT_TRUE(Conflicts());
  EXPECT_EQ(found, L"Clash");
}

TEST_F(Preflight, AnEmptyOwnNameSparesEveryAdapter) {
  AddAdapter("wg0", "WireGuard Tunnel");
  EXPECT_FALSE(Conflicts(L""));
}

TEST_F(Preflight, AnAdapterWithoutTextsIsNoConflictAndHidesNone) {
  machine.ipHelper.nullTexts.insert(AddAdapter("wintun", "wintun").luid);
  EXPECT_FALSE(Conflicts());
  AddAdapter("wg0", "WireGuard Tunnel");
  EXPECT_TRUE(Conflicts());
}

TEST_F(Preflight, AnUnreadableAdapterListIsNoConflict) {
  AddAdapter("wg0", "WireGuard Tunnel");
  machine.faults.Fail("GetAdaptersAddresses", {.nth = 2, .code = 111});
  EXPECT_FALSE(Conflicts());
  EXPECT_EQ(machine.calls.Count("GetAdaptersAddresses"), 2u) << "there is no second attempt";
  machine.faults.Fail("GetAdaptersAddresses");
  EXPECT_FALSE(Conflicts());
  EXPECT_EQ(machine.calls.Count("GetAdaptersAddresses"), 3u);
}

// HasConflict

TEST_F(Preflight, AMachineWithoutConflictsPassesAllThreeChecksInOrder) {
  EXPECT_TRUE(Succeeds(vpn::CheckConflicts(), error));
  EXPECT_EQ(error, L"as before");
  EXPECT_EQ(machine.calls.Sequence({"GetAdaptersAddresses", "RegOpenKeyExW", "connect"}),
            (Texts{"GetAdaptersAddresses 0, 0x0", "GetAdaptersAddresses 0, 0x0",
                   "RegOpenKeyExW 0x80000001, \"Software\\Microsoft\\Windows\\CurrentVersion\\"
                   "Internet Settings\", 0x1",
                   "connect socket, 17593"}));
}

TEST_F(Preflight, TheFirstCheckThatHitsEndsTheChecks) {
  const std::uint64_t luid = AddAdapter("公司 VPN", "WireGuard Tunnel").luid;
  SwitchProxyOn(L"127.0.0.1:10809");
  machine.listeners.Listen(17593);

  EXPECT_FALSE(Succeeds(vpn::CheckConflicts(), error));
  EXPECT_EQ(
      error,
      L"检测到其他 VPN 正在使用网络（公司 VPN）。请先退出 v2rayN / Clash 等客户端的 TUN 模式，"
      L"再连接。");
  EXPECT_EQ(machine.calls.Count("RegOpenKeyExW"), 0u);

  machine.network.RemoveAdapter(luid);
  EXPECT_FALSE(Succeeds(vpn::CheckConflicts(), error));
  EXPECT_EQ(
      error,
      L"系统代理正在开启（127.0.0.1:10809）。请先关闭 v2rayN / Clash 等客户端的系统代理，再连接"
      L"。");
  EXPECT_EQ(machine.calls.Count("WSAStartup"), 0u);

  machine.registry.RemoveKey(kSettings);
  EXPECT_FALSE(Succeeds(vpn::CheckConflicts(), error));
  EXPECT_EQ(error, L"本机端口 17593 已被其他程序占用，无法建立隧道。请退出其他代理客户端后重试。");
}

TEST_F(Preflight, TheChecksKnowTheirOwnAdapterByTheNameTavrin) {
  AddAdapter("tavrin", "tun2socks Tunnel");
  EXPECT_TRUE(Succeeds(vpn::CheckConflicts(), error));
  AddAdapter("tavri", "tun2socks Tunnel");
  EXPECT_FALSE(Succeeds(vpn::CheckConflicts(), error));
}

TEST_F(Preflight, AConflictWithANamelessAdapterLeavesTheBracketsEmpty) {
  AddAdapter("", "WireGuard Tunnel");
  EXPECT_FALSE(Succeeds(vpn::CheckConflicts(), error));
  EXPECT_EQ(
      error,
      L"检测到其他 VPN 正在使用网络（）。请先退出 v2rayN / Clash 等客户端的 TUN 模式，再连接。");
}

TEST_F(Preflight, ThePortIsTriedOnceAndFreeWhenTheClockPassesTheDeadlineFirst) {
  machine.listeners.Listen(17593);
  machine.faults.Before("GetTickCount64", 2, [this] { machine.clock.Advance(1); });
  EXPECT_TRUE(Succeeds(vpn::CheckConflicts(), error));
  EXPECT_EQ(machine.calls.Count("socket"), 0u);
}

TEST_F(Preflight, ASocketLayerThatDoesNotStartIsNoConflict) {
  machine.listeners.Listen(17593);
  machine.faults.Fail("WSAStartup");
  EXPECT_TRUE(Succeeds(vpn::CheckConflicts(), error));
}

}  // namespace
}  // namespace unit
