// The command line: which mode it gives, and what of it is ignored.
#include "tests/e2e/harness/expect.h"
#include "tests/e2e/harness/service_test.h"
#include "tests/e2e/harness/waiting.h"
#include "tests/standins/text.h"

namespace e2e {
namespace {

class Options : public ServiceTest {
 protected:
  std::wstring RuntimeOption() const { return L"--runtime \"" + box.runtime() + L"\""; }
  Lines ConsoleBanner(const std::string& runtime) const {
    return {"TavrinService console mode. Pipe \\\\.\\pipe\\TavrinService", "Runtime " + runtime,
            "Ctrl+C to stop.", "ipc op=shutdown", "stopped."};
  }
  // Runs to a shutdown, and compares what it printed.
  void ExpectConsoleMode(const std::wstring& arguments, const std::string& runtime) {
    Launch(box.serviceExe(), arguments);
    ShutDown();
    ExpectLines(SplitLines(Output()), ConsoleBanner(runtime));
  }
  void ExpectDaemonMode(const std::wstring& arguments) {
    Launch(box.serviceExe(), arguments);
    ShutDown();
    EXPECT_EQ(Output(), "");
    ExpectLines(ServiceLog(),
                {"daemon mode. runtime=" + Runtime(), "ipc op=shutdown", "daemon stopped"});
  }
  std::string Runtime() const { return standins::ToUtf8(box.runtime()); }
  std::string Discovered() const { return standins::ToUtf8(box.service()) + "\\runtime"; }
  // A process that lives until it is ended.
  HANDLE StartOwner() {
    machine.Edit([](standins::MachineState& state) { state.netsh.hangsOn = "wait here"; });
    return StartProgram(box.service() + L"\\netsh.exe", L"wait here", box.service(),
                        {{L"TAVRIN_TEST_MACHINE", box.machine()}});
  }
};

TEST_F(Options, ConsoleWithRuntime) {
  ExpectConsoleMode(L"--console " + RuntimeOption(), Runtime());
}

TEST_F(Options, OrderDoesNotMatter) {
  ExpectConsoleMode(RuntimeOption() + L" --console", Runtime());
}

TEST_F(Options, NoneAtAllFallsBackToConsoleModeWhenStartedByHand) {
  ExpectConsoleMode(L"", Discovered());
}

TEST_F(Options, UnknownOnesAreIgnored) {
  ExpectConsoleMode(L"--bogus -x --console /y word --Daemon", Discovered());
}

TEST_F(Options, RuntimeWithoutAValueIsIgnored) {
  ExpectConsoleMode(L"--console --runtime", Discovered());
}

TEST_F(Options, OwnerWithoutAValueIsIgnored) {
  ExpectConsoleMode(L"--console " + RuntimeOption() + L" --owner-pid", Runtime());
}

TEST_F(Options, LastOfTwoRuntimesWins) {
  ExpectConsoleMode(L"--console --runtime C:\\nowhere " + RuntimeOption(), Runtime());
}

// So no mode is left, and console mode is what a start by hand comes to.
TEST_F(Options, RuntimeTakesItsValueWhateverItLooksLike) {
  ExpectConsoleMode(L"--runtime --daemon", "--daemon");
}

TEST_F(Options, RuntimeIsTakenAsWritten) {
  ExpectConsoleMode(L"--console --runtime C:/no/such/../directory/", "C:/no/such/../directory/");
}

TEST_F(Options, EmptyRuntimeKeepsTheBuiltInDirectory) {
  ExpectConsoleMode(L"--console --runtime \"\"", "D:\\VPN\\tools\\phase-b\\local");
}

TEST_F(Options, DaemonWritesToTheLogAlone) {
  ExpectDaemonMode(L"--daemon " + RuntimeOption());
}

TEST_F(Options, DaemonGoesBeforeConsole) {
  ExpectDaemonMode(L"--console --daemon " + RuntimeOption());
}

TEST_F(Options, OwnerThatIsNoNumberIsNoOwner) {
  ExpectDaemonMode(L"--daemon --owner-pid abc " + RuntimeOption());
}

TEST_F(Options, OwnerOfZeroIsNoOwner) {
  ExpectDaemonMode(L"--daemon --owner-pid 0 " + RuntimeOption());
}

TEST_F(Options, DaemonEndsWithItsOwnerAndTakesTheTunnelDown) {
  const HANDLE owner = StartOwner();
  Launch(box.serviceExe(),
         L"--daemon --owner-pid " + std::to_wstring(GetProcessId(owner)) + L" " + RuntimeOption());
  EXPECT_EQ(Ask(R"({"op":"connect"})"), kUp);
  TerminateProcess(owner, 0);
  ExpectEnds(owner);
  EXPECT_EQ(service().WaitForExitCode(), 0U);
  ExpectLines(ServiceLog(), {"daemon mode. runtime=" + Runtime(), "ipc op=connect",
                             "ui process exited; stopping helper", "daemon stopped"});
  ExpectSameNetwork(machine.Network(), netmodel::TypicalNetwork());
}

// The number is beyond what any system gives out, since an ended process's may live on in a handle.
TEST_F(Options, OwnerThatIsGoneIsLoggedAndTheDaemonStays) {
  Launch(box.serviceExe(), L"--daemon --owner-pid 2147483644 " + RuntimeOption());
  WaitUntil("the watch gives up", [this] { return ServiceLog().size() == 2; });
  EXPECT_EQ(ServiceLog().at(1), "owner pid open failed err=87");
  ShutDown();
}

TEST_F(Options, OwnerMeansNothingToConsoleMode) {
  const HANDLE owner = StartOwner();
  Launch(box.serviceExe(),
         L"--console --owner-pid " + std::to_wstring(GetProcessId(owner)) + L" " + RuntimeOption());
  ASSERT_EQ(Ask(R"({"op":"status"})"), kDown);
  TerminateProcess(owner, 0);
  ExpectEnds(owner);
  EXPECT_EQ(Ask(R"({"op":"status"})"), kDown);
  ShutDown();
  EXPECT_EQ(ServiceLog().size(), 7U);
}

}  // namespace
}  // namespace e2e
