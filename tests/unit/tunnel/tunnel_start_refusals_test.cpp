// The refusals of a start: what they say, and that they leave the machine alone.
#include <functional>
#include <ostream>

#include "tests/unit/tunnel/tunnel_fixture.h"

namespace unit {
namespace {

constexpr wchar_t kSettings[] = L"Software\\Microsoft\\Windows\\CurrentVersion\\Internet Settings";

struct Refusal {
  const char* name;
  std::function<void(sim::Machine&, vpn::TunnelConfig&)> arrange;
  const wchar_t* text;
};

void PrintTo(const Refusal& refusal, std::ostream* out) {
  *out << refusal.name;
}

void SwitchProxyOn(sim::Machine& machine) {
  machine.registry.SetDword(kSettings, L"ProxyEnable", 1);
  machine.registry.SetText(kSettings, L"ProxyServer", L"127.0.0.1:10809");
}

void AddForeignTunnel(sim::Machine& machine) {
  netmodel::Adapter adapter;
  adapter.friendlyName = "wg0";
  adapter.description = "WireGuard Tunnel";
  machine.network.AddAdapter(adapter);
}

const Refusal kRefusals[] = {
    {"AnotherTunnelIsUp", [](auto& machine, auto&) { AddForeignTunnel(machine); },
     L"检测到其他 VPN 正在使用网络（wg0）。请先退出 v2rayN / Clash 等客户端的 TUN 模式，再连接。"},
    {"TheSystemProxyIsOn", [](auto& machine, auto&) { SwitchProxyOn(machine); },
     L"系统代理正在开启（127.0.0.1:10809）。请先关闭 v2rayN / Clash 等客户端的系统代理，再连接。"},
    {"TheSocksPortIsTaken", [](auto& machine, auto&) { machine.listeners.Listen(17593); },
     L"本机端口 17593 已被其他程序占用，无法建立隧道。请退出其他代理客户端后重试。"},
    {"NoXrayDirectory", [](auto&, auto& config) { config.xrayDir.clear(); },
     L"xray dir, tun2socks dir and config are required"},
    {"NoTun2socksDirectory", [](auto&, auto& config) { config.tun2socksDir.clear(); },
     L"xray dir, tun2socks dir and config are required"},
    {"NoConfigurationPath", [](auto&, auto& config) { config.configPath.clear(); },
     L"xray dir, tun2socks dir and config are required"},
    {"XrayIsMissing",
     [](auto& machine, auto&) { machine.files.Remove(L"C:\\run\\xray\\xray.exe"); },
     L"xray.exe not found"},
    {"Tun2socksIsMissing",
     [](auto& machine, auto&) {
       machine.files.Remove(L"C:\\run\\tun2socks\\tun2socks-windows-amd64.exe");
     },
     L"tun2socks exe not found"},
    {"Tun2socksCantBeListed", [](auto& machine, auto&) { machine.faults.Fail("FindFirstFileW"); },
     L"tun2socks exe not found"},
    {"WintunIsMissing",
     [](auto& machine, auto&) { machine.files.Remove(L"C:\\run\\tun2socks\\wintun.dll"); },
     L"wintun.dll not found next to tun2socks"},
    {"TheConfigurationIsMissing",
     [](auto& machine, auto&) { machine.files.Remove(L"C:\\run\\session.json.xray.json"); },
     L"config not found"},
    {"TheTableCantBeRead", [](auto& machine, auto&) { machine.faults.Fail("GetIpForwardTable2"); },
     L"GetIpForwardTable2 failed"},
    {"ThereIsNoPhysicalRoute",
     [](auto& machine, auto&) {
       std::erase_if(machine.network.routes,
                     [](const netmodel::Route& route) { return route.prefixLength == 0; });
     },
     L"no physical default gateway"},
};

class StartRefusal : public TunnelTest, public testing::WithParamInterface<Refusal> {
 protected:
  void SetUp() override {
    GetParam().arrange(machine, config);
    RememberMachine();
  }
};

TEST_P(StartRefusal, SaysWhyAndChangesNothing) {
  EXPECT_FALSE(Start());
  EXPECT_EQ(error, GetParam().text);
  EXPECT_FALSE(manager->childrenAlive());
  EXPECT_EQ(Actions(), Texts());
  EXPECT_EQ(machine.calls.Count("GetAddrInfoW"), 0u);
  EXPECT_EQ(machine.OpenHandles(), Texts());
  EXPECT_EQ(Labels(), (Texts{"stop() idle", "kill stale (clean)"}));
  ExpectNetworkAsBefore();

  machine.calls.Clear();
  manager->stop();
  EXPECT_EQ(machine.calls.Names(), Texts()) << "there is nothing to undo";
}

INSTANTIATE_TEST_SUITE_P(Each, StartRefusal, testing::ValuesIn(kRefusals),
                         [](const auto& each) { return std::string(each.param.name); });

class TunnelRefusals : public TunnelTest {};

TEST_F(TunnelRefusals, OfAllThingsThatAreWrongTheFirstInOrderIsTold) {
  AddForeignTunnel(machine);
  SwitchProxyOn(machine);
  machine.listeners.Listen(17593);
  machine.files.Remove(L"C:\\run");
  config.configPath.clear();
  RememberMachine();
  const auto expectText = [this](const wchar_t* text) {
    EXPECT_FALSE(Start());
    EXPECT_EQ(error, text);
  };
  expectText(
      L"检测到其他 VPN 正在使用网络（wg0）。请先退出 v2rayN / Clash 等客户端的 TUN 模式，再连接。");
  machine.network.RemoveAdapter(machine.network.FindByAlias("wg0")->luid);
  RememberMachine();
  expectText(
      L"系统代理正在开启（127.0.0.1:10809）。请先关闭 v2rayN / Clash 等客户端的系统代理，再连接。");
  machine.registry.RemoveKey(kSettings);
  expectText(L"本机端口 17593 已被其他程序占用，无法建立隧道。请退出其他代理客户端后重试。");
  machine.listeners.StopListening(17593);
  expectText(L"xray dir, tun2socks dir and config are required");
  config.configPath = L"C:\\run\\session.json.xray.json";
  expectText(L"xray.exe not found");
  machine.files.Put(L"C:\\run\\xray\\xray.exe");
  expectText(L"tun2socks exe not found");
  machine.files.Put(L"C:\\run\\tun2socks\\tun2socks.exe");
  expectText(L"wintun.dll not found next to tun2socks");
  machine.files.Put(L"C:\\run\\tun2socks\\wintun.dll");
  expectText(L"config not found");
  machine.files.Put(L"C:\\run\\session.json.xray.json");
  machine.faults.Fail("GetIpForwardTable2");
  expectText(L"GetIpForwardTable2 failed");
  EXPECT_TRUE(Start());
}

TEST_F(TunnelRefusals, OnlyTheFilesUpToTheMissingOneAreLookedFor) {
  machine.files.Remove(L"C:\\run\\tun2socks\\wintun.dll");
  ASSERT_FALSE(Start());
  EXPECT_EQ(machine.calls.TextsOf("GetFileAttributesW"),
            (Texts{"\"C:\\run\\xray\\xray.exe\"", "\"C:\\run\\tun2socks\\wintun.dll\""}));
}

TEST_F(TunnelRefusals, ARefusalComesBehindTheOrphanCleanUpAndTheEndOfTheOldTunnel) {
  ASSERT_TRUE(Start());
  AddForeignTunnel(machine);
  EXPECT_FALSE(Start());
  EXPECT_EQ(machine.processes.Alive(), Texts()) << "the old tunnel was stopped first";
  EXPECT_FALSE(manager->childrenAlive());
  EXPECT_EQ(TunRoutes(), Texts());
  machine.network.RemoveAdapter(machine.network.FindByAlias("wg0")->luid);

  machine.processes.Seed(L"C:\\run\\xray\\xray.exe");
  AddForeignTunnel(machine);
  EXPECT_FALSE(Start());
  EXPECT_EQ(machine.processes.Alive(), Texts()) << "the orphan was killed first";
  EXPECT_EQ(LastLabel(), "kill stale (hit)");
  machine.network.RemoveAdapter(machine.network.FindByAlias("wg0")->luid);
}

// The job, where the pins stay until the next stop

TEST_F(TunnelRefusals, WithoutAJobThePanelPinsStayUntilTheNextStop) {
  machine.faults.Fail("CreateJobObjectW");
  EXPECT_FALSE(Start());
  EXPECT_EQ(error, L"CreateJobObject failed");
  EXPECT_EQ(LastLabel(), "pin panel hosts");
  EXPECT_EQ(Pins(), Texts{"198.51.100.20"});
  EXPECT_EQ(machine.processes.Started().size(), 0u);
  EXPECT_FALSE(manager->childrenAlive());
  EXPECT_EQ(machine.OpenHandles(), Texts());

  machine.calls.Clear();
  manager->stop();
  EXPECT_EQ(Actions(),
            (Texts{"DeleteIpForwardEntry2 \"以太网\" 198.51.100.20/32 via 192.168.1.1",
                   "DeleteIpForwardEntry2 \"以太网\" 198.51.100.30/32 via 192.168.1.1"}));
  EXPECT_EQ(Pins(), Texts());
}

TEST_F(TunnelRefusals, AJobThatRefusesItsLimitIsClosedAndThePanelPinsStay) {
  machine.faults.Fail("SetInformationJobObject");
  EXPECT_FALSE(Start());
  EXPECT_EQ(error, L"SetInformationJobObject failed");
  EXPECT_EQ(machine.calls.TextsOf("CloseHandle").back(), "job");
  EXPECT_EQ(machine.OpenHandles(), Texts());
  EXPECT_EQ(Pins(), Texts{"198.51.100.20"});
  EXPECT_EQ(NetshLines(), Texts());
}

TEST_F(TunnelRefusals, TheNextStartTakesThePinsOfAFailedJobAwayAsItsFirstAct) {
  machine.faults.Fail("CreateJobObjectW");
  ASSERT_FALSE(Start());
  machine.calls.Clear();
  config.panelHosts.clear();
  config.serverAddress = L"198.51.100.40";
  ASSERT_TRUE(Start());
  EXPECT_EQ(Pins(), Texts{"198.51.100.40"});
  const Texts order = machine.calls.Sequence({"DeleteIpForwardEntry2", "CreateToolhelp32Snapshot"});
  EXPECT_EQ(order.at(0), "DeleteIpForwardEntry2 \"以太网\" 198.51.100.20/32 via 192.168.1.1");
  EXPECT_EQ(order.at(1), "DeleteIpForwardEntry2 \"以太网\" 198.51.100.30/32 via 192.168.1.1");
  EXPECT_EQ(order.at(2), "CreateToolhelp32Snapshot 0x2, 0");
  EXPECT_EQ(Last(Labels(), 13), kFirstStartLabels);
}

}  // namespace
}  // namespace unit
