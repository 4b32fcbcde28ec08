#include "client/doctor/captured_run.h"

#include "tests/sim/pipes.h"
#include "tests/unit/client/doctor/doctor_test.h"

namespace vpn {
namespace {

class CapturedRunTest : public unit::DoctorTest {
 protected:
  CapturedRun RunXray(DWORD limit, const std::string& input = {}) {
    return RunCaptured(L"\"" + InRuntime(L"xray\\xray.exe") + L"\"", unit::kRuntime, limit, input);
  }
};

TEST_F(CapturedRunTest, ARunThatCantBePreparedHasNotStarted) {
  for (const char* call : {"CreatePipe", "SetHandleInformation", "CreateProcessW"}) {
    machine.faults.Fail(call, {.nth = 1});
    EXPECT_FALSE(RunXray(100).hasStarted) << call;
  }
  for (const char* call : {"CreatePipe", "SetHandleInformation", "WriteFile"}) {
    machine.faults.Fail(call, {.nth = 1});
    EXPECT_FALSE(RunXray(100, "input").hasStarted) << call;
  }
  EXPECT_TRUE(machine.processes.Started().empty());
}

TEST_F(CapturedRunTest, TheProgramReadsItsInput) {
  const CapturedRun run = RunXray(100, "{}");
  EXPECT_TRUE(run.hasEnded);
  EXPECT_EQ(run.exitCode, 0u);
  EXPECT_EQ(machine.processes.Started().back()->input->bytes, "{}");
}

TEST_F(CapturedRunTest, WithoutInputThereIsNoPipeForIt) {
  EXPECT_TRUE(RunXray(100).hasEnded);
  EXPECT_EQ(machine.processes.Started().back()->input, nullptr);
}

TEST_F(CapturedRunTest, TheLongestInputFitsAndALongerOneIsRefused) {
  EXPECT_TRUE(RunXray(100, "{" + std::string(65'535, ' ')).hasEnded);
  EXPECT_FALSE(RunXray(100, "{" + std::string(65'536, ' ')).hasStarted);
}

TEST_F(CapturedRunTest, OutputBeyondItsLimitIsDropped) {
  machine.programs.On(L"xray.exe", sim::Script().Prints(std::string(70'000, 'x')).Exits(3, 9));
  const CapturedRun run = RunXray(100);
  EXPECT_TRUE(run.hasEnded);
  EXPECT_EQ(run.exitCode, 3u);
  EXPECT_EQ(run.output.size(), 65'536u);
}

// However fast it prints: the pipe is never found empty.
TEST_F(CapturedRunTest, AProgramThatPrintsWithoutEndIsEndedInTime) {
  machine.programs.On(L"xray.exe", sim::Script().Prints("x"));
  machine.faults.BeforeEach("PeekNamedPipe", [this] {
    const auto lock = machine.Lock();
    machine.processes.Started().back()->output->bytes.resize(8192, 'x');
  });
  const std::uint64_t start = machine.clock.Now();
  const CapturedRun run = RunXray(5000);
  EXPECT_TRUE(run.hasStarted);
  EXPECT_FALSE(run.hasEnded);
  EXPECT_EQ(run.output.size(), 65'536u);
  EXPECT_EQ(machine.clock.Now() - start, 5000u);
  EXPECT_EQ(machine.processes.Alive(), std::vector<std::string>());
}

TEST_F(CapturedRunTest, OutputThatCantBeReadEndsTheReading) {
  machine.programs.On(L"xray.exe", sim::Script().Prints("x").Exits(0, 9));
  machine.faults.FailAlways("ReadFile");
  EXPECT_EQ(RunXray(100).output, "");
}

TEST_F(CapturedRunTest, VersionsAreFoundInWhatProgramsSay) {
  EXPECT_EQ(VersionIn("Xray 26.3.27 (Xray, Penetrates Everything.) 1234 (go1.26)"), L"26.3.27");
  EXPECT_EQ(VersionIn("tun2socks-2.6.0\n"), L"2.6.0");
  EXPECT_EQ(VersionIn("build 7, version 1.2."), L"1.2");
  EXPECT_EQ(VersionIn("42"), L"");
  EXPECT_EQ(VersionIn(""), L"");
}

}  // namespace
}  // namespace vpn
