// What the service reports to the service manager, watched from outside while it starts and stops.
#include <algorithm>
#include <atomic>
#include <thread>

#include "tests/e2e/harness/expect.h"
#include "tests/e2e/harness/installed_service_test.h"
#include "tests/e2e/harness/waiting.h"

namespace e2e {
namespace {

// A status as `type, state, accepted controls, exit code, specific code, check point, wait hint`.
constexpr char kStoppedBefore[] = "16, 1, 5, 0, 0, 0, 0";
constexpr char kManagersOwnPending[] = "16, 2, 0, 0, 0, 0, 0";  // before the program reports
constexpr char kStartPending[] = "16, 2, 0, 0, 0, 0, 2000";
constexpr char kRunning[] = "16, 4, 5, 0, 0, 0, 0";
constexpr char kStopPending[] = "16, 3, 5, 0, 0, 0, 4000";
constexpr char kStopped[] = "16, 1, 5, 0, 0, 0, 0";
// A state that lasts for a moment can fall between two looks.
constexpr int kAttempts = 50;

std::string Text(const SERVICE_STATUS_PROCESS& status) {
  std::string text = std::to_string(status.dwServiceType);
  for (const DWORD field :
       {status.dwCurrentState, status.dwControlsAccepted, status.dwWin32ExitCode,
        status.dwServiceSpecificExitCode, status.dwCheckPoint, status.dwWaitHint}) {
    text += ", " + std::to_string(field);
  }
  return text;
}

// Looks at the service without a pause, and notes each change, for as long as the object lives.
class Recorder {
 public:
  Recorder() : thread_([this] { Run(); }) {
    WaitUntil("the recorder looks", [this] { return looked_.load(); });
  }
  ~Recorder() {
    if (thread_.joinable()) Finish();
  }
  Recorder(const Recorder&) = delete;
  Recorder& operator=(const Recorder&) = delete;

  // What was seen, in order.
  Lines Finish() {
    done_ = true;
    thread_.join();
    return seen_;
  }

 private:
  void Run() {
    const WindowsService service;
    for (bool isLast = false; !isLast;) {
      isLast = done_;  // one more look sees what was waited for
      const std::string text = Text(service.Status());
      if (seen_.empty() || seen_.back() != text) seen_.push_back(text);
      looked_ = true;
    }
  }

  std::atomic<bool> done_{false};
  std::atomic<bool> looked_{false};
  Lines seen_;
  std::thread thread_;
};

bool Contains(const Lines& lines, const std::string& line) {
  return std::find(lines.begin(), lines.end(), line) != lines.end();
}

// The one that the manager reports by itself is not the program's affair.
Lines WithoutManagersOwn(Lines lines) {
  std::erase(lines, kManagersOwnPending);
  return lines;
}

class ServiceStates : public InstalledServiceTest {
 protected:
  void SetUp() override {
    Install();
    WindowsService().WaitForState(SERVICE_RUNNING);
  }
  void StopAndWait() {
    WindowsService service;
    const HANDLE process = service.OpenProcess();
    EXPECT_EQ(service.Control(SERVICE_CONTROL_STOP), static_cast<DWORD>(NO_ERROR));
    service.WaitForState(SERVICE_STOPPED);
    ExpectEnds(process);
  }
  Lines RecordStart() {
    Recorder recorder;
    WindowsService service;
    service.Start();
    service.WaitForState(SERVICE_RUNNING);
    return WithoutManagersOwn(recorder.Finish());
  }
};

TEST_F(ServiceStates, StartIsReportedPendingAndThenRunning) {
  Lines seen;
  for (int attempt = 0; attempt < kAttempts && !Contains(seen, kStartPending); ++attempt) {
    StopAndWait();
    seen = RecordStart();
    EXPECT_EQ(seen.back(), kRunning);
  }
  ExpectLines(seen, {kStoppedBefore, kStartPending, kRunning});
}

// With the tunnel up there is something to wait for.
TEST_F(ServiceStates, StopIsReportedPendingAndThenStopped) {
  ASSERT_EQ(Ask(R"({"op":"connect"})"), kUp);
  Recorder recorder;
  StopAndWait();
  ExpectLines(recorder.Finish(), {kRunning, kStopPending, kStopped});
}

// The handler does not wait for the connect, which holds the server.
TEST_F(ServiceStates, StopDuringAConnectIsReportedAtOnce) {
  machine.Edit([](standins::MachineState& state) { state.heldCall = "CreateIpForwardEntry2"; });
  PipeClient client;
  client.Write(Frame(R"({"op":"connect"})"));
  WaitUntil("both children are up",
            [this] { return machine.Starts("tun2socks-windows-amd64.exe") == 1; });
  WindowsService service;
  EXPECT_EQ(service.Control(SERVICE_CONTROL_STOP), static_cast<DWORD>(NO_ERROR));
  EXPECT_EQ(Text(service.Status()), kStopPending);
  machine.Edit([](standins::MachineState& state) { state.heldCall.clear(); });
  EXPECT_EQ(client.ReadReply(), kUp);
  service.WaitForState(SERVICE_STOPPED);
  EXPECT_EQ(ServiceLog().back(), "service stopped");
}

TEST_F(ServiceStates, OtherControlsChangeNothing) {
  WindowsService service;
  EXPECT_EQ(service.Control(SERVICE_CONTROL_INTERROGATE), static_cast<DWORD>(NO_ERROR));
  EXPECT_EQ(service.Control(128), static_cast<DWORD>(NO_ERROR));
  EXPECT_EQ(Text(service.Status()), kRunning);
  EXPECT_EQ(Ask(R"({"op":"status"})"), kDown);
}

}  // namespace
}  // namespace e2e
