// The start behind a run that crashed: its orphans, and the name server that it left.
#include <algorithm>

#include "tests/unit/tunnel/tunnel_fixture.h"

namespace unit {
namespace {

class TunnelOrphans : public TunnelTest {
 protected:
  // A tun2socks of a crashed run whose adapter with its routes outlives it for a while.
  void SeedTunOrphan(std::uint64_t vanishesAfter) {
    sim::AdapterPlan plan = sim::TavrinAdapter();
    plan.appearsAfter = plan.renamedAfter = 0;
    plan.upAfter = 0;
    plan.vanishesAfter = vanishesAfter;
    plan.adapter.dnsServers = {"1.1.1.1"};
    plan.adapter.dnsFromDhcp = false;
    machine.processes.Seed(L"C:\\run\\tun2socks\\tun2socks-old.exe", 0,
                           sim::Script().BringsAdapter(plan));
    ASSERT_NE(Tun(), nullptr);
    machine.network.routes.push_back({Tun()->luid, 0, 1, 0xC0A87B01, 5});
    machine.network.routes.push_back({Tun()->luid, 0x80000000, 1, 0xC0A87B01, 5});
    machine.network.ipv6Routes.push_back({Tun()->luid, "::/1"});
    machine.network.ipv6Routes.push_back({Tun()->luid, "8000::/1"});
  }
  // Whatever was seeded ends by itself.
  void EndSeeded() {
    const auto started = machine.processes.Started();
    for (const auto& process : machine.processes.All()) {
      const bool isSeeded =
          !process->own && std::find(started.begin(), started.end(), process) == started.end();
      machine.processes.Exit(isSeeded ? process->id : 0, 0);
    }
  }
};

const std::string kDiscoveryOn =
    "netsh interface ipv6 set interface \"以太网\" routerdiscovery=enabled store=active";

TEST_F(TunnelOrphans, OrphansAreKilledAndWhatTheyLeftIsCleaned) {
  machine.processes.Seed(L"C:\\run\\xray\\xray.exe");
  SeedTunOrphan(600);
  machine.processes.Seed(L"D:\\other\\xray.exe");
  machine.faults.Before("RegOpenKeyExW", 1, [this] {
    ASSERT_NE(Tun(), nullptr) << "the adapter is about to vanish";
    EXPECT_EQ(TunRoutes(), Texts());
    EXPECT_EQ(Tun()->dnsServers, Texts());
  });
  ASSERT_TRUE(Start());
  Texts labels = kFirstStartLabels;
  labels.at(1) = "kill stale (hit)";
  EXPECT_EQ(Labels(), labels);
  EXPECT_EQ(machine.processes.Alive(),
            (Texts{"xray.exe", "xray.exe", "tun2socks-windows-amd64.exe"}))
      << "the foreign one and the new ones";
  EXPECT_EQ(First(NetshLines(), 3),
            (Texts{kDiscoveryOn, "netsh interface ipv6 delete route ::/1 interface=\"tavrin\"",
                   "netsh interface ipv6 delete route 8000::/1 interface=\"tavrin\""}));
  EndSeeded();
}

TEST_F(TunnelOrphans, TheCleanUpRunsAfterAPauseAndInThisOrder) {
  machine.processes.Seed(L"C:\\run\\xray\\xray.exe");
  SeedTunOrphan(600);
  ASSERT_TRUE(Start());
  const Texts order = machine.calls.Sequence({"TerminateProcess", "Sleep", "GetIpForwardTable2",
                                              "CreateProcessW", "GetAdaptersAddresses",
                                              "DeleteIpForwardEntry2", "SetInterfaceDnsSettings"});
  EXPECT_EQ(First(order, 12),
            (Texts{"TerminateProcess process xray.exe, 0",
                   "TerminateProcess process tun2socks-old.exe, 0", "Sleep 150",
                   "GetIpForwardTable2 2", NetshCall(kDiscoveryOn.substr(6)),
                   "GetAdaptersAddresses 0, 0x0", "GetAdaptersAddresses 0, 0x0",
                   "DeleteIpForwardEntry2 \"tavrin\" 0.0.0.0/1 via 192.168.123.1",
                   "DeleteIpForwardEntry2 \"tavrin\" 128.0.0.0/1 via 192.168.123.1",
                   "SetInterfaceDnsSettings \"\", 0x2",
                   NetshCall("interface ipv6 delete route ::/1 interface=\"tavrin\""),
                   NetshCall("interface ipv6 delete route 8000::/1 interface=\"tavrin\"")}));
}

TEST_F(TunnelOrphans, BothSearchesRunWhateverTheFirstOneFound) {
  for (const wchar_t* orphan : {L"C:\\run\\xray\\xray.exe", L"C:\\run\\tun2socks\\tun2socks.exe"}) {
    SCOPED_TRACE(testing::PrintToString(std::wstring(orphan)));
    machine.processes.Seed(orphan);
    machine.calls.Clear();
    ASSERT_TRUE(Start());
    EXPECT_EQ(machine.calls.Count("CreateToolhelp32Snapshot"), 2u);
    EXPECT_EQ(Last(Labels(), 12).at(0), "kill stale (hit)");
    manager->stop();
  }
}

TEST_F(TunnelOrphans, TheCleanUpUsesTheConfiguredTunAddress) {
  SeedTunOrphan(600);
  config.tunAddress = L"10.7.7.1";
  ASSERT_TRUE(Start());
  EXPECT_EQ(machine.calls.TextsOf("DeleteIpForwardEntry2").at(0),
            "\"tavrin\" 0.0.0.0/1 via 10.7.7.1");
}

TEST_F(TunnelOrphans, TheCleanUpUsesTheDefaultForAnEmptyTunAddress) {
  SeedTunOrphan(600);
  config.tunAddress.clear();
  ASSERT_TRUE(Start());
  EXPECT_EQ(machine.calls.TextsOf("DeleteIpForwardEntry2").at(0),
            "\"tavrin\" 0.0.0.0/1 via 192.168.123.1");
}

TEST_F(TunnelOrphans, AnUnknownPhysicalRouteInTheCleanUpIsIgnored) {
  machine.processes.Seed(L"C:\\run\\xray\\xray.exe");
  machine.faults.Fail("GetIpForwardTable2", {.nth = 1});
  EXPECT_TRUE(Start());
  EXPECT_EQ(error, L"as before");
  EXPECT_EQ(NetshLines().size(), 5u) << "no router discovery without an alias";
  EXPECT_EQ(NetshLines().at(0),
            "netsh interface ipv6 set interface \"以太网\" routerdiscovery=disabled store=active");
}

TEST_F(TunnelOrphans, AnUnknownPhysicalRouteBehindTheCleanUpEndsTheStart) {
  machine.processes.Seed(L"C:\\run\\xray\\xray.exe");
  machine.faults.FailAlways("GetIpForwardTable2");
  EXPECT_FALSE(Start());
  EXPECT_EQ(error, L"GetIpForwardTable2 failed");
  EXPECT_EQ(Labels(), (Texts{"stop() idle", "kill stale (hit)"}));
}

TEST_F(TunnelOrphans, WithoutOrphansNothingIsCleanedEvenIfAnAdapterIsThere) {
  SeedTunOrphan(100000);
  EndSeeded();
  ASSERT_NE(Tun(), nullptr);
  machine.listeners.Listen(17593);
  EXPECT_FALSE(Start());
  EXPECT_EQ(NetshLines(), Texts());
  EXPECT_EQ(Actions(), Texts());
  EXPECT_EQ(TunRoutes().size(), 2u);
  EXPECT_EQ(machine.calls.Count("Sleep"), 0u) << "nor is there a pause";
  machine.clock.Advance(100000);
}

TEST_F(TunnelOrphans, ACrashThatTookTheChildrenAlongLeavesNoOrphanAndNothingIsCleaned) {
  const sim::ProcessRun crash = machine.RunProcess([this] {
    vpn::TunnelManager crashing;
    EXPECT_TRUE(crashing.start(config));
    machine.faults.ResetCount();
    machine.faults.KillAt(1);
    (void)crashing.childrenAlive();
  });
  ASSERT_TRUE(crash.killed);
  ASSERT_EQ(machine.processes.Alive(), Texts()) << "the job took them";
  ASSERT_EQ(Pins(), (Texts{"198.51.100.20", "198.51.100.30"})) << "what the crash left";
  ASSERT_FALSE(Ethernet().ipv6RouterDiscovery);
  const size_t commands = NetshLines().size();
  machine.faults.Clear();
  ASSERT_TRUE(Start());
  EXPECT_EQ(Last(Labels(), 13), kFirstStartLabels) << "no hit";
  EXPECT_EQ(NetshLines().at(commands),
            "netsh interface ipv6 set interface \"以太网\" routerdiscovery=disabled store=active");
  EXPECT_EQ(NetshLines().size(), commands + 5);
  manager->stop();
  ExpectNetworkAsBefore();
}

TEST_F(TunnelOrphans, ProcessesOfTheseNamesElsewhereSurviveAStartAndAStop) {
  machine.processes.Seed(L"D:\\v2ray\\xray.exe");
  machine.processes.Seed(L"D:\\v2ray\\tun2socks.exe");
  ASSERT_TRUE(Start());
  EXPECT_EQ(Last(Labels(), 12).at(0), "kill stale (clean)");
  manager->stop();
  EXPECT_EQ(machine.processes.Alive(), (Texts{"xray.exe", "tun2socks.exe"}));
  EndSeeded();
}

// A name server of ours on the physical interface

class LeftoverServer : public TunnelTest {
 protected:
  bool StartWith(const Texts& servers) {
    Ethernet().dnsServers = servers;
    Ethernet().dnsFromDhcp = false;
    RememberMachine();
    return Start();
  }
  bool WasReset() const {
    const Texts lines = NetshLines();
    return std::count(lines.begin(), lines.end(),
                      "netsh interface ipv4 set dnsservers name=\"以太网\" source=dhcp") == 1;
  }
};

TEST_F(LeftoverServer, OursAloneGoesBackToDhcpBeforeThePinsAndHasItsLabel) {
  Ethernet().dnsServers = {"1.1.1.1"};
  ASSERT_TRUE(Start());
  EXPECT_TRUE(WasReset());
  EXPECT_EQ(Ethernet().dnsServers, Texts{"192.168.1.1"});
  Texts labels = kFirstStartLabels;
  labels.insert(labels.begin() + 3, "reset physical dns (netsh)");
  EXPECT_EQ(Labels(), labels);
  const Texts order = machine.calls.Sequence({"CreateProcessW", "DeleteIpForwardEntry2"});
  EXPECT_EQ(order.at(0), NetshCall("interface ipv4 set dnsservers name=\"以太网\" source=dhcp"));
}

TEST_F(LeftoverServer, AFailedResetIsIgnoredAndMarkedAllTheSame) {
  machine.programs.OnNext(L"netsh.exe", sim::Idle());
  ASSERT_TRUE(StartWith({"1.1.1.1"}));
  EXPECT_TRUE(WasReset());
  EXPECT_EQ(Labels().at(3), "reset physical dns (netsh)");
  EXPECT_EQ(Ethernet().dnsServers, Texts{"1.1.1.1"});
}

TEST_F(LeftoverServer, AnIpv6ServerBesideOursDoesNotCount) {
  Ethernet().dnsServers = {"2001:db8::53", "1.1.1.1"};
  ASSERT_TRUE(Start());
  EXPECT_TRUE(WasReset());
}

TEST_F(LeftoverServer, AnyOtherListIsLeftAlone) {
  for (const Texts& servers :
       {Texts{"1.1.1.1", "8.8.8.8"}, Texts{"8.8.8.8", "1.1.1.1"}, Texts{"1.1.1.1", "1.1.1.1"},
        Texts{"1.0.0.1"}, Texts{"1.1.1.11"}, Texts{"2001:db8::53"}, Texts{}}) {
    SCOPED_TRACE(testing::PrintToString(servers));
    ASSERT_TRUE(StartWith(servers));
    EXPECT_FALSE(WasReset());
    EXPECT_EQ(Ethernet().dnsServers, servers);
    EXPECT_EQ(Last(Labels(), 10).at(0), "pin panel hosts");
    manager->stop();
    EXPECT_EQ(Ethernet().dnsServers, servers) << "nor does the teardown touch it";
  }
}

}  // namespace
}  // namespace unit
