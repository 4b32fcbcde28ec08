// The check for a system proxy that is switched on.
#include <cstring>

#include "src/tunnel/preflight.h"
#include "src/tunnel/tunnel_internal.h"
#include "tests/unit/net/net_fixture.h"
#include "tests/unit/status.h"

namespace unit {
namespace {

constexpr wchar_t kSettings[] = L"Software\\Microsoft\\Windows\\CurrentVersion\\Internet Settings";
constexpr std::uint32_t kSz = 1;
constexpr std::uint32_t kBinary = 3;
constexpr std::uint32_t kDword = 4;
constexpr std::uint32_t kQword = 11;

class SystemProxy : public ProductTest {
 protected:
  bool ProxyIsOn() { return !Succeeds(vpn::CheckSystemProxy(HKEY_CURRENT_USER), error); }
  void SwitchProxyOn(const wchar_t* server) {
    machine.registry.SetDword(kSettings, L"ProxyEnable", 1);
    machine.registry.SetText(kSettings, L"ProxyServer", server);
  }
  // A value of these units as they stand, with no terminator behind them.
  void SetRawServer(std::uint32_t type, const std::wstring& units) {
    std::vector<std::uint8_t> data(units.size() * sizeof(wchar_t));
    std::memcpy(data.data(), units.data(), data.size());
    machine.registry.Set(kSettings, L"ProxyServer", {type, data});
  }

  std::wstring error = L"as before";
};

TEST_F(SystemProxy, AMachineWithoutTheSettingsHasNoProxy) {
  EXPECT_FALSE(ProxyIsOn());
  EXPECT_EQ(error, L"as before");
  EXPECT_EQ(machine.calls.Sequence({"RegOpenKeyExW", "RegQueryValueExW", "RegCloseKey"}),
            Texts{"RegOpenKeyExW 0x80000001, \"Software\\Microsoft\\Windows\\CurrentVersion\\"
                  "Internet Settings\", 0x1"});
}

TEST_F(SystemProxy, AProxyThatIsOnIsNamedInTheUsersText) {
  SwitchProxyOn(L"127.0.0.1:10809");
  EXPECT_TRUE(ProxyIsOn());
  EXPECT_EQ(
      error,
      L"系统代理正在开启（127.0.0.1:10809）。请先关闭 v2rayN / Clash 等客户端的系统代理，再连接"
      L"。");
  EXPECT_EQ(machine.calls.Sequence({"RegQueryValueExW", "RegCloseKey"}),
            (Texts{"RegQueryValueExW \"ProxyEnable\"", "RegQueryValueExW \"ProxyServer\"",
                   "RegCloseKey "}));
}

TEST_F(SystemProxy, AnAbsentAnUnreadableAndAnEmptyServerAreUnknown) {
  const wchar_t text[] =
      L"系统代理正在开启（未知）。请先关闭 v2rayN / Clash 等客户端的系统代理，再连接。";
  machine.registry.SetDword(kSettings, L"ProxyEnable", 1);
  EXPECT_TRUE(ProxyIsOn());
  EXPECT_EQ(error, text);
  error.clear();
  machine.registry.SetText(kSettings, L"ProxyServer", L"");
  EXPECT_TRUE(ProxyIsOn());
  EXPECT_EQ(error, text);
  error.clear();
  machine.registry.SetText(kSettings, L"ProxyServer", L"a:1");
  machine.faults.Fail("RegQueryValueExW", {.nth = 2});
  EXPECT_TRUE(ProxyIsOn());
  EXPECT_EQ(error, text);
}

TEST_F(SystemProxy, AServerTextFillsTheBufferToTheLastUnitAndNoFurther) {
  machine.registry.SetDword(kSettings, L"ProxyEnable", 1);
  SetRawServer(kSz, std::wstring(256, L'p'));
  EXPECT_TRUE(ProxyIsOn());
  EXPECT_EQ(error, L"系统代理正在开启（" + std::wstring(256, L'p') +
                       L"）。请先关闭 v2rayN / Clash 等客户端的系统代理，再连接。");
  SetRawServer(kSz, std::wstring(257, L'p'));
  EXPECT_TRUE(ProxyIsOn());
  EXPECT_EQ(error,
            L"系统代理正在开启（未知）。请先关闭 v2rayN / Clash 等客户端的系统代理，再连接。");
}

TEST_F(SystemProxy, TheServerEndsAtItsFirstZeroAndItsTypeIsNotLookedAt) {
  machine.registry.SetDword(kSettings, L"ProxyEnable", 1);
  SetRawServer(kBinary, std::wstring(L"one:1\0two:2", 11));
  EXPECT_TRUE(ProxyIsOn());
  EXPECT_EQ(error,
            L"系统代理正在开启（one:1）。请先关闭 v2rayN / Clash 等客户端的系统代理，再连接。");
}

TEST_F(SystemProxy, AProxyThatIsOffIsNotAskedForItsServer) {
  machine.registry.SetDword(kSettings, L"ProxyEnable", 0);
  machine.registry.SetText(kSettings, L"ProxyServer", L"127.0.0.1:10809");
  EXPECT_FALSE(ProxyIsOn());
  EXPECT_EQ(error, L"as before");
  EXPECT_EQ(machine.calls.TextsOf("RegQueryValueExW"), Texts{"\"ProxyEnable\""});
  EXPECT_EQ(machine.calls.Count("RegCloseKey"), 1u);
}

TEST_F(SystemProxy, AnyValueButZeroSwitchesTheProxyOn) {
  for (const std::uint32_t value : {1u, 2u, 0x100u, 0x80000000u, 0xFFFFFFFFu}) {
    machine.registry.SetDword(kSettings, L"ProxyEnable", value);
    EXPECT_TRUE(ProxyIsOn()) << value;
  }
}

TEST_F(SystemProxy, AProxyFlagOfAnotherTypeCountsAsOff) {
  const std::vector<std::uint8_t> one = {1, 0, 0, 0};
  for (const sim::RegistryValue& value :
       {sim::RegistryValue{kSz, one}, sim::RegistryValue{kBinary, one}, sim::RegistryValue{0, one},
        sim::RegistryValue{5, one}, sim::RegistryValue{kQword, {1, 0, 0, 0, 0, 0, 0, 0}},
        sim::RegistryValue{kDword, {1, 0, 0, 0, 0, 0, 0, 0}}}) {
    SCOPED_TRACE(value.type);
    machine.registry.Set(kSettings, L"ProxyEnable", value);
    EXPECT_FALSE(ProxyIsOn());
  }
}

TEST_F(SystemProxy, ARegistryThatCantBeReadHasNoProxy) {
  SwitchProxyOn(L"a:1");
  machine.faults.Fail("RegOpenKeyExW");
  EXPECT_FALSE(ProxyIsOn());
  EXPECT_EQ(machine.calls.Count("RegCloseKey"), 0u);
  machine.faults.Fail("RegQueryValueExW");
  EXPECT_FALSE(ProxyIsOn());
  EXPECT_EQ(machine.calls.Count("RegCloseKey"), 1u);
  EXPECT_EQ(error, L"as before");
}

}  // namespace
}  // namespace unit
