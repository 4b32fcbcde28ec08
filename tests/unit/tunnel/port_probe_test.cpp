#include "src/tunnel/port_probe.h"

#include "src/common/hidden_process.h"
#include "src/common/unique_handle.h"
#include "tests/unit/net/net_fixture.h"

namespace unit {
namespace {

using Kind = sim::ConnectPlan::Kind;

constexpr std::uint16_t kPort = 17593;
constexpr int kRefused = 10061;  // WSAECONNREFUSED

class PortProbe : public ProductTest {
 protected:
  bool Probe(DWORD budget, HANDLE process = nullptr) {
    const std::uint64_t before = machine.clock.Now();
    const bool result = vpn::WaitForLocalPort(kPort, budget, process);
    took = machine.clock.Now() - before;
    return result;
  }
  void ListensAfter(std::uint64_t milliseconds) {
    machine.clock.After(milliseconds, [this] { machine.listeners.Listen(kPort); });
  }
  // A child that the probe can watch.
  void StartChild(sim::Script script) {
    machine.files.Put(L"C:\\run\\child.exe");
    machine.programs.On(L"child.exe", std::move(script));
    ASSERT_TRUE(child.create(L"C:\\run\\child.exe", L"child", 0, nullptr));
    machine.calls.Clear();
  }
  void TearDown() override {
    for (const auto& process : machine.processes.Started()) {
      machine.processes.Exit(process->id, 0);
    }
    child = {};
    ProductTest::TearDown();
  }

