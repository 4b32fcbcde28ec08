// What goes wrong in a teardown, and what does not keep it from going on.
#include <algorithm>

#include "tests/unit/tunnel/tunnel_fixture.h"

namespace unit {
namespace {

class TunnelStopFailures : public TunnelTest {
 protected:
  void StartAndForgetCalls() {
    ASSERT_TRUE(Start());
    machine.calls.Clear();
  }
  void Stop() {
    const std::uint64_t before = machine.clock.Now();
    manager->stop();
    took = machine.clock.Now() - before;
  }
  void EndChild(size_t position) {
    machine.processes.Exit(machine.processes.Started().at(position)->id, 1);
  }
  void TakesToDie(std::uint64_t xray, std::uint64_t tun2socks) {
    machine.programs.On(L"xray.exe", sim::TypicalXray().TakesToDie(xray));
    machine.programs.On(L"tun2socks*.exe", sim::TypicalTun2socks().TakesToDie(tun2socks));
  }
  // The router discovery of a stop did not get through; that is put right by hand.
  void RestoreDiscovery() {
    EXPECT_FALSE(Ethernet().ipv6RouterDiscovery);
    Ethernet().ipv6RouterDiscovery = true;
    machine.network.ipv6Routes.push_back({Ethernet().luid, "::/0"});
  }

  void DropPins() {
    std::erase_if(machine.network.routes, [this](const netmodel::Route& route) {
      const std::string destination = netmodel::FormatIpv4(route.destination);
      return route.luid == Ethernet().luid && route.nextHop == kGateway && route.metric == 1 &&
             (destination == "198.51.100.20" || destination == "198.51.100.30") &&
             route.prefixLength == 32;
    });
  }

