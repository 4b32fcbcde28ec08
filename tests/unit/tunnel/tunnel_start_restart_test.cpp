// The start while a tunnel is up, and behind one.
#include <utility>

#include "tests/unit/tunnel/tunnel_fixture.h"

namespace unit {
namespace {

class TunnelRestart : public TunnelTest {
 protected:
  Texts NewLabels() {
    const Texts all = Labels();
    return Last(all, all.size() - std::exchange(seen, all.size()));
  }

  size_t seen = 0;
};

TEST_F(TunnelRestart, ASecondStartWhileUpTearsDownAndBuildsAnewWithoutAScan) {
  ASSERT_TRUE(Start());
  EXPECT_EQ(NewLabels(), kFirstStartLabels);
  const std::uint64_t oldTun = Tun()->luid;
  machine.calls.Clear();
  config.serverAddress = L"198.51.100.40";
  config.panelHosts.clear();
  ASSERT_TRUE(Start());
  EXPECT_EQ(NewLabels(), kRestartLabels);
  EXPECT_EQ(machine.calls.Count("CreateToolhelp32Snapshot"), 0u);
  EXPECT_EQ(Pins(), Texts{"198.51.100.40"}) << "nothing of the old tunnel is left";
  EXPECT_NE(Tun()->luid, oldTun);
  EXPECT_EQ(machine.processes.Alive(), (Texts{"xray.exe", "tun2socks-windows-amd64.exe"}));
  EXPECT_EQ(machine.OpenHandles().size(), 5u);
}

TEST_F(TunnelRestart, TheOldTunnelIsTakenDownBeforeAnythingElse) {
  ASSERT_TRUE(Start());
  machine.calls.Clear();
  ASSERT_TRUE(Start());
  const Texts order = machine.calls.Sequence(
      {"TerminateProcess", "CreateProcessW", "_wfopen_s", "RegOpenKeyExW", "CreateJobObjectW"});
  EXPECT_EQ(
      First(order, 4),
      (Texts{
          "TerminateProcess process tun2socks-windows-amd64.exe, 0",
          "TerminateProcess process xray.exe, 0",
          NetshCall("interface ipv6 set interface \"以太网\" routerdiscovery=enabled store=active"),
          NetshCall("interface ipv6 delete route ::/1 interface=\"tavrin\"")}));
}

TEST_F(TunnelRestart, ATunnelWithADeadChildIsStillAnOwnSession) {
  for (const size_t dead : {0u, 1u}) {
    SCOPED_TRACE(dead);
    ASSERT_TRUE(Start());
    (void)NewLabels();
    const auto& started = machine.processes.Started();
    for (const auto& process : started) {
      const bool isXray = process->image == L"C:\\run\\xray\\xray.exe";
      if (!process->exited && isXray == (dead == 0)) {
        machine.processes.Exit(process->id, 1);
      }
    }
    ASSERT_FALSE(manager->childrenAlive());
    ASSERT_TRUE(Start());
    EXPECT_EQ(NewLabels(), kRestartLabels);
    manager->stop();
  }
  EXPECT_EQ(machine.processes.Alive(), Texts());
}

TEST_F(TunnelRestart, AfterBothChildrenDiedTheScanIsSkippedAllTheSame) {
  ASSERT_TRUE(Start());
  (void)NewLabels();
  machine.processes.Exit(machine.processes.Started().at(0)->id, 1);
  machine.processes.Exit(machine.processes.Started().at(1)->id, 1);
  ASSERT_TRUE(Start());
  EXPECT_EQ(NewLabels(), kRestartLabels);
}

TEST_F(TunnelRestart, AfterAStopTheNextStartScansAgain) {
  ASSERT_TRUE(Start());
  (void)NewLabels();
  manager->stop();
  ASSERT_TRUE(Start());
  EXPECT_EQ(NewLabels(), kFirstStartLabels);
}

}  // namespace
}  // namespace unit
