// The start that succeeds: its order, its command lines, and what it leaves on the machine.
#include "tests/unit/tunnel/tunnel_fixture.h"

namespace unit {
namespace {

class TunnelStart : public TunnelTest {};

TEST_F(TunnelStart, AFirstStartChangesTheMachineInThisOrder) {
  ASSERT_TRUE(Start());
  EXPECT_EQ(
      Actions(),
      (Texts{
          "DeleteIpForwardEntry2 \"以太网\" 198.51.100.20/32 via 192.168.1.1",
          "CreateIpForwardEntry2 \"以太网\" 198.51.100.20/32 via 192.168.1.1 metric 1",
          "CreateJobObjectW null",
          "SetInformationJobObject job, 9, 144, 0x2000",
          "CreateProcessW \"C:\\run\\xray\\xray.exe\", \"\"C:\\run\\xray\\xray.exe\" run -c "
          "\"C:\\run\\session.json.xray.json\"\", own, 0x8000004, \"C:\\run\\xray\", 1, 0",
          "AssignProcessToJobObject job, process xray.exe",
          "ResumeThread thread of xray.exe",
          "CreateProcessW \"C:\\run\\tun2socks\\tun2socks-windows-amd64.exe\", "
          "\"\"C:\\run\\tun2socks\\tun2socks-windows-amd64.exe\" --loglevel warn --device tavrin "
          "--mtu 1400 --tcp-auto-tuning --tcp-sndbuf 4m --tcp-rcvbuf 4m --proxy "
          "socks5://127.0.0.1:17593\", own, 0x8000004, \"C:\\run\\tun2socks\", 1, 0",
          "AssignProcessToJobObject job, process tun2socks-windows-amd64.exe",
          "ResumeThread thread of tun2socks-windows-amd64.exe",
          "SetIpInterfaceEntry \"tavrin\", 0",
          "CreateUnicastIpAddressEntry \"tavrin\", 192.168.123.1/24",
          "SetInterfaceDnsSettings \"1.1.1.1\", 0x2",
          "DeleteIpForwardEntry2 \"以太网\" 198.51.100.30/32 via 192.168.1.1",
          "CreateIpForwardEntry2 \"以太网\" 198.51.100.30/32 via 192.168.1.1 metric 1",
          "CreateIpForwardEntry2 \"tavrin\" 0.0.0.0/1 via 192.168.123.1 metric 5",
          "CreateIpForwardEntry2 \"tavrin\" 128.0.0.0/1 via 192.168.123.1 metric 5",
          NetshCall(
              "interface ipv6 set interface \"以太网\" routerdiscovery=disabled store=active"),
          NetshCall("interface ipv6 delete route ::/0 interface=\"以太网\""),
          NetshCall("interface ipv6 set interface \"tavrin\" admin=disabled store=active"),
          NetshCall("interface ipv6 delete route ::/1 interface=\"tavrin\""),
          NetshCall("interface ipv6 delete route 8000::/1 interface=\"tavrin\"")}));
}

TEST_F(TunnelStart, OldStateRefusalsFilesAndThePhysicalSideComeBeforeTheJob) {
  MakeHelpersQuick();
  ASSERT_TRUE(Start());
  const Texts order = machine.calls.Sequence(
      {"CreateToolhelp32Snapshot", "RegOpenKeyExW", "connect", "FindFirstFileW",
       "GetFileAttributesW", "GetIpForwardTable2", "GetAdaptersAddresses", "CreateJobObjectW"});
  EXPECT_EQ(First(order, 14),
            (Texts{"CreateToolhelp32Snapshot 0x2, 0", "CreateToolhelp32Snapshot 0x2, 0",
                   "GetAdaptersAddresses 0, 0x0", "GetAdaptersAddresses 0, 0x0",
                   "RegOpenKeyExW 0x80000001, \"Software\\Microsoft\\Windows\\CurrentVersion\\"
                   "Internet Settings\", 0x1",
                   "connect socket, 17593", "FindFirstFileW \"C:\\run\\tun2socks\\tun2socks*.exe\"",
                   "GetFileAttributesW \"C:\\run\\xray\\xray.exe\"",
                   "GetFileAttributesW \"C:\\run\\tun2socks\\wintun.dll\"",
                   "GetFileAttributesW \"C:\\run\\session.json.xray.json\"", "GetIpForwardTable2 2",
                   "GetAdaptersAddresses 2, 0x10", "GetAdaptersAddresses 2, 0x10",
                   "CreateJobObjectW null"}));
}

TEST_F(TunnelStart, WhatItLeavesOnTheMachineIsExactlyTheTunnel) {
  ASSERT_TRUE(Start());
  EXPECT_EQ(error, L"as before");
  EXPECT_TRUE(manager->childrenAlive());
  EXPECT_EQ(machine.processes.Alive(), (Texts{"xray.exe", "tun2socks-windows-amd64.exe"}));
  ASSERT_NE(Tun(), nullptr);
  EXPECT_EQ(Tun()->addresses, (std::vector<netmodel::UnicastAddress>{{0xC0A87B01, 24}}));
  EXPECT_EQ(Tun()->dnsServers, Texts{"1.1.1.1"});
  EXPECT_EQ(Tun()->dadTransmits, 0u);
  EXPECT_FALSE(Tun()->ipv6Enabled);
  EXPECT_EQ(TunRoutes(), (Texts{"0.0.0.0/1 via 192.168.123.1 metric 5",
                                "128.0.0.0/1 via 192.168.123.1 metric 5"}));
  EXPECT_EQ(Pins(), (Texts{"198.51.100.20", "198.51.100.30"}));
  EXPECT_FALSE(Ethernet().ipv6RouterDiscovery);
  EXPECT_EQ(Ethernet().dnsServers, Texts{"192.168.1.1"});
}

TEST_F(TunnelStart, TheJobBothChildrenAndTheirThreadsStayOpenAndNothingElse) {
  ASSERT_TRUE(Start());
  EXPECT_EQ(machine.OpenHandles(),
            (Texts{"job from CreateJobObjectW", "process xray.exe from CreateProcessW",
                   "thread of xray.exe from CreateProcessW",
                   "process tun2socks-windows-amd64.exe from CreateProcessW",
                   "thread of tun2socks-windows-amd64.exe from CreateProcessW"}));
}

TEST_F(TunnelStart, AnAddressThatTheAdapterHadIsReplaced) {
  MakeHelpersQuick();
  sim::AdapterPlan plan = sim::TavrinAdapter();
  plan.adapter.addresses = {{0xA9FE0102, 16}};
  machine.programs.On(L"tun2socks*.exe", sim::Script().BringsAdapter(plan));
  ASSERT_TRUE(Start());
  EXPECT_EQ(Tun()->addresses, (std::vector<netmodel::UnicastAddress>{{0xC0A87B01, 24}}));
}

// The config's texts

TEST_F(TunnelStart, AnEmptyTunAddressIsTheDefault) {
  config.tunAddress.clear();
  ASSERT_TRUE(Start());
  EXPECT_EQ(Tun()->addresses, (std::vector<netmodel::UnicastAddress>{{0xC0A87B01, 24}}));
  EXPECT_EQ(TunRoutes(), (Texts{"0.0.0.0/1 via 192.168.123.1 metric 5",
                                "128.0.0.0/1 via 192.168.123.1 metric 5"}));
}

TEST_F(TunnelStart, AnotherTunAddressIsAlsoTheNextHopOfTheSplitRoutes) {
  config.tunAddress = L"10.7.7.1";
  ASSERT_TRUE(Start());
  EXPECT_EQ(Tun()->addresses, (std::vector<netmodel::UnicastAddress>{{0x0A070701, 24}}));
  EXPECT_EQ(TunRoutes(),
            (Texts{"0.0.0.0/1 via 10.7.7.1 metric 5", "128.0.0.0/1 via 10.7.7.1 metric 5"}));
  manager->stop();
  EXPECT_EQ(TunRoutes(), Texts());
}

TEST_F(TunnelStart, AnEmptyServerAddressPinsTheBuiltInNode) {
  config.serverAddress.clear();
  ASSERT_TRUE(Start());
  EXPECT_EQ(Pins(), (Texts{"198.51.100.20", "203.0.113.10"}));
}

TEST_F(TunnelStart, ANodeGivenByHostNamePinsTheBuiltInNodeWithoutALookUp) {
  for (const wchar_t* host : {L"node.example", L"1.2.3", L"1.2.3.4.5", L"2001:db8::1"}) {
    SCOPED_TRACE(testing::PrintToString(std::wstring(host)));
    config.serverAddress = host;
    ASSERT_TRUE(Start());
    EXPECT_EQ(error, L"as before");
    EXPECT_EQ(Pins(), (Texts{"198.51.100.20", "203.0.113.10"}));
  }
  EXPECT_EQ(machine.names.Asked(), Texts(4, "panel.example"));
}

TEST_F(TunnelStart, TheConfigRecordNamesTheBuiltInNodeAndNothingElseByItself) {
  const vpn::TunnelConfig fresh;
  EXPECT_EQ(fresh.serverAddress, L"203.0.113.10");
  EXPECT_EQ(fresh.tunAddress, L"");
  EXPECT_EQ(fresh.panelHosts, WideTexts());
}

TEST_F(TunnelStart, PathsWithBlanksAreQuotedAndNotEscaped) {
  machine.PutHelpers(L"C:\\my run");
  config.xrayDir = L"C:\\my run\\xray";
  config.tun2socksDir = L"C:\\my run\\tun2socks";
  ASSERT_TRUE(Start());
  const Texts lines = machine.processes.StartedCommandLines();
  EXPECT_EQ(lines.at(0),
            "\"C:\\my run\\xray\\xray.exe\" run -c \"C:\\run\\session.json.xray.json\"");
  EXPECT_EQ(
      lines.at(1),
      "\"C:\\my run\\tun2socks\\tun2socks-windows-amd64.exe\" --loglevel warn --device tavrin "
      "--mtu 1400 --tcp-auto-tuning --tcp-sndbuf 4m --tcp-rcvbuf 4m --proxy "
      "socks5://127.0.0.1:17593");
}

TEST_F(TunnelStart, OfTwoTun2socksFilesTheFirstListedIsStarted) {
  machine.files.Put(L"C:\\run\\tun2socks\\tun2socks-a.exe");
  ASSERT_TRUE(Start());
  EXPECT_EQ(machine.processes.Started().at(1)->image,
            L"C:\\run\\tun2socks\\tun2socks-windows-amd64.exe");
}

// Steps that never fail a start

TEST_F(TunnelStart, ANameServerThatIsRefusedOnlyChangesTheLabel) {
  machine.faults.Fail("SetInterfaceDnsSettings");
  ASSERT_TRUE(Start());
  EXPECT_EQ(error, L"as before");
  EXPECT_TRUE(manager->childrenAlive());
  EXPECT_EQ(Tun()->dnsServers, Texts());
  EXPECT_EQ(machine.calls.Count("SetInterfaceDnsSettings"), 1u) << "there is no second attempt";
  Texts labels = kFirstStartLabels;
  labels.at(9) = "set tun dns (api fail)";
  EXPECT_EQ(Labels(), labels);
}

TEST_F(TunnelStart, CommandsOfTheIpv6BlockMayFailOrNotStart) {
  machine.programs.OnNext(L"netsh.exe", sim::Script().FailsToStart(5));
  machine.programs.OnNext(L"netsh.exe", sim::Script().Exits(1, 10));
  EXPECT_TRUE(Start());
  EXPECT_EQ(error, L"as before");
  EXPECT_EQ(NetshLines().size(), 4u) << "the one that did not start, and the rest";
  EXPECT_EQ(Labels(), kFirstStartLabels);
  AllowNetworkChanges();
}

TEST_F(TunnelStart, CommandsThatHangCostTheirBudgetAndNoMore) {
  machine.programs.On(L"netsh.exe", sim::Idle());
  const std::uint64_t before = machine.clock.Now();
  EXPECT_TRUE(Start());
  EXPECT_EQ(machine.clock.Now() - before, 1410u + 5 * 2500u);
  EXPECT_EQ(machine.processes.Alive(), (Texts{"xray.exe", "tun2socks-windows-amd64.exe"}));
}

TEST_F(TunnelStart, PanelHostsThatDontResolveStopNothing) {
  config.panelHosts = {L"nowhere.example", L"", L"panel.example"};
  EXPECT_TRUE(Start());
  EXPECT_EQ(Pins(), (Texts{"198.51.100.20", "198.51.100.30"}));
}

TEST_F(TunnelStart, ATraceThatCantBeWrittenDoesNotAffectTheStart) {
  machine.environment.Set(L"TAVRIN_TIMING", L"D:\\nowhere\\trace.log");
  EXPECT_TRUE(Start());
  EXPECT_TRUE(manager->childrenAlive());
}

TEST_F(TunnelStart, AListenerOfSomebodyElseThatComesAfterTheCheckIsTakenForXray) {
  machine.clock.After(100, [this] { machine.listeners.Listen(17593); });
  EXPECT_TRUE(Start()) << "Xray was still loading when the port answered";
  EXPECT_FALSE(manager->childrenAlive()) << "it has ended since, as the port was taken";
}

}  // namespace
}  // namespace unit
