#include "tests/unit/client/doctor/doctor_test.h"

namespace vpn {
namespace {

constexpr wchar_t kSettings[] = L"Software\\Microsoft\\Windows\\CurrentVersion\\Internet Settings";
constexpr wchar_t kServiceSettings[] =
    L"HKEY_USERS\\S-1-5-18\\Software\\Microsoft\\Windows\\CurrentVersion\\Internet Settings";
constexpr wchar_t kProxyAdvice[] =
    L"switch the proxy off in the Internet settings of the account that the service runs under";

class NetworkChecksTest : public unit::DoctorTest {
 protected:
  void AddPin(std::uint32_t destination) {
    const std::uint64_t luid = machine.network.FindByAlias("以太网")->luid;
    EXPECT_EQ(machine.network.CreateRoute({.luid = luid,
                                           .destination = destination,
                                           .prefixLength = 32,
                                           .nextHop = 0xC0A80101,
                                           .metric = 1}),
              0u);
  }
};

TEST_F(NetworkChecksTest, ThePhysicalRoute) {
  ExpectGood(CheckPhysicalRoute(patient), L"以太网 via 192.168.1.1");
}

TEST_F(NetworkChecksTest, NoPhysicalRoute) {
  machine.network.routes.clear();
  ExpectProblem(CheckPhysicalRoute(patient), L"no physical default gateway",
                L"connect the machine to a network; if it is connected, check route print: its "
                L"only default route leads over an adapter whose name marks it as virtual");
}

TEST_F(NetworkChecksTest, NoOtherTunnel) {
  ExpectGood(CheckAdapters(patient), L"none is up");
}

TEST_F(NetworkChecksTest, AnotherTunnel) {
  netmodel::Adapter adapter;
  adapter.friendlyName = "Mihomo";
  adapter.description = "Clash Tunnel";
  machine.network.AddAdapter(adapter);
  ExpectProblem(CheckAdapters(patient),
                L"检测到其他 VPN 正在使用网络（Mihomo）。请先退出 v2rayN / Clash 等客户端的 TUN "
                L"模式，再连接。",
                L"end the other VPN, or disable the adapter Mihomo");
}

TEST_F(NetworkChecksTest, AdaptersThatCantBeReadAreNoGreenMark) {
  machine.faults.FailAlways("GetAdaptersAddresses");
  ExpectRemark(CheckAdapters(patient), L"the adapters can't be read", L"restart Windows");
}

TEST_F(NetworkChecksTest, NoProxy) {
  ExpectGood(CheckUsersProxy(patient), L"off");
  ExpectGood(CheckServicesProxy(patient), L"off");
}

TEST_F(NetworkChecksTest, TheProxyOfThisUserIsARemark) {
  machine.registry.SetDword(kSettings, L"ProxyEnable", 1);
  machine.registry.SetText(kSettings, L"ProxyServer", L"127.0.0.1:7890");
  ExpectRemark(
      CheckUsersProxy(patient),
      L"系统代理正在开启（127.0.0.1:7890）。请先关闭 v2rayN / Clash 等客户端的系统代理，再连接。",
      kProxyAdvice);
  ExpectGood(CheckServicesProxy(patient), L"off");
}

TEST_F(NetworkChecksTest, TheProxyOfTheServiceIsAProblem) {
  machine.registry.SetDword(kServiceSettings, L"ProxyEnable", 1);
  ExpectProblem(CheckServicesProxy(patient),
                L"系统代理正在开启（未知）。请先关闭 v2rayN / Clash 等客户端的系统代理，再连接。",
                kProxyAdvice);
  ExpectGood(CheckUsersProxy(patient), L"off");
}

TEST_F(NetworkChecksTest, SettingsThatCantBeReadAreNoGreenMark) {
  machine.registry.RemoveKey(L"HKEY_USERS\\S-1-5-18");
  ExpectRemark(CheckServicesProxy(patient), L"the settings of the service's account can't be read",
               L"run this with administrator's rights");
}

TEST_F(NetworkChecksTest, ProxySettingsThatCantBeReadAreNoGreenMark) {
  machine.faults.Fail("RegOpenKeyExW", {.nth = 1, .code = ERROR_ACCESS_DENIED});
  ExpectRemark(CheckUsersProxy(patient), L"your Internet settings can't be read",
               L"sign in to Windows again");
  machine.faults.Fail("RegOpenKeyExW", {.nth = 2, .code = ERROR_ACCESS_DENIED});
  ExpectRemark(CheckServicesProxy(patient), L"the settings of the service's account can't be read",
               L"run this with administrator's rights");
}

TEST_F(NetworkChecksTest, AFreePort) {
  ExpectGood(CheckPort(patient), L"free");
}

TEST_F(NetworkChecksTest, APortThatSomebodyHolds) {
  machine.processes.Seed(L"C:\\v2ray\\v2ray.exe", 4711);
  machine.listeners.Listen(80, 4);
  machine.listeners.Listen(17593, 4711);
  ExpectProblem(CheckPort(patient), L"taken by v2ray.exe (process 4711)",
                L"end that program, then connect again");
}

TEST_F(NetworkChecksTest, APortWhoseHolderIsGone) {
  machine.listeners.Listen(17593, 4712);
  EXPECT_EQ(CheckPort(patient).text, L"taken by process 4712");
}

TEST_F(NetworkChecksTest, APortWhoseHolderIsNotTold) {
  machine.listeners.Listen(17593, 4712);
  machine.faults.Fail("GetExtendedTcpTable", {.nth = 1});
  EXPECT_EQ(CheckPort(patient).text, L"taken by a program that Windows does not name");
}

TEST_F(NetworkChecksTest, TheTunnelHoldsItsPort) {
  SetUpTunnel();
  machine.listeners.Listen(17593, 4711);
  ExpectGood(CheckPort(patient), L"held by the tunnel that is up");
}

TEST_F(NetworkChecksTest, ATunnelWhosePortIsFreeIsAProblem) {
  SetUpTunnel();
  ExpectProblem(CheckPort(patient), L"free, though the tunnel is up: Xray does not listen",
                L"disconnect, then connect again");
}

TEST_F(NetworkChecksTest, WithABusyServiceATakenPortMayBeTheTunnels) {
  MakeServiceBusy();
  ExpectGood(CheckPort(patient), L"free");
  machine.processes.Seed(L"C:\\Program Files\\Tavrin\\runtime\\xray\\xray.exe", 4711);
  machine.listeners.Listen(17593, 4711);
  ExpectRemark(CheckPort(patient),
               L"taken by xray.exe (process 4711); whether that is a tunnel's can't be told while "
               L"the service does not answer",
               L"wait until the service answers, then run this again");
}

TEST_F(NetworkChecksTest, NoLeftovers) {
  ExpectGood(CheckLeftovers(patient), L"none");
}

TEST_F(NetworkChecksTest, PinsOfARunThatCrashed) {
  AddPin(0xCB00714D);
  ExpectRemark(CheckLeftovers(patient), L"1 route of its own to 203.0.113.77",
               L"connect and disconnect once, or by hand: route delete 203.0.113.77");
  AddPin(0xC6336407);
  EXPECT_EQ(CheckLeftovers(patient).text, L"2 routes of their own to 203.0.113.77, 198.51.100.7");
}

TEST_F(NetworkChecksTest, RouterDiscoveryThatStayedOff) {
  machine.network.FindByAlias("以太网")->ipv6RouterDiscovery = false;
  ExpectRemark(CheckLeftovers(patient), L"IPv6 router discovery is off on 以太网",
               L"connect and disconnect once, or by hand: netsh interface ipv6 set interface "
               L"\"以太网\" routerdiscovery=enabled store=active");
  AddPin(0xCB00714D);
  ExpectRemark(CheckLeftovers(patient),
               L"IPv6 router discovery is off on 以太网; 1 route of its own to 203.0.113.77",
               L"connect and disconnect once, or by hand: netsh interface ipv6 set interface "
               L"\"以太网\" routerdiscovery=enabled store=active, route delete 203.0.113.77");
}

TEST_F(NetworkChecksTest, OtherRoutesAreNoLeftovers) {
  const std::uint64_t luid = machine.network.FindByAlias("以太网")->luid;
  for (const netmodel::Route& route : {netmodel::Route{luid, 0xCB007100, 24, 0xC0A80101, 1},
                                       netmodel::Route{luid, 0xCB00714D, 32, 0xC0A80101, 7},
                                       netmodel::Route{luid, 0xCB00714E, 32, 0xC0A80102, 1}}) {
    EXPECT_EQ(machine.network.CreateRoute(route), 0u);
  }
  ExpectGood(CheckLeftovers(patient), L"none");
}

TEST_F(NetworkChecksTest, WithATunnelUpPinsAreItsOwn) {
  SetUpTunnel();
  AddPin(0xCB00714D);
  ExpectGood(CheckLeftovers(patient), L"none to look for while a tunnel is up");
}

TEST_F(NetworkChecksTest, WithABusyServicePinsMayBeTheTunnels) {
  MakeServiceBusy();
  ExpectGood(CheckLeftovers(patient), L"none");
  AddPin(0xCB00714D);
  ExpectRemark(CheckLeftovers(patient),
               L"1 route of its own to 203.0.113.77; whether a tunnel that is up needs this can't "
               L"be told while the service does not answer",
               L"wait until the service answers, then run this again");
}

TEST_F(NetworkChecksTest, RoutesThatCantBeReadAreNoGreenMark) {
  CheckPhysicalRoute(patient);
  const std::uint64_t reads = machine.calls.Count("GetIpForwardTable2");
  machine.faults.Fail("GetIpForwardTable2", {.nth = reads + 1});
  ExpectRemark(CheckLeftovers(patient), L"the routes can't be read", L"restart Windows");
}

TEST_F(NetworkChecksTest, RouterDiscoveryThatCantBeReadIsNoGreenMark) {
  machine.faults.Fail("GetIpInterfaceEntry",
                      {.nth = 1, .onwards = true, .code = ERROR_ACCESS_DENIED});
  ExpectRemark(CheckLeftovers(patient), L"the IPv6 settings of 以太网 can't be read",
               L"restart Windows");
  machine.faults.Clear();
  machine.faults.Fail("GetIpInterfaceEntry", {.nth = 1, .onwards = true, .code = ERROR_NOT_FOUND});
  ExpectGood(CheckLeftovers(patient), L"none");
}

TEST_F(NetworkChecksTest, LeftoversThatCantBeLookedForAreNoGreenMark) {
  machine.network.routes.clear();
  ExpectRemark(CheckLeftovers(patient), L"can't be looked for without a physical route",
               L"connect to a network first");
}

}  // namespace
}  // namespace vpn
