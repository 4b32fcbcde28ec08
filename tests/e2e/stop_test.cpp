// Every way to stop the service, in every state between two requests: the process ends, the tunnel
// is down, and the machine is clean.
#include <winternl.h>

#include <cstring>

#include "tests/e2e/harness/expect.h"
#include "tests/e2e/harness/stop_fixture.h"
#include "tests/e2e/harness/waiting.h"

namespace e2e {
namespace {

using standins::MachineState;

constexpr char kConnect[] = R"({"op":"connect"})";
constexpr char kStatus[] = R"({"op":"status"})";
constexpr char kTun2socks[] = "tun2socks-windows-amd64.exe";

// A helper that hangs: none of its threads runs any more.
void Freeze(HANDLE process) {
  using Suspend = NTSTATUS(NTAPI*)(HANDLE);
  const HMODULE ntdll = GetModuleHandleW(L"ntdll.dll");
  const auto suspend =
      reinterpret_cast<Suspend>(reinterpret_cast<void*>(GetProcAddress(ntdll, "NtSuspendProcess")));
  ASSERT_NE(suspend, nullptr);
  EXPECT_EQ(suspend(process), 0);
  CloseHandle(process);
}

class Stop : public StopFixture, public ::testing::WithParamInterface<Trigger> {};

TEST_P(Stop, WhileItWaitsForItsFirstClient) {
  Begin(GetParam());
  WaitForListening();
  Pull();
  ExpectEnded();
}

TEST_P(Stop, WithTheTunnelUp) {
  Begin(GetParam());
  ASSERT_EQ(Ask(kConnect), kUp);
  Pull();
  ExpectEnded();
}

TEST_P(Stop, WithBothHelpersHung) {
  Begin(GetParam());
  ASSERT_EQ(Ask(kConnect), kUp);
  for (const char* image : {"xray.exe", kTun2socks}) {
    const std::wstring name(image, image + std::strlen(image));
    Freeze(machine.OpenLast(image, PROCESS_SUSPEND_RESUME));
  }
  Pull();
  ExpectEnded();
}

// The command is given up after its budget, and ended.
TEST_P(Stop, WithAHungNetsh) {
  Begin(GetParam());
  ASSERT_EQ(Ask(kConnect), kUp);
  machine.Edit([](MachineState& state) { state.netsh.hangsOn = "delete route 8000::/1"; });
  Pull();
  ExpectEnded();
}

INSTANTIATE_TEST_SUITE_P(By, Stop,
                         ::testing::Values(Trigger::kShutdown, Trigger::kCtrlC, Trigger::kOwnerEnds,
                                           Trigger::kManagerStop),
                         [](const auto& by) { return TriggerName(by.param); });

class StopOddities : public StopFixture {};

TEST_F(StopOddities, ShutdownEndsADaemonToo) {
  Begin(Trigger::kDaemonShutdown);
  ASSERT_EQ(Ask(kConnect), kUp);
  Pull();
  ExpectEnded();
}

TEST_F(StopOddities, FallbackToTheConsoleEndsAtCtrlCToo) {
  Begin(Trigger::kFallbackCtrlC);
  ASSERT_EQ(Ask(kConnect), kUp);
  Pull();
  ExpectEnded();
}

// Reading has no time-out: a stop waits for the client, and nothing is lost but time.
TEST_F(StopOddities, SilentClientPutsTheStopOffUntilItLeaves) {
  Begin(Trigger::kOwnerEnds);
  PipeClient silent;
  silent.Write(LengthPrefix(15).substr(0, 2));
  silent.WaitUntilRead();
  Pull();
  EXPECT_TRUE(IsUp());
  silent.Close();
  ExpectEnded();
}

TEST_F(StopOddities, ServiceStaysUpAtShutdownAndListens) {
  Begin(Trigger::kManagerStop);
  ASSERT_EQ(Ask(kConnect), kUp);
  EXPECT_EQ(Ask(R"({"op":"shutdown"})"), kDown);
  ExpectSameNetwork(machine.Network(), netmodel::TypicalNetwork());
  EXPECT_EQ(Ask(kStatus), kDown);
  EXPECT_EQ(ServiceLog().back(), "ipc op=status");
  EXPECT_EQ(WindowsService().Status().dwCurrentState, static_cast<DWORD>(SERVICE_RUNNING));
  Pull();
  ExpectEnded();
}

}  // namespace
}  // namespace e2e
