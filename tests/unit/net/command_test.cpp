#include "src/net/command.h"

#include "tests/unit/net/net_fixture.h"
#include "tests/unit/status.h"

namespace unit {
namespace {

// A program C:\Windows\System32\tool.exe that follows the script of each test.
class Commands : public ProductTest {
 protected:
  Commands() {
    machine.files.Put(L"C:\\Windows\\System32\\tool.exe");
    machine.programs.On(L"tool.exe", sim::Script().Exits(0, 40));
  }

  bool Run(const wchar_t* line, DWORD budget = 2500) {
    const std::uint64_t before = machine.clock.Now();
    const bool result = Succeeds(vpn::RunCommand(line, budget), error);
    took = machine.clock.Now() - before;
    return result;
  }

  std::wstring error = L"as before";
  std::uint64_t took = 0;
};

TEST_F(Commands, ACommandThatEndsWithZeroIsASuccess) {
  EXPECT_TRUE(Run(L"tool does this"));
  EXPECT_EQ(error, L"as before");
  EXPECT_EQ(took, 40u) << "no longer than the command itself";
  EXPECT_EQ(machine.processes.StartedCommandLines(), Texts{"tool does this"});
}

TEST_F(Commands, TheChildIsHiddenInheritsNothingAndIsLookedUpByItsFirstWord) {
  ASSERT_TRUE(Run(L"tool does this"));
  EXPECT_EQ(machine.calls.TextsOf("CreateProcessW"),
            Texts{"null, \"tool does this\", own, 0x8000000, null, 1, 0"});
  EXPECT_EQ(machine.processes.Started().at(0)->image, L"C:\\Windows\\System32\\tool.exe");
  EXPECT_EQ(machine.processes.Started().at(0)->directory, L"C:\\Windows\\System32");
}

TEST_F(Commands, ASuccessIsMadeOfTheseCallsInThisOrder) {
  ASSERT_TRUE(Run(L"tool"));
  EXPECT_EQ(
      machine.calls.Sequence({"CreateProcessW", "WaitForSingleObject", "GetExitCodeProcess",
                              "TerminateProcess", "CloseHandle"}),
      (Texts{"CreateProcessW null, \"tool\", own, 0x8000000, null, 1, 0",
             "WaitForSingleObject process tool.exe, 2500", "GetExitCodeProcess process tool.exe",
             "CloseHandle thread of tool.exe", "CloseHandle process tool.exe"}));
}

TEST_F(Commands, ExitCodeOneIsNamedWithTheWholeLine) {
  machine.programs.On(L"tool.exe", sim::Script().Exits(1, 40));
  EXPECT_FALSE(Run(L"tool --name \"a b\""));
  EXPECT_EQ(error, L"command exit 1: tool --name \"a b\"");
}

TEST_F(Commands, AnExitCodeIsWrittenAsAnUnsignedDecimal) {
  machine.programs.On(L"tool.exe", sim::Script().Exits(0xFFFFFFFF, 0));
  EXPECT_FALSE(Run(L"tool"));
  EXPECT_EQ(error, L"command exit 4294967295: tool");
  machine.programs.On(L"tool.exe", sim::Script().Exits(259, 0));
  EXPECT_FALSE(Run(L"tool"));
  EXPECT_EQ(error, L"command exit 259: tool");
}

TEST_F(Commands, AnExitCodeThatCantBeReadCountsAsOne) {
  machine.faults.Fail("GetExitCodeProcess");
  EXPECT_FALSE(Run(L"tool"));
  EXPECT_EQ(error, L"command exit 1: tool");
}

TEST_F(Commands, ACommandThatEndsWithTheBudgetIsInTime) {
  machine.programs.On(L"tool.exe", sim::Script().Exits(0, 2500));
  EXPECT_TRUE(Run(L"tool"));
  EXPECT_EQ(took, 2500u);
  machine.programs.On(L"tool.exe", sim::Script().Exits(0, 2501));
  EXPECT_FALSE(Run(L"tool"));
  EXPECT_EQ(error, L"command timed out: tool");
  EXPECT_EQ(took, 2500u) << "it dies at once when it is killed";
}

TEST_F(Commands, ACommandThatOutlivesTheBudgetIsKilledWithExitCodeOneAndNamed) {
  machine.programs.On(L"tool.exe", sim::Idle());
  EXPECT_FALSE(Run(L"tool --hang \"x\"", 700));
  EXPECT_EQ(error, L"command timed out: tool --hang \"x\"");
  EXPECT_EQ(machine.processes.Alive(), Texts());
  EXPECT_EQ(machine.processes.Started().at(0)->exitCode, 1u);
  EXPECT_EQ(
      machine.calls.Sequence(
          {"WaitForSingleObject", "GetExitCodeProcess", "TerminateProcess", "CloseHandle"}),
      (Texts{"WaitForSingleObject process tool.exe, 700", "TerminateProcess process tool.exe, 1",
             "WaitForSingleObject process tool.exe, 1000", "CloseHandle thread of tool.exe",
             "CloseHandle process tool.exe"}));
}

TEST_F(Commands, AKilledCommandIsGivenASecondToDieAndNoMore) {
  machine.programs.On(L"tool.exe", sim::Script().TakesToDie(1000));
  EXPECT_FALSE(Run(L"tool"));
  EXPECT_EQ(took, 3500u);
  EXPECT_EQ(machine.processes.Alive(), Texts());
  machine.programs.On(L"tool.exe", sim::Script().TakesToDie(1001));
  EXPECT_FALSE(Run(L"tool"));
  EXPECT_EQ(took, 3500u);
  EXPECT_EQ(error, L"command timed out: tool");
  EXPECT_EQ(machine.processes.Alive(), Texts{"tool.exe"});
  machine.clock.Advance(1);
  EXPECT_EQ(machine.processes.Alive(), Texts());
}

TEST_F(Commands, ABudgetOfZeroWaitsForNothing) {
  EXPECT_FALSE(Run(L"tool", 0));
  EXPECT_EQ(error, L"command timed out: tool");
  EXPECT_EQ(took, 0u);
}

TEST_F(Commands, AWaitThatFailsIsTreatedAsATimeOut) {
  machine.faults.Fail("WaitForSingleObject");
  EXPECT_FALSE(Run(L"tool"));
  EXPECT_EQ(error, L"command timed out: tool");
  EXPECT_EQ(machine.calls.TextsOf("TerminateProcess"), Texts{"process tool.exe, 1"});
}

TEST_F(Commands, ACommandThatResistsItsEndIsLeftBehindAfterTheSecond) {
  machine.programs.On(L"tool.exe", sim::Script().Exits(0, 60000));
  machine.faults.Fail("TerminateProcess");
  EXPECT_FALSE(Run(L"tool"));
  EXPECT_EQ(error, L"command timed out: tool");
  EXPECT_EQ(took, 3500u);
  machine.clock.Advance(60000);
}

TEST_F(Commands, ACommandThatCantStartIsNamedWithThePlatformsCode) {
  EXPECT_FALSE(Run(L"missing --at all"));
  EXPECT_EQ(error, L"CreateProcess failed for: missing --at all err=2");
  machine.programs.On(L"tool.exe", sim::Script().FailsToStart(740));
  EXPECT_FALSE(Run(L"tool \"x\""));
  EXPECT_EQ(error, L"CreateProcess failed for: tool \"x\" err=740");
  EXPECT_EQ(machine.calls.Count("WaitForSingleObject"), 0u);
  EXPECT_EQ(machine.calls.Count("CloseHandle"), 0u);
}

TEST_F(Commands, QuotesAroundAnAliasWithBlanksReachTheChildUnchanged) {
  ASSERT_TRUE(Run(L"tool set interface \"本地连接 2  x\" admin=\"y\\\""));
  EXPECT_EQ(machine.processes.StartedCommandLines(),
            Texts{"tool set interface \"本地连接 2  x\" admin=\"y\\\""});
}

TEST_F(Commands, TheQuietRunnerTakesEveryOutcomeInSilence) {
  (void)vpn::RunCommand(L"tool once", 2500);
  (void)vpn::RunCommand(L"missing", 2500);
  machine.programs.On(L"tool.exe", sim::Idle());
  const std::uint64_t before = machine.clock.Now();
  (void)vpn::RunCommand(L"tool twice", 300);
  EXPECT_EQ(machine.clock.Now() - before, 300u) << "the budget is handed on";
  EXPECT_EQ(machine.processes.StartedCommandLines(), (Texts{"tool once", "tool twice"}));
}

}  // namespace
}  // namespace unit
