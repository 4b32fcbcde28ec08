// A connect and what it leaves the machine like.
#include "tests/e2e/harness/expect.h"
#include "tests/e2e/harness/service_test.h"
#include "tests/e2e/harness/waiting.h"

namespace e2e {
namespace {

class Connect : public ServiceTest {};

TEST_F(Connect, TunnelTakesTheMachinesTraffic) {
  StartService();
  ASSERT_EQ(Ask(R"({"op":"connect"})"), kUp);
  const netmodel::Network network = machine.Network();
  ExpectLines(RouteTexts(network),
              {"0.0.0.0/0 via 192.168.1.1 metric 25 on 以太网",
               "127.0.0.0/8 via 0.0.0.0 metric 331 on Loopback Pseudo-Interface 1",
               "192.168.1.0/24 via 0.0.0.0 metric 281 on 以太网",
               "192.168.1.20/32 via 0.0.0.0 metric 281 on 以太网",
               "203.0.113.9/32 via 192.168.1.1 metric 1 on 以太网",
               "0.0.0.0/1 via 192.168.123.1 metric 5 on tavrin",
               "128.0.0.0/1 via 192.168.123.1 metric 5 on tavrin"});
  const netmodel::Adapter* tunnel = network.FindByAlias("tavrin");
  ASSERT_NE(tunnel, nullptr);
  EXPECT_EQ(tunnel->addresses, (std::vector<netmodel::UnicastAddress>{{0xC0A87B01, 24}}));
  EXPECT_EQ(tunnel->dnsServers, Lines{"1.1.1.1"});
  EXPECT_EQ(tunnel->dadTransmits, 0U);
  EXPECT_FALSE(tunnel->ipv6Enabled);
  const netmodel::Adapter* physical = network.FindByAlias("以太网");
  ASSERT_NE(physical, nullptr);
  EXPECT_FALSE(physical->ipv6RouterDiscovery);
  EXPECT_EQ(physical->dnsServers, Lines{"192.168.1.1"});
  EXPECT_TRUE(network.ipv6Routes.empty());
}

TEST_F(Connect, DisconnectPutsTheMachineBack) {
  StartService();
  ASSERT_EQ(Ask(R"({"op":"connect"})"), kUp);
  const HANDLE xray = machine.OpenLast("xray.exe");
  const HANDLE tun2socks = machine.OpenLast("tun2socks-windows-amd64.exe");
  ASSERT_NE(xray, nullptr);
  ASSERT_NE(tun2socks, nullptr);
  EXPECT_EQ(Ask(R"({"op":"disconnect"})"), kDown);
  ExpectEnds(xray);
  ExpectEnds(tun2socks);
  ExpectSameNetwork(machine.Network(), netmodel::TypicalNetwork());
}

TEST_F(Connect, TraceNamesEveryStep) {
  StartService();
  ASSERT_EQ(Ask(R"({"op":"connect"})"), kUp);
  ExpectLines(
      TraceLabels(),
      {"stop() idle", "kill stale (clean)", "find physical route", "pin panel hosts", "spawn xray",
       "xray socks listening", "spawn tun2socks", "wintun adapter up", "set tun address (api)",
       "set tun dns (api)", "tun ipv4 ready", "routes installed", "ipv6 leak blocked"});
  const std::string text = ReadText(box.trace());
  EXPECT_EQ(text.substr(0, 16), "\xEF\xBB\xBFstop() idle  ");
  EXPECT_EQ(text.substr(text.size() - 4), "ms\r\n");
}

TEST_F(Connect, TraceGoesWhereTheEnvironmentSays) {
  const std::wstring path = box.root() + L"\\trace elsewhere.log";
  StartService({{L"TAVRIN_TIMING", path}});
  ASSERT_EQ(Ask(R"({"op":"connect"})"), kUp);
  EXPECT_EQ(ReadLines(path).size(), 13U);
  EXPECT_FALSE(Exists(box.trace()));
}

TEST_F(Connect, TraceThatCannotBeWrittenDoesNotMatter) {
  StartService({{L"TAVRIN_TIMING", box.root() + L"\\no such directory\\trace.log"}});
  EXPECT_EQ(Ask(R"({"op":"connect"})"), kUp);
  EXPECT_FALSE(Exists(box.trace()));
}

TEST_F(Connect, SecondConnectReplacesTheTunnel) {
  StartService();
  ASSERT_EQ(Ask(R"({"op":"connect"})"), kUp);
  const HANDLE xray = machine.OpenLast("xray.exe");
  const HANDLE tun2socks = machine.OpenLast("tun2socks-windows-amd64.exe");
  ASSERT_EQ(Ask(R"({"op":"connect"})"), kUp);
  ExpectEnds(xray);
  ExpectEnds(tun2socks);
  EXPECT_EQ(machine.Network().FindByAlias("tavrin")->index, 41U);
  EXPECT_EQ(RouteTexts(machine.Network()).size(), 7U);
  const Lines labels = TraceLabels();
  ASSERT_EQ(labels.size(), 26U);
  EXPECT_EQ(labels[13], "stop() own session");
  EXPECT_EQ(labels[14], "skip orphan scan");
  EXPECT_EQ(labels[25], "ipv6 leak blocked");
  EXPECT_EQ(Ask(R"({"op":"disconnect"})"), kDown);
  ExpectSameNetwork(machine.Network(), netmodel::TypicalNetwork());
}

TEST_F(Connect, UnknownNodeNameFallsBackToTheFirstNode) {
  StartService();
  EXPECT_EQ(Ask(R"({"op":"connect","node":"大阪 7"})"), kUp);
  EXPECT_EQ(RouteTexts(machine.Network()).at(4),
            "203.0.113.9/32 via 192.168.1.1 metric 1 on 以太网");
}

// The account file changes while the fetched copy is fresh: a known name is served from the copy,
// an unknown one asks the file again.
TEST_F(Connect, AccountIsKeptUntilAnUnknownNodeIsAskedFor) {
  StartService();
  ASSERT_EQ(Ask(R"({"op":"connect"})"), kUp);
  Account moved;
  moved.address = "198.51.100.77";
  WriteAccount(moved);
  ASSERT_EQ(Ask(R"({"op":"connect","node":"东京 1"})"), kUp);
  EXPECT_EQ(RouteTexts(machine.Network()).at(4),
            "203.0.113.9/32 via 192.168.1.1 metric 1 on 以太网");
  ASSERT_EQ(Ask(R"({"op":"connect","node":"elsewhere"})"), kUp);
  EXPECT_EQ(RouteTexts(machine.Network()).at(4),
            "198.51.100.77/32 via 192.168.1.1 metric 1 on 以太网");
}

TEST_F(Connect, SlowHelpersAreWaitedFor) {
  machine.Edit([](standins::MachineState& state) {
    state.xray.delayMs = 400;
    state.tun2socks.delayMs = 200;
    state.tun2socks.downMs = 200;
    state.tun2socks.defaultNameFirst = true;
  });
  StartService();
  EXPECT_EQ(Ask(R"({"op":"connect"})"), kUp);
  EXPECT_EQ(Ask(R"({"op":"disconnect"})"), kDown);
  ExpectSameNetwork(machine.Network(), netmodel::TypicalNetwork());
}

TEST_F(Connect, AddressThatWindowsGaveTheAdapterIsReplaced) {
  machine.Edit([](standins::MachineState& state) { state.tun2socks.automaticAddress = true; });
  StartService();
  ASSERT_EQ(Ask(R"({"op":"connect"})"), kUp);
  EXPECT_EQ(machine.Network().FindByAlias("tavrin")->addresses,
            (std::vector<netmodel::UnicastAddress>{{0xC0A87B01, 24}}));
}

TEST_F(Connect, RefusedNameServerLeavesTheTunnelUp) {
  machine.Edit([](standins::MachineState& state) {
    state.faults = {{.call = "SetInterfaceDnsSettings", .times = 1, .code = 5}};
  });
  StartService();
  EXPECT_EQ(Ask(R"({"op":"connect"})"), kUp);
  EXPECT_EQ(TraceLabels().at(9), "set tun dns (api fail)");
  EXPECT_TRUE(machine.Network().FindByAlias("tavrin")->dnsServers.empty());
}

TEST_F(Connect, FailingNetshDoesNotMatter) {
  machine.Edit([](standins::MachineState& state) { state.netsh.exitCode = 1; });
  StartService();
  EXPECT_EQ(Ask(R"({"op":"connect"})"), kUp);
  EXPECT_EQ(machine.Starts("netsh.exe"), 5U);
}

TEST_F(Connect, HangingNetshIsKilledAndDoesNotMatter) {
  machine.Edit([](standins::MachineState& state) { state.netsh.hangsOn = "8000::/1"; });
  StartService();
  EXPECT_EQ(Ask(R"({"op":"connect"})"), kUp);
  ExpectEnds(machine.OpenLast("netsh.exe"));
}

TEST_F(Connect, TwoNameServersOnThePhysicalInterfaceAreLeftAlone) {
  machine.Edit([](standins::MachineState& state) {
    netmodel::Adapter* ethernet = state.network.FindByAlias("以太网");
    state.network.SetDnsServers(ethernet->guid, "1.1.1.1,8.8.8.8");
  });
  StartService();
  ASSERT_EQ(Ask(R"({"op":"connect"})"), kUp);
  EXPECT_EQ(TraceLabels().at(3), "pin panel hosts");
  EXPECT_EQ(machine.Network().FindByAlias("以太网")->dnsServers, (Lines{"1.1.1.1", "8.8.8.8"}));
}

class ConnectInAnOddDirectory : public ServiceTest {
 protected:
  ConnectInAnOddDirectory() : ServiceTest(L"运行 目录 (x)") {}
};

TEST_F(ConnectInAnOddDirectory, BlanksAndChineseInThePathAreNoObstacle) {
  StartService();
  EXPECT_EQ(Ask(R"({"op":"connect"})"), kUp);
  EXPECT_TRUE(Exists(box.runtime() + L"\\xray-error.log"));
  EXPECT_EQ(Ask(R"({"op":"disconnect"})"), kDown);
  ExpectSameNetwork(machine.Network(), netmodel::TypicalNetwork());
}

}  // namespace
}  // namespace e2e