  std::uint64_t took = 0;
};

// The children

TEST_F(TunnelStopFailures, AChildThatHasExitedIsNotTerminatedAndItsHandlesAreClosed) {
  for (const size_t dead : {0u, 1u}) {
    SCOPED_TRACE(dead);
    manager = std::make_unique<vpn::TunnelManager>();
    const size_t before = machine.processes.Started().size();
    ASSERT_TRUE(Start());
    EndChild(before + dead);
    machine.calls.Clear();
    Stop();
    EXPECT_EQ(machine.calls.TextsOf("TerminateProcess"),
              Texts{dead == 0 ? "process tun2socks-windows-amd64.exe, 0" : "process xray.exe, 0"});
    EXPECT_EQ(machine.OpenHandles(), Texts());
  }
}

TEST_F(TunnelStopFailures, ChildrenThatDieWithinTheirTwoHundredMillisecondsAreAwaited) {
  TakesToDie(200, 150);
  StartAndForgetCalls();
  Stop();
  EXPECT_EQ(took, 200u + 3 * 60u);
  EXPECT_EQ(machine.processes.Alive(), Texts());
}

TEST_F(TunnelStopFailures, AnExpiredWaitChangesNothing) {
  TakesToDie(10000, 10000);
  StartAndForgetCalls();
  Stop();
  EXPECT_EQ(took, 200u + 200u + 3 * 60u) << "each child has its own wait";
  EXPECT_EQ(machine.OpenHandles(), Texts());
  EXPECT_EQ(machine.calls.Count("TerminateProcess"), 2u) << "nothing is tried twice";
  EXPECT_EQ(machine.calls.Count("DeleteIpForwardEntry2"), 5u);
  EXPECT_EQ(Pins(), Texts());
  machine.clock.Advance(10000);
}

TEST_F(TunnelStopFailures, AChildThatCantBeTerminatedGoesWithTheJob) {
  StartAndForgetCalls();
  machine.faults.FailAlways("TerminateProcess");
  machine.faults.Before("CloseHandle", 5, [this] {
    EXPECT_EQ(machine.processes.Alive(), (Texts{"xray.exe", "tun2socks-windows-amd64.exe"}));
  });
  Stop();
  EXPECT_EQ(machine.processes.Alive(), Texts());
  EXPECT_EQ(machine.OpenHandles(), Texts());
}

TEST_F(TunnelStopFailures, AChildThatCantBeAskedIsLeftToTheJob) {
  StartAndForgetCalls();
  machine.faults.FailAlways("WaitForSingleObject");
  Stop();
  EXPECT_EQ(machine.calls.Sequence({"TerminateProcess"}),
            Texts(3, "TerminateProcess process netsh.exe, 1"))
      << "commands that can't be awaited are ended, the children are not asked to";
  EXPECT_EQ(machine.processes.Alive(), Texts());
  machine.faults.Clear();
  RestoreDiscovery();
}

TEST_F(TunnelStopFailures, OnAnInterfaceWithoutANameNoPinIsLookedFor) {
  Ethernet().friendlyName.clear();
  StartAndForgetCalls();
  Stop();
  machine.network.FindByAlias("")->friendlyName = "以太网";
  const Texts aliases = machine.calls.TextsOf("ConvertInterfaceAliasToLuid");
  EXPECT_EQ(std::count(aliases.begin(), aliases.end(), "\"\""), 0);
  EXPECT_EQ(machine.processes.Alive(), Texts());
  DropPins();
}

// Failures that nobody hears of

TEST_F(TunnelStopFailures, DeletionsThatFailKeepNothingFromRunning) {
  LetAdapterLinger(1000);
  StartAndForgetCalls();
  machine.faults.FailAlways("DeleteIpForwardEntry2");
  machine.faults.FailAlways("SetInterfaceDnsSettings");
  Stop();
  EXPECT_EQ(machine.calls.Count("DeleteIpForwardEntry2"), 5u);
  EXPECT_EQ(machine.calls.Count("CreateProcessW"), 3u);
  EXPECT_FALSE(manager->childrenAlive());
  EXPECT_EQ(Pins(), (Texts{"198.51.100.20", "198.51.100.30"}));

  machine.faults.Clear();
  machine.calls.Clear();
  Stop();
  EXPECT_EQ(machine.calls.Names(), Texts()) << "what could not be deleted is forgotten";
  DropPins();
}

TEST_F(TunnelStopFailures, CommandsThatHangAreBoundedByTheirBudgetAndASecondEach) {
  StartAndForgetCalls();
  machine.programs.On(L"netsh.exe", sim::Script().TakesToDie(1000));
  Stop();
  EXPECT_EQ(took, 3 * 3500u);
  EXPECT_EQ(machine.processes.Alive(), Texts());
  RestoreDiscovery();
}

TEST_F(TunnelStopFailures, ACommandThatDoesNotStartKeepsNothingFromRunning) {
  StartAndForgetCalls();
  machine.programs.OnNext(L"netsh.exe", sim::Script().FailsToStart(5));
  Stop();
  EXPECT_EQ(Last(NetshLines(), 2),
            (Texts{"netsh interface ipv6 delete route ::/1 interface=\"tavrin\"",
                   "netsh interface ipv6 delete route 8000::/1 interface=\"tavrin\""}));
  RestoreDiscovery();
}

TEST_F(TunnelStopFailures, HandlesThatCantBeClosedKeepNothingFromRunning) {
  AllowOpenHandles();
  StartAndForgetCalls();
  machine.faults.Fail("CloseHandle", {.nth = 1});
  machine.faults.Fail("CloseHandle", {.nth = 3});
  Stop();
  EXPECT_EQ(machine.OpenHandles(),
            (Texts{"process tun2socks-windows-amd64.exe from CreateProcessW",
                   "thread of tun2socks-windows-amd64.exe from CreateProcessW"}));
  EXPECT_EQ(machine.calls.Count("CreateProcessW"), 3u);
  EXPECT_EQ(machine.processes.Alive(), Texts());
}

}  // namespace
}  // namespace unit