  vpn::HiddenProcess child;
  std::uint64_t took = 0;
};

TEST_F(PortProbe, AListenerIsFoundByTheFirstAttempt) {
  machine.listeners.Listen(kPort);
  EXPECT_TRUE(Probe(5000));
  EXPECT_EQ(took, 0u);
  EXPECT_EQ(machine.calls.Names(),
            (Texts{"WSAStartup", "InetPtonW", "GetTickCount64", "GetTickCount64", "socket",
                   "ioctlsocket", "connect", "select", "getsockopt", "closesocket", "WSACleanup"}));
}

TEST_F(PortProbe, TheAttemptIsANonBlockingTcpConnectionToTheLoopbackAddress) {
  machine.listeners.Listen(kPort);
  ASSERT_TRUE(Probe(1));
  EXPECT_EQ(machine.calls.Sequence(
                {"WSAStartup", "InetPtonW", "socket", "ioctlsocket", "connect", "select"}),
            (Texts{"WSAStartup 0x202", "InetPtonW \"127.0.0.1\"", "socket 2, 1, 6",
                   "ioctlsocket socket, 1", "connect socket, 17593", "select 5"}));
}

TEST_F(PortProbe, AnotherPortIsNotThisPort) {
  machine.listeners.Listen(17592);
  machine.listeners.Listen(17594);
  EXPECT_FALSE(Probe(50));
}

TEST_F(PortProbe, WithoutAListenerAttemptsFollowEachOtherUntilTheBudgetIsOver) {
  EXPECT_FALSE(Probe(5000));
  EXPECT_EQ(took, 5000u);
  EXPECT_EQ(machine.calls.Count("connect"), 500u) << "5 ms of waiting and 5 ms of pause each";
  EXPECT_EQ(machine.calls.TextsOf("Sleep"), Texts(500, "5"));
  EXPECT_EQ(machine.calls.Count("closesocket"), 500u);
}

TEST_F(PortProbe, AListenerThatComesAfterThreeSecondsIsFound) {
  ListensAfter(3000);
  EXPECT_TRUE(Probe(5000));
  EXPECT_EQ(took, 3000u);
}

TEST_F(PortProbe, AListenerAtTheLastAttemptIsFoundAndOneMillisecondLaterItIsNot) {
  ListensAfter(4990);
  EXPECT_TRUE(Probe(5000));
  EXPECT_EQ(took, 4990u);
  machine.listeners.StopListening(kPort);
  ListensAfter(4991);
  EXPECT_FALSE(Probe(5000));
  EXPECT_EQ(took, 5000u);
}

TEST_F(PortProbe, ABudgetOfOneMillisecondIsOneAttemptOfFiveAndAPause) {
  EXPECT_FALSE(Probe(1));
  EXPECT_EQ(machine.calls.Count("connect"), 1u);
  EXPECT_EQ(took, 10u);
}

TEST_F(PortProbe, ADeadlineThatPassesBeforeTheFirstAttemptMakesNone) {
  machine.listeners.Listen(kPort);
  machine.faults.Before("GetTickCount64", 2, [this] { machine.clock.Advance(1); });
  EXPECT_FALSE(Probe(1));
  EXPECT_EQ(machine.calls.Names(),
            (Texts{"WSAStartup", "InetPtonW", "GetTickCount64", "GetTickCount64", "WSACleanup"}));
}

TEST_F(PortProbe, ABudgetOfZeroMakesNoAttempt) {
  machine.listeners.Listen(kPort);
  EXPECT_FALSE(Probe(0));
  EXPECT_EQ(machine.calls.Count("socket"), 0u);
}

TEST_F(PortProbe, WhereWinsockDoesNotStartNothingIsTriedOrClosed) {
  machine.listeners.Listen(kPort);
  machine.faults.Fail("WSAStartup");
  EXPECT_FALSE(Probe(5000));
  EXPECT_EQ(machine.calls.Names(), Texts{"WSAStartup"});
}

TEST_F(PortProbe, TheDeadlineOutlivesTheWrapOfTheThirtyTwoBitTick) {
  machine.clock.Set(0xFFFFFFF0);
  ListensAfter(3000);
  EXPECT_TRUE(Probe(5000));
  EXPECT_EQ(took, 3000u);
}

// How a single attempt can go

TEST_F(PortProbe, AConnectionThatIsMadeAtOnceNeedsNoWait) {
  machine.connects.Next({Kind::kConnectsAtOnce});
  EXPECT_TRUE(Probe(1));
  EXPECT_EQ(machine.calls.Count("select"), 0u);
  EXPECT_EQ(machine.calls.Count("closesocket"), 1u);
}

TEST_F(PortProbe, AConnectionThatIsRefusedAtOnceIsClosedAndTriedAgain) {
  machine.listeners.Listen(kPort);
  machine.connects.Next({Kind::kRefusedAtOnce, kRefused});
  EXPECT_TRUE(Probe(5000));
  EXPECT_EQ(took, 5u) << "no wait, only the pause";
  EXPECT_EQ(machine.calls.Count("select"), 1u);
}

TEST_F(PortProbe, ASocketThatBecomesWritableWithAnErrorIsNoConnection) {
  machine.listeners.Listen(kPort);
  machine.connects.Next({Kind::kSocketError, kRefused});
  EXPECT_TRUE(Probe(5000));
  EXPECT_EQ(took, 5u);
  EXPECT_EQ(machine.calls.TextsOf("getsockopt"),
            (Texts{"socket, 65535, 4103", "socket, 65535, 4103"}));
}

TEST_F(PortProbe, AnErrorThatCantBeReadCountsAsNone) {
  machine.connects.Next({Kind::kSocketError, kRefused});
  machine.faults.Fail("getsockopt");
  EXPECT_TRUE(Probe(1));
}

TEST_F(PortProbe, ASocketThatIsNotWritableInTimeIsNotAskedForItsError) {
  machine.connects.Next({Kind::kNeverWritable});
  EXPECT_FALSE(Probe(1));
  EXPECT_EQ(machine.calls.Count("getsockopt"), 0u);
}

TEST_F(PortProbe, AWaitThatFailsIsNoConnection) {
  machine.listeners.Listen(kPort);
  machine.faults.Fail("select");
  EXPECT_FALSE(Probe(1));
  EXPECT_EQ(machine.calls.Count("getsockopt"), 0u);
  EXPECT_EQ(machine.calls.Count("closesocket"), 1u);
}

TEST_F(PortProbe, ASocketThatCantBeMadeCostsOnePause) {
  machine.listeners.Listen(kPort);
  machine.faults.Fail("socket");
  EXPECT_TRUE(Probe(5000));
  EXPECT_EQ(took, 5u);
  EXPECT_EQ(machine.calls.Count("closesocket"), 1u) << "only what was opened is closed";
}

TEST_F(PortProbe, ASocketThatStaysBlockingIsTriedAllTheSame) {
  machine.listeners.Listen(kPort);
  machine.faults.Fail("ioctlsocket");
  EXPECT_TRUE(Probe(1));
}

// The watched process

TEST_F(PortProbe, AProcessThatHasExitedEndsTheProbeWithoutAnAttempt) {
  StartChild(sim::Script().Exits(23, 0));
  machine.listeners.Listen(kPort);
  EXPECT_FALSE(Probe(5000, child.process.get()));
  EXPECT_EQ(took, 0u);
  EXPECT_EQ(machine.calls.Names(), (Texts{"WSAStartup", "InetPtonW", "GetTickCount64",
                                          "GetTickCount64", "WaitForSingleObject", "WSACleanup"}));
}

TEST_F(PortProbe, AProcessThatExitsMeanwhileEndsTheProbeAtTheNextAttempt) {
  StartChild(sim::Script().Exits(23, 42));
  EXPECT_FALSE(Probe(5000, child.process.get()));
  EXPECT_EQ(took, 50u);
  EXPECT_EQ(machine.calls.Count("connect"), 5u);
}

TEST_F(PortProbe, AProcessThatRunsIsLookedAtBeforeEachAttempt) {
  StartChild(sim::Script().Listens(kPort, 20));
  EXPECT_TRUE(Probe(5000, child.process.get()));
  EXPECT_EQ(took, 20u);
  EXPECT_EQ(machine.calls.TextsOf("WaitForSingleObject"), Texts(3, "process child.exe, 0"));
}

TEST_F(PortProbe, AWaitForTheProcessThatFailsCountsAsItsEnd) {
  StartChild(sim::Idle());
  machine.listeners.Listen(kPort);
  machine.faults.Fail("WaitForSingleObject");
  EXPECT_FALSE(Probe(5000, child.process.get()));
  EXPECT_EQ(machine.calls.Count("socket"), 0u);
}

TEST_F(PortProbe, WithoutAProcessNothingIsWaitedFor) {
  EXPECT_FALSE(Probe(50));
  EXPECT_EQ(machine.calls.Count("WaitForSingleObject"), 0u);
}

}  // namespace
}  // namespace unit
