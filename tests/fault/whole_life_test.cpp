// The whole life of the service's process, with each fallible call failing in turn: its log, its
// warm-up, its pipe and, as a Windows service, its talk with the service manager.
#include <gtest/gtest.h>

#include <windows.h>

#include <algorithm>
#include <cstdio>
#include <exception>
#include <latch>
#include <sstream>

#include "src/host/run_modes.h"
#include "src/runtime/process_state.h"
#include "tests/fault/failing_run.h"
#include "tests/fault/next_connect.h"
#include "tests/fault/reply_texts.h"
#include "tests/sim/pipe_client.h"
#include "tests/sim/scheduler.h"
#include "tests/sim/text.h"

namespace fault {
namespace {

// Platform calls of all threads without an end. A start whose Xray never listens makes thousands.
constexpr std::uint64_t kPatience = 5'000;
constexpr char kOkIdle[] = R"({"ok":true,"running":false,"error":""})";
constexpr char kOkRunning[] = R"({"ok":true,"running":true,"error":""})";
constexpr char kRefused[] = R"({"ok":false,"running":false,"error":")";
constexpr char kNoReply[] = "no reply";
constexpr wchar_t kLog[] = L"C:\\run\\tavrin-service.log";

enum class Host { kDaemon, kService };

const Scene& PanelScene() {
  return AllScenes().back();
}

struct Outcome {
  Lines replies;  // to connect, disconnect and, of a daemon, shutdown
  Lines log;
  std::vector<sim::CallRecord> calls;
  bool isKilled = false;
  bool hadToBeEnded = false;
};

// In the place of the C runtime's, which ends the process.
[[noreturn]] void EndByTerminate() {
  ExitProcess(3);
}

class OneLife {
 public:
  OneLife(Stage& stage, Host host) : stage_(stage), machine_(*stage.machine), host_(host) {
    machine_.services.startedByManager = host == Host::kService;
  }

  Outcome Run(const std::function<void(sim::Machine&)>& arrange) {
    BeginProcess();
    vpn::g_ownerPid = 0;
    std::latch ended(1);
    const size_t from = machine_.calls.All().size();
    const auto handler = std::set_terminate(EndByTerminate);
    outcome_.isKilled = machine_
                            .RunProcess([&] {
                              arrange(machine_);
                              RunThreads();
                              ended.count_down();
                            })
                            .killed;
    ended.wait();
    std::set_terminate(handler);
    outcome_.calls = FallibleCalls(machine_, from);
    outcome_.log = LogLines();
    machine_.faults.Clear();
    machine_.clock.Advance(10'000);
    EXPECT_EQ(machine_.OpenHandles(), Lines());
    EXPECT_EQ(machine_.Violations(), Lines());
    EXPECT_EQ(Missing(stage_.Foreign(), stage_.Now()), Lines());
    return outcome_;
  }

 private:
  // One behind the other: a thread goes on until it blocks.
  void RunThreads() {
    sim::Scheduler scheduler(0);
    scheduler.Add("the server", [this] { Serve(); });
    scheduler.Add("the client", [this] { Ask(); });
    scheduler.Add("the last resort", [this, process = machine_.ThisProcess()] { End(process); });
    scheduler.Run();
    if (!machine_.ThisProcess()->crashed) {
      EndProcess();
    }
  }

  void Serve() {
    (void)(host_ == Host::kService ? vpn::RunUnderServiceManager() : vpn::DaemonMain());
    const auto lock = machine_.Lock();
    hasEnded_ = true;
    machine_.core().changed.notify_all();
  }

  void Ask() {
    outcome_.replies.push_back(Exchange(R"({"op":"connect"})"));
    outcome_.replies.push_back(Exchange(R"({"op":"disconnect"})"));
    if (host_ == Host::kService) {
      (void)machine_.services.Send(SERVICE_CONTROL_STOP);
    } else {
      outcome_.replies.push_back(Exchange(R"({"op":"shutdown"})"));
    }
  }

  // Whoever gets no answer asks once more.
  std::string Exchange(const char* request) {
    std::optional<std::string> reply;
    for (int attempt = 0; attempt < 2 && !reply && !hasEnded_; ++attempt) {
      reply = sim::PipeClient::Exchange(machine_, request);
    }
    return reply.value_or(kNoReply);
  }

  // A server that nobody can reach any more is stopped, or in the end killed.
  void End(const std::shared_ptr<sim::Process>& process) {
    sim::Scheduler::WaitForCalls(kPatience);
    if (!hasEnded_ && host_ == Host::kService) {
      outcome_.hadToBeEnded = true;
      (void)machine_.services.Send(SERVICE_CONTROL_STOP);
      sim::Scheduler::WaitForCalls(kPatience);
    }
    if (!hasEnded_ && !process->crashed) {
      outcome_.hadToBeEnded = true;
      machine_.Crash(process);
    }
  }

  Lines LogLines() const {
    std::istringstream log(machine_.files.Read(kLog).value_or(""));
    Lines lines;
    for (std::string line; std::getline(log, line);) {
      lines.push_back(line);
    }
    return lines;
  }

  Stage& stage_;
  sim::Machine& machine_;
  const Host host_;
  bool hasEnded_ = false;
  Outcome outcome_;
};

bool IsOfTheLog(const sim::CallRecord& call) {
  return call.name == "LockFileEx" || call.text.find("tavrin-service.log") != std::string::npos;
}

class WholeLife : public ::testing::TestWithParam<Host> {
 protected:
  void SetUp() override {
    Stage stage(PanelScene());
    whole = OneLife(stage, GetParam()).Run([](sim::Machine&) {});
    ASSERT_EQ(whole.replies, GetParam() == Host::kService ? (Lines{kOkRunning, kOkIdle})
                                                          : (Lines{kOkRunning, kOkIdle, kOkIdle}));
    ASSERT_FALSE(whole.hadToBeEnded);
    // The warm-up's thread is the last one that was made.
    for (const sim::CallRecord& call : whole.calls) {
      warmUp = std::max(warmUp, call.thread);
    }
  }

