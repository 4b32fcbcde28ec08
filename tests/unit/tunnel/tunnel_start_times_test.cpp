// The budgets of a start at their boundaries, and the times in its trace.
#include "tests/unit/tunnel/tunnel_fixture.h"

namespace unit {
namespace {

class StartTimes : public TunnelTest {
 protected:
  std::uint64_t FailAfter() {
    const std::uint64_t before = machine.clock.Now();
    EXPECT_FALSE(Start());
    return machine.clock.Now() - before;
  }
};

TEST_F(StartTimes, EachWaitTakesWhatComesInItsLastLook) {
  machine.programs.On(L"xray.exe", sim::Script().Listens(17593, 4990));
  sim::AdapterPlan plan = sim::TavrinAdapter();
  plan.upAfter = 14975;
  machine.programs.On(L"tun2socks*.exe", sim::Script().BringsAdapter(plan));
  machine.ipHelper.addressDelay = 3975;
  EXPECT_TRUE(Start());
  EXPECT_TRUE(manager->childrenAlive());
  EXPECT_EQ(Labels(), kFirstStartLabels);
}

// A delay once moves the polls, so that one falls on the budget's last millisecond.
TEST_F(StartTimes, ALookInTheLastMillisecondOfABudgetIsStillMade) {
  const auto delayNext = [this](const char* call, std::uint64_t nth, std::uint64_t milliseconds) {
    machine.faults.Before(call, nth, [this, milliseconds] { machine.clock.Advance(milliseconds); });
  };
  machine.programs.On(L"xray.exe", sim::Script().Listens(17593, 4995));
  delayNext("socket", 2, 9);
  sim::AdapterPlan plan = sim::TavrinAdapter();
  plan.upAfter = 14990;
  machine.programs.On(L"tun2socks*.exe", sim::Script().BringsAdapter(plan));
  delayNext("GetAdaptersAddresses", 5, 24);
  machine.ipHelper.addressDelay = 3990;
  machine.faults.Before("SetInterfaceDnsSettings", 1,
                        [&] { delayNext("GetAdaptersAddresses", 1, 24); });
  const std::uint64_t before = machine.clock.Now();
  EXPECT_TRUE(Start());
  EXPECT_EQ(machine.clock.Now() - before, 10u + 4999u + 14999u + 3999u + 5 * 60u);
}

TEST_F(StartTimes, ThePollsOfTheBudgetsOutliveTheWrapOfTheTick) {
  machine.clock.Set(0xFFFFFFFF - 700);
  const std::uint64_t before = machine.clock.Now();
  EXPECT_TRUE(Start());
  EXPECT_EQ(machine.clock.Now() - before, 1710u);
  EXPECT_EQ(Labels(), kFirstStartLabels);
}

TEST_F(StartTimes, TheTraceOfAFirstStartHoldsEveryStepWithItsTime) {
  ASSERT_TRUE(Start());
  EXPECT_EQ(machine.files.Read(L"C:\\Program Files\\Tavrin\\connect-timing.log"),
            "\xEF\xBB\xBF"
            "stop() idle                  +    0ms  total     0ms\r\n"
            "kill stale (clean)           +    0ms  total     0ms\r\n"
            "find physical route          +   10ms  total    10ms\r\n"
            "pin panel hosts              +    0ms  total    10ms\r\n"
            "spawn xray                   +    0ms  total    10ms\r\n"
            "xray socks listening         +  500ms  total   510ms\r\n"
            "spawn tun2socks              +    0ms  total   510ms\r\n"
            "wintun adapter up            +  900ms  total  1410ms\r\n"
            "set tun address (api)        +    0ms  total  1410ms\r\n"
            "set tun dns (api)            +    0ms  total  1410ms\r\n"
            "tun ipv4 ready               +    0ms  total  1410ms\r\n"
            "routes installed             +    0ms  total  1410ms\r\n"
            "ipv6 leak blocked            +  300ms  total  1710ms\r\n");
}

TEST_F(StartTimes, TheTimeOfEachStepStandsInItsOwnLine) {
  machine.faults.Delay("CreateToolhelp32Snapshot", 17);
  machine.faults.Delay("GetIpForwardTable2", 5);
  machine.faults.Delay("CreateIpForwardEntry2", 7);
  machine.faults.Delay("CreateJobObjectW", 11);
  machine.faults.Delay("ResumeThread", 13);
  machine.faults.Delay("CreateUnicastIpAddressEntry", 40);
  machine.faults.Delay("SetInterfaceDnsSettings", 50);
  machine.ipHelper.addressDelay = 125;
  machine.names.Set("panel.example", sim::HostEntry{.ipv4 = {"198.51.100.20"}, .takes = 3000});
  Ethernet().dnsServers = {"1.1.1.1"};
  ASSERT_TRUE(Start());
  EXPECT_EQ(machine.files.Read(L"C:\\Program Files\\Tavrin\\connect-timing.log")->substr(3),
            "stop() idle                  +    0ms  total     0ms\r\n"
            "kill stale (clean)           +   34ms  total    34ms\r\n"
            "find physical route          +   15ms  total    49ms\r\n"
            "reset physical dns (netsh)   +   60ms  total   109ms\r\n"
            "pin panel hosts              + 3007ms  total  3116ms\r\n"
            "spawn xray                   +   24ms  total  3140ms\r\n"
            "xray socks listening         +  500ms  total  3640ms\r\n"
            "spawn tun2socks              +   13ms  total  3653ms\r\n"
            "wintun adapter up            +  900ms  total  4553ms\r\n"
            "set tun address (api)        +   40ms  total  4593ms\r\n"
            "set tun dns (api)            +   50ms  total  4643ms\r\n"
            "tun ipv4 ready               +   75ms  total  4718ms\r\n"
            "routes installed             +   31ms  total  4749ms\r\n"
            "ipv6 leak blocked            +  300ms  total  5049ms\r\n");
}

TEST_F(StartTimes, AnXrayThatExitsEndsItsWaitAtOnce) {
  machine.programs.On(L"xray.exe", sim::Script().Exits(23, 80));
  EXPECT_EQ(FailAfter(), 10u + 80u) << "the check of the port, and Xray's life";
  EXPECT_EQ(error, L"连接核心无法启动，请换一条线路或重新登录后再试。");
}

TEST_F(StartTimes, AnXrayThatNeverListensCostsFiveSeconds) {
  machine.programs.On(L"xray.exe", sim::Idle());
  EXPECT_EQ(FailAfter(), 10u + 5000u);
}

TEST_F(StartTimes, ATun2socksThatEndsEarlyIsNoticedWhenTheBudgetIsOver) {
  machine.programs.On(L"tun2socks*.exe", sim::Script().Exits(1, 0));
  EXPECT_EQ(FailAfter(), 10u + 500u + 15000u);
  EXPECT_EQ(error, L"wintun adapter not created");
}

TEST_F(StartTimes, AnAddressThatNeverShowsCostsFourSeconds) {
  machine.ipHelper.addressDelay = 100000;
  EXPECT_EQ(FailAfter(), 10u + 500u + 900u + 4000u);
}

}  // namespace
}  // namespace unit
