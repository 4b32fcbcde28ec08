#include "src/host/entry_point.h"

#include "src/control/pipe_server.h"
#include "src/runtime/process_state.h"
#include "tests/unit/product_state.h"

namespace vpn {
namespace {

// Every run ends at the first wait for a client, if it comes that far.
class EntryPoint : public unit::ProductTest {
 protected:
  EntryPoint() {
    for (const wchar_t* directory : {L"C:\\run", L"C:\\found", L"C:\\other"}) {
      machine.files.PutDirectory(directory);
    }
    machine.files.Put(L"C:\\found\\xray\\xray.exe");
    machine.environment.Set(L"TAVRIN_RUNTIME", L"C:\\found");
    machine.faults.BeforeEach("ConnectNamedPipe", [] { WakeControlPipe(); });
  }

  static int Run(std::vector<std::wstring> arguments) {
    arguments.insert(arguments.begin(), L"TavrinService.exe");
    std::vector<wchar_t*> pointers;
    for (std::wstring& argument : arguments) {
      pointers.push_back(argument.data());
    }
    pointers.push_back(nullptr);
    return wmain(static_cast<int>(arguments.size()), pointers.data());
  }

  // The first line of the log tells the mode; without a log it was none of the three.
  std::string Mode(const std::wstring& directory = L"C:\\run") {
    const std::string log = machine.files.Read(directory + L"\\tavrin-service.log").value_or("");
    const std::string line = log.substr(0, log.find('\n'));
    return line.substr(0, line.find_first_of(".="));
  }
  bool DiscoveryRan() {
    const std::vector<std::string> asked = machine.calls.TextsOf("GetEnvironmentVariableW");
    return std::find(asked.begin(), asked.end(), "\"TAVRIN_RUNTIME\"") != asked.end();
  }
};

constexpr char kConsole[] = "TavrinService console mode";
constexpr char kDaemon[] = "daemon mode";
constexpr char kService[] = "service running";

TEST_F(EntryPoint, CodePageOfTheConsoleIsSetFirstOfAll) {
  (void)Run({L"--uninstall"});
  ASSERT_FALSE(machine.calls.All().empty());
  EXPECT_EQ(machine.calls.All().front().name, "SetConsoleOutputCP");
  EXPECT_EQ(machine.calls.All().front().text, "65001");
}

TEST_F(EntryPoint, StartedByHandWithoutArgumentsDiscoversAndFallsBackToTheConsole) {
  EXPECT_EQ(Run({}), 0);
  EXPECT_EQ(g_runtimeDir, L"C:\\found");
  EXPECT_EQ(machine.calls.Count("StartServiceCtrlDispatcherW"), 1u);
  EXPECT_EQ(Mode(L"C:\\found"), kConsole);
  EXPECT_EQ(machine.console.CodePages(), (std::vector<std::uint32_t>{65001, 65001}));
}

TEST_F(EntryPoint, DiscoveryComesBeforeTheDispatcher) {
  (void)Run({});
  const std::vector<std::string> sequence =
      machine.calls.Sequence({"GetEnvironmentVariableW", "StartServiceCtrlDispatcherW"});
  ASSERT_GE(sequence.size(), 2u);
  EXPECT_EQ(sequence[0], "GetEnvironmentVariableW \"TAVRIN_RUNTIME\"");
  EXPECT_EQ(sequence[1], "StartServiceCtrlDispatcherW \"TavrinService\"");
}

TEST_F(EntryPoint, StartedByTheManagerRunsTheService) {
  machine.services.startedByManager = true;
  machine.faults.BeforeEach("ConnectNamedPipe",
                            [&] { (void)machine.services.Send(SERVICE_CONTROL_STOP); });
  EXPECT_EQ(Run({L"--runtime", L"C:\\run"}), 0);
  EXPECT_EQ(Mode(), kService);
}

TEST_F(EntryPoint, OtherFailureOfTheDispatcherGivesOne) {
  machine.services.dispatcherError = 5;
  EXPECT_EQ(Run({}), 1);
  EXPECT_EQ(Mode(L"C:\\found"), "");
}

TEST_F(EntryPoint, ModesAreChosenByRankHoweverTheOptionsAreOrdered) {
  const struct {
    std::vector<std::wstring> options;
    std::string mode;
  } rows[] = {
      {{L"--console"}, kConsole},
      {{L"--daemon"}, kDaemon},
      {{L"--console", L"--daemon"}, kDaemon},
      {{L"--daemon", L"--console"}, kDaemon},
      {{L"--bogus", L"--console"}, kConsole},
      {{L"--bogus"}, kConsole},  // by the fallback of a start by hand
      {{L"--CONSOLE", L"--daemon"}, kDaemon},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(::testing::PrintToString(row.options));
    machine.files.Remove(L"C:\\run\\tavrin-service.log");
    machine.console.attached = true;
    std::vector<std::wstring> arguments = {L"--runtime", L"C:\\run"};
    arguments.insert(arguments.end(), row.options.begin(), row.options.end());
    EXPECT_EQ(Run(arguments), 0);
    EXPECT_EQ(Mode(), row.mode);
  }
}

TEST_F(EntryPoint, ConsoleModeNeedsNoDispatcher) {
  (void)Run({L"--console"});
  (void)Run({L"--daemon"});
  EXPECT_EQ(machine.calls.Count("StartServiceCtrlDispatcherW"), 0u);
}

TEST_F(EntryPoint, InstallBeatsEverythingElse) {
  for (const auto& options : std::vector<std::vector<std::wstring>>{
           {L"--install", L"--uninstall"},
           {L"--uninstall", L"--install"},
           {L"--console", L"--daemon", L"--uninstall", L"--install"}}) {
    SCOPED_TRACE(::testing::PrintToString(options));
    EXPECT_EQ(Run(options), 0);
    EXPECT_TRUE(machine.services.Find("TavrinService").has_value());
  }
  EXPECT_EQ(machine.pipes.Created().size(), 0u);
  EXPECT_EQ(machine.calls.Count("CreateFileW"), 0u);  // neither command writes to the log
}

TEST_F(EntryPoint, InstallFreezesTheGivenDirectoryUntested) {
  EXPECT_EQ(Run({L"--install", L"--runtime", L"X:\\nowhere"}), 0);
  EXPECT_EQ(machine.services.Find("TavrinService").value().binaryPath,
            R"("C:\Program Files\Tavrin\TavrinService.exe" --runtime "X:\nowhere")");
}

TEST_F(EntryPoint, InstallAloneFreezesTheDiscoveredDirectory) {
  EXPECT_EQ(Run({L"--install"}), 0);
  EXPECT_EQ(machine.services.Find("TavrinService").value().binaryPath,
            R"("C:\Program Files\Tavrin\TavrinService.exe" --runtime "C:\found")");
}

TEST_F(EntryPoint, InstallByAnOrdinaryUserGivesOneWithTheHint) {
  machine.services.administrator = false;
  EXPECT_EQ(Run({L"--install"}), 1);
  EXPECT_EQ(machine.console.Errors(), "OpenSCManager failed err=5 (need Administrator)\n");
}

TEST_F(EntryPoint, InstalledTextOutsideAsciiIsPrintedAsUtf8) {
  EXPECT_EQ(Run({L"--install", L"--runtime", L"C:\\数据"}), 0);
  EXPECT_EQ(machine.console.Output(),
            "Installed and started TavrinService\nbinPath \"C:\\Program Files\\Tavrin\\"
            "TavrinService.exe\" --runtime \"C:\\数据\"\n");
}

TEST_F(EntryPoint, UninstallBeatsTheModes) {
  EXPECT_EQ(Run({L"--console", L"--daemon", L"--uninstall"}), 0);
  EXPECT_EQ(machine.console.Output(), "Service not installed.\n");
  EXPECT_EQ(machine.pipes.Created().size(), 0u);
}

TEST_F(EntryPoint, RuntimeOptionSkipsTheDiscoveryAndIsNotTested) {
  EXPECT_EQ(Run({L"--runtime", L"C:\\other\\", L"--uninstall"}), 0);
  EXPECT_EQ(g_runtimeDir, L"C:\\other\\");
  EXPECT_FALSE(DiscoveryRan());
  EXPECT_EQ(machine.calls.Count("GetFileAttributesW"), 0u);
}

TEST_F(EntryPoint, RuntimeAsTheLastArgumentIsIgnoredAndTheDiscoveryRuns) {
  EXPECT_EQ(Run({L"--uninstall", L"--runtime"}), 0);
  EXPECT_EQ(g_runtimeDir, L"C:\\found");
  EXPECT_TRUE(DiscoveryRan());
}

TEST_F(EntryPoint, EmptyRuntimeKeepsTheBuiltInDirectoryWithoutADiscovery) {
  EXPECT_EQ(Run({L"--runtime", L"", L"--uninstall"}), 0);
  EXPECT_EQ(g_runtimeDir, L"D:\\VPN\\tools\\phase-b\\local");
  EXPECT_FALSE(DiscoveryRan());
}

TEST_F(EntryPoint, RuntimeTakesAnOptionAsItsValue) {
  EXPECT_EQ(Run({L"--runtime", L"--install", L"--uninstall"}), 0);
  EXPECT_EQ(g_runtimeDir, L"--install");
  EXPECT_FALSE(machine.services.Find("TavrinService").has_value());
}

TEST_F(EntryPoint, LastRuntimeWins) {
  EXPECT_EQ(Run({L"--runtime", L"C:\\run", L"--uninstall", L"--runtime", L"C:\\other"}), 0);
  EXPECT_EQ(g_runtimeDir, L"C:\\other");
}

TEST_F(EntryPoint, OwnerPidIsStored) {
  EXPECT_EQ(Run({L"--owner-pid", L"4321", L"--uninstall"}), 0);
  EXPECT_EQ(g_ownerPid, 4321u);
}

TEST_F(EntryPoint, OwnerPidThatIsNoNumberStartsNoWatch) {
  EXPECT_EQ(Run({L"--daemon", L"--owner-pid", L"abc"}), 0);
  EXPECT_EQ(g_ownerPid, 0u);
  EXPECT_EQ(machine.calls.Count("OpenProcess"), 0u);
  EXPECT_EQ(machine.calls.Count("CreateThread"), 1u);  // the warm-up
}

TEST_F(EntryPoint, OwnerPidInConsoleModeIsStoredAndNeverUsed) {
  EXPECT_EQ(Run({L"--console", L"--owner-pid", L"123"}), 0);
  EXPECT_EQ(g_ownerPid, 123u);
  EXPECT_EQ(machine.calls.Count("OpenProcess"), 0u);
}

TEST_F(EntryPoint, OwnerPidInDaemonModeIsWatched) {
  EXPECT_EQ(Run({L"--daemon", L"--owner-pid", L"123"}), 0);
  EXPECT_EQ(machine.WaitForThreads(), 0u);
  EXPECT_EQ(machine.calls.TextsOf("OpenProcess"), std::vector<std::string>{"0x100000, own, 123"});
}

TEST_F(EntryPoint, ServerRunsInTheRuntimeDirectory) {
  EXPECT_EQ(Run({L"--console", L"--runtime", L"C:\\other"}), 0);
  EXPECT_EQ(machine.files.currentDirectory, L"C:\\other");
}

}  // namespace
}  // namespace vpn
