// The service half of run_modes.h.
#include "src/host/host_internal.h"
#include "src/host/run_modes.h"
#include "src/runtime/process_state.h"
#include "tests/unit/background_server.h"
#include "tests/unit/product_state.h"
#include "tests/unit/runtime_files.h"

namespace vpn {
namespace {

constexpr char kOkIdle[] = R"({"ok":true,"running":false,"error":""})";
constexpr char kOkRunning[] = R"({"ok":true,"running":true,"error":""})";

// A status as `type, state, accepted controls, exit code, specific code, check point, wait hint`.
constexpr char kStartPending[] = "16, 2, 0, 0, 0, 0, 2000";
constexpr char kRunning[] = "16, 4, 5, 0, 0, 0, 0";
constexpr char kStopPending[] = "16, 3, 5, 0, 0, 0, 4000";
constexpr char kStopped[] = "16, 1, 5, 0, 0, 0, 0";

class ServiceMode : public unit::ProductTest {
 protected:
  ServiceMode() {
    machine.files.PutDirectory(L"C:\\run");
    SetRuntimeDir(L"C:\\run");
    machine.services.startedByManager = true;
  }
  std::string Log() { return machine.files.Read(L"C:\\run\\tavrin-service.log").value_or(""); }
  std::vector<std::string> Reported() {
    std::vector<std::string> texts;
    for (const SERVICE_STATUS& status : machine.services.Reported()) {
      std::string text = std::to_string(status.dwServiceType);
      for (const DWORD field :
           {status.dwCurrentState, status.dwControlsAccepted, status.dwWin32ExitCode,
            status.dwServiceSpecificExitCode, status.dwCheckPoint, status.dwWaitHint}) {
        text += ", " + std::to_string(field);
      }
      texts.push_back(text);
    }
    return texts;
  }
  void SendAtFirstWait(DWORD control) {
    machine.faults.Before("ConnectNamedPipe", 1,
                          [this, control] { sent_ = machine.services.Send(control); });
  }
  std::string Exchange(const char* request) {
    return sim::PipeClient::Exchange(machine, request).value_or("no reply");
  }
  std::optional<std::uint32_t> sent_;
};

TEST_F(ServiceMode, DispatcherIsGivenTheOneService) {
  SendAtFirstWait(SERVICE_CONTROL_STOP);
  EXPECT_EQ(RunUnderServiceManager(), 0);
  EXPECT_EQ(machine.calls.TextsOf("StartServiceCtrlDispatcherW"),
            std::vector<std::string>{"\"TavrinService\""});
  EXPECT_EQ(machine.services.HandlersRegistered(), std::vector<std::string>{"TavrinService"});
}

TEST_F(ServiceMode, StopReportsEveryStateWithItsExactFields) {
  SendAtFirstWait(SERVICE_CONTROL_STOP);
  EXPECT_EQ(RunUnderServiceManager(), 0);
  EXPECT_EQ(sent_, 0u);
  EXPECT_EQ(Reported(),
            (std::vector<std::string>{kStartPending, kRunning, kStopPending, kStopped}));
}

TEST_F(ServiceMode, SystemShutdownDoesWhatStopDoes) {
  SendAtFirstWait(SERVICE_CONTROL_SHUTDOWN);
  EXPECT_EQ(RunUnderServiceManager(), 0);
  EXPECT_EQ(sent_, 0u);
  EXPECT_EQ(Reported(),
            (std::vector<std::string>{kStartPending, kRunning, kStopPending, kStopped}));
}

TEST_F(ServiceMode, FirstAndLastLineAreLoggedAndNothingIsEchoed) {
  SendAtFirstWait(SERVICE_CONTROL_STOP);
  EXPECT_EQ(RunUnderServiceManager(), 0);
  EXPECT_EQ(Log(), "service running. runtime=C:\\run\nservice stopped\n");
  EXPECT_EQ(machine.console.Output(), "");
}

TEST_F(ServiceMode, LogLinesStandBetweenTheReports) {
  SendAtFirstWait(SERVICE_CONTROL_STOP);
  (void)RunUnderServiceManager();
  std::vector<std::string> sequence;
  for (const std::string& line :
       machine.calls.Sequence({"RegisterServiceCtrlHandlerExW", "SetServiceStatus", "CreateFileW",
                               "CreateNamedPipeW"})) {
    const bool ofTheLog = line.find("tavrin-service.log") != std::string::npos;
    if (line.find("CreateFileW") == std::string::npos || ofTheLog) {
      sequence.push_back(ofTheLog ? "log" : line.substr(0, line.find(',')));
    }
  }
  EXPECT_EQ(sequence,
            (std::vector<std::string>{"RegisterServiceCtrlHandlerExW \"TavrinService\"",
                                      "SetServiceStatus 2", "log", "SetServiceStatus 4",
                                      R"(CreateNamedPipeW "\\.\pipe\TavrinService")",
                                      "SetServiceStatus 3", "log", "SetServiceStatus 1"}));
}

TEST_F(ServiceMode, StaleStopRequestIsClearedAndTheOtherFlagsStayClear) {
  g_stopRequested = 1;
  int stop = -1;
  machine.faults.Before("CreateNamedPipeW", 1, [&] { stop = g_stopRequested; });
  SendAtFirstWait(SERVICE_CONTROL_STOP);
  EXPECT_EQ(RunUnderServiceManager(), 0);
  EXPECT_EQ(stop, 0);
  EXPECT_EQ(g_consoleEcho, 0);
  EXPECT_EQ(g_shutdownAllowed, 0);
}

TEST_F(ServiceMode, OtherControlsDoNothingAndGiveZero) {
  unit::BackgroundServer server(machine, RunUnderServiceManager);
  ASSERT_TRUE(machine.services.WaitForState(SERVICE_RUNNING));
  for (const DWORD control : {2u, 3u, 4u, 6u, 128u}) {
    EXPECT_EQ(machine.services.Send(control), 0u) << control;
  }
  EXPECT_EQ(g_stopRequested, 0);
  EXPECT_EQ(Reported(), (std::vector<std::string>{kStartPending, kRunning}));
  EXPECT_EQ(machine.services.Send(SERVICE_CONTROL_STOP), 0u);
  EXPECT_TRUE(server.Ends());
}

TEST_F(ServiceMode, ShutdownOperationOnlyStopsTheTunnel) {
  unit::PutRuntime(machine);
  unit::BackgroundServer server(machine, RunUnderServiceManager);
  EXPECT_EQ(Exchange(R"({"op":"connect"})"), kOkRunning);
  EXPECT_EQ(Exchange(R"({"op":"shutdown"})"), kOkIdle);
  EXPECT_EQ(machine.processes.Alive(), std::vector<std::string>());
  EXPECT_EQ(Exchange(R"({"op":"status"})"), kOkIdle);  // still served
  EXPECT_EQ(Reported(), (std::vector<std::string>{kStartPending, kRunning}));
  (void)machine.services.Send(SERVICE_CONTROL_STOP);
  EXPECT_TRUE(server.Ends());
}

TEST_F(ServiceMode, StopDuringAConnectIsReportedAtOnceAndTakesEffectWhenItIsAnswered) {
  unit::PutRuntime(machine);
  std::vector<std::string> duringConnect;
  machine.faults.Before("CreateJobObjectW", 1, [&] {
    (void)machine.services.Send(SERVICE_CONTROL_STOP);
    duringConnect = Reported();
  });
  unit::BackgroundServer server(machine, RunUnderServiceManager);
  EXPECT_EQ(Exchange(R"({"op":"connect"})"), kOkRunning);
  ASSERT_TRUE(server.Ends());
  EXPECT_EQ(duringConnect, (std::vector<std::string>{kStartPending, kRunning, kStopPending}));
  EXPECT_EQ(machine.processes.Alive(), std::vector<std::string>());
  EXPECT_EQ(Log(), "service running. runtime=C:\\run\nipc op=connect\nservice stopped\n");
}

TEST_F(ServiceMode, TunnelIsDownBeforeTheServiceCountsAsStopped) {
  unit::PutRuntime(machine);
  unit::BackgroundServer server(machine, RunUnderServiceManager);
  EXPECT_EQ(Exchange(R"({"op":"connect"})"), kOkRunning);
  std::vector<std::string> alive = {"not seen"};
  machine.faults.Before("SetServiceStatus", 2, [&] { alive = machine.processes.Alive(); });
  (void)machine.services.Send(SERVICE_CONTROL_STOP);
  ASSERT_TRUE(server.Ends());
  EXPECT_EQ(alive, std::vector<std::string>());
}

TEST_F(ServiceMode, RefusedRegistrationEndsTheServiceAtOnce) {
  machine.faults.Fail("RegisterServiceCtrlHandlerExW");
  EXPECT_EQ(RunUnderServiceManager(), 0);
  EXPECT_EQ(Reported(), std::vector<std::string>());
  EXPECT_EQ(Log(), "");
  EXPECT_EQ(machine.pipes.Created().size(), 0u);
}

TEST_F(ServiceMode, MainFunctionWithoutADispatcherReturnsAtOnce) {
  ServiceMain(0, nullptr);
  EXPECT_EQ(machine.calls.Names(), std::vector<std::string>{"RegisterServiceCtrlHandlerExW"});
}

TEST_F(ServiceMode, RefusedReportsHinderNothing) {
  machine.faults.FailAlways("SetServiceStatus");
  unit::BackgroundServer server(machine, RunUnderServiceManager);
  EXPECT_EQ(Exchange(R"({"op":"status"})"), kOkIdle);
  EXPECT_EQ(Reported(), std::vector<std::string>());
  machine.faults.Clear();  // or the dispatcher would never hear that the service has stopped
  (void)machine.services.Send(SERVICE_CONTROL_STOP);
  EXPECT_TRUE(server.Ends());
}

TEST_F(ServiceMode, HandlerWithoutAStatusHandleReportsNothingButStops) {
  EXPECT_EQ(ServiceControlHandler(SERVICE_CONTROL_STOP, 0, nullptr, nullptr), 0u);
  EXPECT_EQ(machine.calls.Count("SetServiceStatus"), 0u);
  EXPECT_EQ(g_stopRequested, 1);
  EXPECT_EQ(machine.calls.Count("CreateFileW"), 1u);
}

TEST_F(ServiceMode, StopPendingIsReportedBeforeThePipeIsWoken) {
  SendAtFirstWait(SERVICE_CONTROL_STOP);
  (void)RunUnderServiceManager();
  EXPECT_EQ(machine.calls.Sequence({"SetServiceStatus", "CreateFileW"}),
            (std::vector<std::string>{
                "SetServiceStatus 2, 0, 0, 2000",
                R"(CreateFileW "C:\run\tavrin-service.log", 0x40000000, 3, 4, 0x80)",
                "SetServiceStatus 4, 5, 0, 0", "SetServiceStatus 3, 5, 0, 4000",
                R"(CreateFileW "\\.\pipe\TavrinService", 0xC0000000, 0, 3, 0x80)",
                R"(CreateFileW "C:\run\tavrin-service.log", 0x40000000, 3, 4, 0x80)",
                "SetServiceStatus 1, 5, 0, 0"}));
}

TEST_F(ServiceMode, OwnerIsNeverLookedAt) {
  g_ownerPid = 123;
  SendAtFirstWait(SERVICE_CONTROL_STOP);
  (void)RunUnderServiceManager();
  EXPECT_EQ(machine.calls.Count("OpenProcess"), 0u);
  EXPECT_EQ(machine.calls.Count("CreateThread"), 1u);  // the warm-up
}

TEST_F(ServiceMode, StartedByHandFallsBackToTheConsole) {
  machine.services.startedByManager = false;  // the dispatcher fails with 1063
  machine.faults.Before("ConnectNamedPipe", 1, [&] { machine.console.Send(CTRL_C_EVENT); });
  EXPECT_EQ(RunUnderServiceManager(), 0);
  EXPECT_EQ(Log(),
            "TavrinService console mode. Pipe \\\\.\\pipe\\TavrinService\nRuntime C:\\run\n"
            "Ctrl+C to stop.\nstopped.\n");
}

TEST_F(ServiceMode, AnyOtherFailureOfTheDispatcherGivesOne) {
  machine.services.startedByManager = false;
  for (const DWORD error : {5u, 1056u, 1062u, 1064u, 0u}) {
    machine.services.dispatcherError = error;
    EXPECT_EQ(RunUnderServiceManager(), 1) << error;
  }
  EXPECT_EQ(machine.pipes.Created().size(), 0u);
  EXPECT_EQ(Log(), "");
}

}  // namespace
}  // namespace vpn
