// What a connect refuses, with its text, before it has changed anything on the machine.
#include <winsock2.h>

#include "tests/e2e/harness/expect.h"
#include "tests/e2e/harness/internet_settings.h"
#include "tests/e2e/harness/service_test.h"

namespace e2e {
namespace {

using standins::MachineState;

netmodel::Adapter Foreign(const std::string& name, const std::string& description) {
  netmodel::Adapter adapter;
  adapter.friendlyName = name;
  adapter.description = description;
  adapter.ifType = 53;
  return adapter;
}

void AddForeign(MachineState& state, const std::string& name, const std::string& description) {
  state.network.AddAdapter(Foreign(name, description));
}

void RemoveDefaultRoute(MachineState& state) {
  std::erase_if(state.network.routes,
                [](const netmodel::Route& route) { return route.prefixLength == 0; });
}

class Refusals : public ServiceTest {
 protected:
  // The refusal of a connect on an idle service, and that nothing came of it.
  void ExpectRefused(const std::string& text) {
    const netmodel::Network before = machine.Network();
    StartService();
    EXPECT_EQ(Ask(R"({"op":"connect"})"), Refusal(text));
    ExpectSameNetwork(machine.Network(), before);
    for (const char* child : {"xray.exe", "tun2socks-windows-amd64.exe", "netsh.exe"}) {
      EXPECT_EQ(machine.Starts(child), 0U) << child;
    }
    for (const std::string& call : machine.Calls()) {
      EXPECT_FALSE(call.starts_with("Create") || call.starts_with("Delete") ||
                   call.starts_with("Set"))
          << call;
    }
    EXPECT_EQ(ServiceLog().back(), "ipc error=" + text);
  }
};

TEST_F(Refusals, ForeignTunnelAdapterThatIsUp) {
  machine.Edit([](MachineState& state) { AddForeign(state, "Meta", "Wintun Userspace Tunnel"); });
  ExpectRefused(
      "检测到其他 VPN 正在使用网络（Meta）。请先退出 v2rayN / Clash 等客户端的 TUN 模式，"
      "再连接。");
}

TEST_F(Refusals, ForeignAdapterIsToldByTheWordTunnelInItsDescription) {
  machine.Edit([](MachineState& state) { AddForeign(state, "办公室", "Corporate Tunnel"); });
  ExpectRefused(
      "检测到其他 VPN 正在使用网络（办公室）。请先退出 v2rayN / Clash 等客户端的 TUN 模式，"
      "再连接。");
}

TEST_F(Refusals, AdaptersThatAreNoObstacle) {
  machine.Edit([](MachineState& state) {
    netmodel::Adapter down = Foreign("Wintun", "Wintun Userspace Tunnel");
    down.operStatus = netmodel::kOperStatusDown;
    state.network.AddAdapter(down);
    AddForeign(state, "Teredo", "Microsoft Teredo Tunnel Adapter");
    AddForeign(state, "Tunnel of love", "Plain Ethernet");
    AddForeign(state, "Tavrin (old)", "WireGuard Tunnel");
  });
  StartService();
  EXPECT_EQ(Ask(R"({"op":"connect"})"), kUp);
}

TEST_F(Refusals, SystemProxyThatIsOn) {
  InternetSettings settings;
  settings.SetNumber(L"ProxyEnable", 1);
  settings.SetText(L"ProxyServer", L"127.0.0.1:7890");
  ExpectRefused(
      "系统代理正在开启（127.0.0.1:7890）。请先关闭 v2rayN / Clash 等客户端的系统代理，"
      "再连接。");
}

TEST_F(Refusals, SystemProxyWithoutAServerIsCalledUnknown) {
  InternetSettings settings;
  settings.SetNumber(L"ProxyEnable", 1);
  settings.Remove(L"ProxyServer");
  ExpectRefused("系统代理正在开启（未知）。请先关闭 v2rayN / Clash 等客户端的系统代理，再连接。");
}

TEST_F(Refusals, SystemProxyThatIsOffOrNoNumberIsNoObstacle) {
  InternetSettings settings;
  settings.SetNumber(L"ProxyEnable", 0);
  settings.SetText(L"ProxyServer", L"127.0.0.1:7890");
  StartService();
  EXPECT_EQ(Ask(R"({"op":"connect"})"), kUp);
  settings.SetText(L"ProxyEnable", L"1");
  EXPECT_EQ(Ask(R"({"op":"connect"})"), kUp);
}

// Holds Xray's port for as long as it lives.
class PortHolder {
 public:
  PortHolder() {
    WSADATA data{};
    WSAStartup(MAKEWORD(2, 2), &data);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(17593);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    listener_ = socket(AF_INET, SOCK_STREAM, IPPROTO_TCP);
    taken_ = bind(listener_, reinterpret_cast<sockaddr*>(&address), sizeof(address)) == 0 &&
             listen(listener_, 5) == 0;
  }
  ~PortHolder() {
    closesocket(listener_);
    WSACleanup();
  }
  PortHolder(const PortHolder&) = delete;
  PortHolder& operator=(const PortHolder&) = delete;
  bool taken() const { return taken_; }