  void RunAll(Mode mode) {
    EachCall(GetParam() == Host::kService ? "Service" : "Daemon", Describe(whole.calls),
             [&](size_t index) {
               Stage stage(PanelScene());
               const Outcome outcome = OneLife(stage, GetParam()).Run([&](sim::Machine& machine) {
                 Arrange(machine, mode, index);
               });
               CheckLog(outcome);
               if (mode == Mode::kOnce) {
                 CheckOnce(outcome, whole.calls[index]);
                 EXPECT_EQ(stage.machine->processes.Alive(), Lines());
               }
               ExpectNextConnectIsClean(stage);
             });
  }

  void CheckOnce(const Outcome& outcome, const sim::CallRecord& call) const {
    if (IsOfTheLog(call)) {
      EXPECT_EQ(outcome.replies, whole.replies);
      Lines lost = Missing(Sorted(whole.log), Sorted(outcome.log));
      EXPECT_EQ(lost.size(), call.name == "LockFileEx" ? 0u : 1u);
      return;
    }
    if (call.thread == warmUp) {
      EXPECT_EQ(outcome.replies, whole.replies);
      EXPECT_EQ(outcome.log, whole.log);
      return;
    }
    // Without the thread there is no service, without the last report or the dispatcher the manager
    // never hears of its end.
    if (outcome.isKilled) {
      EXPECT_TRUE(call.name == "CreateThread" || call.name == "SetServiceStatus" ||
                  call.name == "StartServiceCtrlDispatcherW");
      return;
    }
    for (const std::string& reply : outcome.replies) {
      EXPECT_TRUE(IsKnownReply(reply)) << reply;
    }
  }

  static Lines Sorted(Lines lines) {
    std::sort(lines.begin(), lines.end());
    return lines;
  }

  static bool IsKnownReply(const std::string& reply) {
    if (!reply.starts_with(kRefused)) {
      return reply == kOkRunning || reply == kOkIdle || reply == kNoReply;
    }
    std::string text = reply.substr(sizeof kRefused - 1);
    text.resize(text.size() - 2);
    for (size_t at = text.find("\\\\"); at != std::string::npos; at = text.find("\\\\", at + 1)) {
      text.erase(at, 1);
    }
    return IsKnownText(PanelScene(), sim::Widen(text));
  }

  // Whole lines, each of which the service writes.
  static void CheckLog(const Outcome& outcome) {
    for (const std::string& line : outcome.log) {
      const bool isKnown =
          std::any_of(std::begin(kBeginnings), std::end(kBeginnings),
                      [&](const char* beginning) { return line.starts_with(beginning); });
      EXPECT_TRUE(isKnown) << line;
    }
  }

  static constexpr const char* kBeginnings[] = {
      "daemon mode. runtime=C:\\run",
      "daemon stopped",
      "service running. runtime=C:\\run",
      "service stopped",
      "TavrinService console mode. Pipe ",  // when the dispatcher can't be reached
      "Runtime C:\\run",
      "Ctrl+C to stop.",
      "stopped.",
      "ipc op=connect",
      "ipc op=disconnect",
      "ipc op=shutdown",
      "ipc error=",
      "ipc read failed err=",
      "ipc write reply failed err="};

  Outcome whole;
  int warmUp = 0;
};

TEST_P(WholeLife, EndsInOrderWhenOneCallFails) {
  RunAll(Mode::kOnce);
}

TEST_P(WholeLife, EndsInOrderWhenAllCallsFailFromOneOn) {
  RunAll(Mode::kOnwards);
}

TEST_P(WholeLife, LeavesNothingThatTheNextOneDoesNotPutRight) {
  RunAll(Mode::kKilled);
}

INSTANTIATE_TEST_SUITE_P(Scenes, WholeLife, ::testing::Values(Host::kDaemon, Host::kService),
                         [](const auto& host) {
                           return host.param == Host::kService ? "Service" : "Daemon";
                         });

}  // namespace
}  // namespace fault