 private:
  SOCKET listener_ = INVALID_SOCKET;
  bool taken_ = false;
};

TEST_F(Refusals, PortOfXrayThatIsTaken) {
  const PortHolder holder;
  ASSERT_TRUE(holder.taken());
  ExpectRefused("本机端口 17593 已被其他程序占用，无法建立隧道。请退出其他代理客户端后重试。");
}

TEST_F(Refusals, MissingXray) {
  RemoveFile(box.runtime() + L"\\xray\\xray.exe");
  ExpectRefused("xray.exe not found");
}

TEST_F(Refusals, MissingTun2socks) {
  RemoveFile(box.runtime() + L"\\tun2socks\\tun2socks-windows-amd64.exe");
  ExpectRefused("tun2socks exe not found");
}

TEST_F(Refusals, MissingWintunLibrary) {
  RemoveFile(box.runtime() + L"\\tun2socks\\wintun.dll");
  ExpectRefused("wintun.dll not found next to tun2socks");
}

TEST_F(Refusals, FirstMissingFileIsTheOneNamed) {
  RemoveTree(box.runtime() + L"\\tun2socks");
  RemoveTree(box.runtime() + L"\\xray");
  ExpectRefused("xray.exe not found");
}

TEST_F(Refusals, NoPhysicalRoute) {
  machine.Edit(RemoveDefaultRoute);
  ExpectRefused("no physical default gateway");
}

TEST_F(Refusals, DefaultRouteOnAVirtualInterfaceDoesNotCount) {
  machine.Edit([](MachineState& state) {
    state.network.FindByAlias("以太网")->friendlyName = "vEthernet (Default Switch)";
  });
  ExpectRefused("no physical default gateway");
}

TEST_F(Refusals, RouteTableThatCannotBeRead) {
  machine.Edit([](MachineState& state) {
    state.faults = {{.call = "GetIpForwardTable2", .times = 1, .code = 8}};
  });
  ExpectRefused("GetIpForwardTable2 failed");
}

// The second reading is the start's own.
TEST_F(Refusals, RouteThatVanishesBeforeTheStart) {
  machine.Edit([](MachineState& state) {
    state.faults = {{.call = "GetIpForwardTable2", .pass = 1, .times = 1, .code = 8}};
  });
  ExpectRefused("GetIpForwardTable2 failed");
  EXPECT_EQ(TraceLabels(), (Lines{"stop() idle", "kill stale (clean)"}));
}

TEST_F(Refusals, RefusalBeforeTheTunnelIsTouchedLeavesItRunning) {
  StartService();
  ASSERT_EQ(Ask(R"({"op":"connect"})"), kUp);
  machine.Edit(RemoveDefaultRoute);
  const netmodel::Network before = machine.Network();
  EXPECT_EQ(Ask(R"({"op":"connect"})"), Refusal("no physical default gateway", true));
  EXPECT_EQ(Ask(R"({"op":"status"})"), kUp);
  ExpectSameNetwork(machine.Network(), before);
  EXPECT_EQ(machine.Starts("xray.exe"), 1U);
}

TEST_F(Refusals, RefusalOfTheStartComesWhenTheOldTunnelIsGone) {
  StartService();
  ASSERT_EQ(Ask(R"({"op":"connect"})"), kUp);
  netmodel::Network expected = netmodel::TypicalNetwork();
  expected.nextIndex = 41;
  expected.AddAdapter(Foreign("Meta", "Meta Tunnel"));
  machine.Edit([](MachineState& state) { AddForeign(state, "Meta", "Meta Tunnel"); });
  EXPECT_EQ(Ask(R"({"op":"connect"})"),
            Refusal("检测到其他 VPN 正在使用网络（Meta）。请先退出 v2rayN / Clash 等客户端的 TUN "
                    "模式，再连接。"));
  ExpectSameNetwork(machine.Network(), expected);
}

TEST_F(Refusals, RefusedConnectDoesNotSpoilTheNext) {
  machine.Edit(RemoveDefaultRoute);
  StartService();
  ASSERT_EQ(Ask(R"({"op":"connect"})"), Refusal("no physical default gateway"));
  machine.Edit([](MachineState& state) { state.network = netmodel::TypicalNetwork(); });
  EXPECT_EQ(Ask(R"({"op":"connect"})"), kUp);
}

}  // namespace
}  // namespace e2e
