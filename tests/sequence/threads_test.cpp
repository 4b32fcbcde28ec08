// The product's threads at once: the warm-up with the first connect, a stop with a request, the
// owner's end with either. A seed chooses the interleaving and the moment of the stop.
#include <gmock/gmock.h>

#include <algorithm>
#include <cstdlib>
#include <optional>
#include <random>
#include <set>
#include <sstream>
#include <string>

#include "src/host/run_modes.h"
#include "src/panel/panel_client.h"
#include "src/runtime/process_state.h"
#include "tests/fault/scene.h"
#include "tests/sim/pipe_client.h"
#include "tests/sim/scheduler.h"
#include "tests/unit/product_state.h"

namespace sequence {
namespace {

using fault::Lines;

constexpr char kConnect[] = R"({"op":"connect"})";
constexpr char kDisconnect[] = R"({"op":"disconnect"})";
constexpr char kShutdown[] = R"({"op":"shutdown"})";
constexpr char kOkIdle[] = R"({"ok":true,"running":false,"error":""})";
constexpr char kOkRunning[] = R"({"ok":true,"running":true,"error":""})";
constexpr char kNoReply[] = "no reply";
constexpr std::uint32_t kOwner = 777;

enum class Mode { kDaemon, kConsole, kService };

struct Scene {
  const char* name;
  Mode mode;
  Lines requests;          // of one client, one behind the other
  bool isStopped = false;  // in the way of the mode; a daemon by another client's request
  bool ownerEnds = false;
};

const std::vector<Scene>& AllScenes() {
  static const auto& scenes = *new std::vector<Scene>{
      {"WarmUpWithTheFirstConnect", Mode::kDaemon, {kConnect, kDisconnect, kShutdown}},
      {"StopOfTheServiceWithAConnect", Mode::kService, {kConnect}, true},
      {"StopOfTheServiceWithADisconnect", Mode::kService, {kConnect, kDisconnect}, true},
      {"CtrlCWithAConnect", Mode::kConsole, {kConnect}, true},
      {"OwnersEndWithTheWarmUp", Mode::kDaemon, {}, false, true},
      {"OwnersEndWithAConnect", Mode::kDaemon, {kConnect}, false, true},
      {"OwnersEndWithAStop", Mode::kDaemon, {}, true, true},
      {"OwnersEndWithAConnectAndAStop", Mode::kDaemon, {kConnect}, true, true},
  };
  return scenes;
}

void PrintTo(const Scene& scene, std::ostream* out) {
  *out << scene.name;
}

// One life of the process in the scene.
class Life {
 public:
  Life(const Scene& scene, std::uint64_t seed) : scene_(scene), scheduler_(seed), random_(seed) {
    unit::ResetProductState();
    vpn::g_runtimeDir = L"C:\\run";
    (void)vpn::SharedHttpSession();  // is opened in the program's first run alone
    machine_.services.startedByManager = scene.mode == Mode::kService;
    if (scene.ownerEnds) {
      machine_.processes.Seed(L"C:\\ui\\TavrinUi.exe", kOwner);
      vpn::g_ownerPid = kOwner;
    }
  }

  // `calls`: how many an undisturbed run makes.
  void Go(std::uint64_t calls) {
    calls_ = calls;
    scheduler_.Add("the server", [this] { Serve(); });
    if (!scene_.requests.empty()) {
      scheduler_.Add("the client", [this] { Ask(); });
    }
    if (scene_.isStopped) {
      scheduler_.Add("the stop", [this, moment = Moment()] { Stop(moment); });
    }
    if (scene_.ownerEnds) {
      scheduler_.Add("the owner", [this, moment = Moment()] { EndOwner(moment); });
      scheduler_.Add("the last resort", [this] { StopWhatNobodyStops(); });
    }
    scheduler_.Run();
    machine_.clock.Advance(1000);
  }

  void Check() {
    EXPECT_EQ(machine_.WaitForThreads(), 0u);
    EXPECT_EQ(machine_.OpenHandles(), Lines());
    EXPECT_EQ(machine_.Violations(), Lines());
    EXPECT_EQ(machine_.processes.Alive(), Lines());
    EXPECT_EQ(fault::Difference(fault::LinesOf(stage_.before), stage_.Now()), Lines());
    EXPECT_EQ(exitCode_, 0);
    CheckReplies();
    CheckLog();
  }

  std::vector<sim::CallRecord> Calls() const { return machine_.calls.All(); }

 private:
  std::uint64_t Moment() {
    return std::uniform_int_distribution<std::uint64_t>(0, calls_)(random_);
  }

  void Serve() {
    switch (scene_.mode) {
      case Mode::kDaemon:
        exitCode_ = vpn::DaemonMain();
        break;
      case Mode::kConsole:
        exitCode_ = vpn::ConsoleMain();
        break;
      case Mode::kService:
        exitCode_ = vpn::RunUnderServiceManager();
        break;
    }
    const auto lock = machine_.Lock();
    hasEnded_ = true;
    machine_.core().changed.notify_all();
  }

  std::string Exchange(const std::string& request) {
    sim::PipeClient client(machine_);
    if (!client.Connect()) {
      return kNoReply;
    }
    sim::Scheduler::Pass();
    if (!client.SendFrame(request)) {
      return kNoReply;
    }
    sim::Scheduler::Pass();
    return client.ReceiveFrame().value_or(kNoReply);
  }

  void Ask() {
    for (const std::string& request : scene_.requests) {
      replies_.push_back(Exchange(request));
    }
  }

  // Before these, Ctrl+C and the service manager reach a process that is not there yet.
  bool IsUp() const { return machine_.files.Exists(kLog) && scene_.mode != Mode::kService; }

  void Stop(std::uint64_t moment) {
    sim::Scheduler::WaitForCalls(moment);
    if (scene_.mode == Mode::kService) {
      EXPECT_TRUE(machine_.services.WaitForState(SERVICE_RUNNING));
      (void)machine_.services.Send(SERVICE_CONTROL_STOP);
      return;
    }
    while (!IsUp()) {
      sim::Scheduler::WaitForCalls(1);
    }
    if (scene_.mode == Mode::kConsole) {
      EXPECT_TRUE(machine_.console.Send(CTRL_C_EVENT));
    } else {
      stopReply_ = Exchange(kShutdown);
    }
  }

  void EndOwner(std::uint64_t moment) {
    sim::Scheduler::WaitForCalls(moment);
    machine_.processes.Exit(kOwner, 0);
  }

  // An owner that has ended before the watch looks for it ends nothing.
  void StopWhatNobodyStops() {
    bool hasEnded = false;
    {
      sim::MachineLock lock = machine_.Lock();
      hasEnded = machine_.core().changed.wait_for(lock, std::chrono::seconds(20),
                                                  [this] { return hasEnded_; });
    }
    if (!hasEnded) {
      lastReply_ = Exchange(kShutdown);
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
  static long Count(const Lines& lines, const std::string& line) {
    return std::count(lines.begin(), lines.end(), line);
  }

  // A request is answered in full exactly when the server has taken it.
  void CheckReplies() const {
    const Lines log = LogLines();
    Lines expected;
    for (const std::string& request : scene_.requests) {
      const std::string op = request.substr(7, request.size() - 9);
      const bool isTaken = Count(log, "ipc op=" + op) > 0;
      expected.push_back(!isTaken ? kNoReply : op == "connect" ? kOkRunning : kOkIdle);
    }
    EXPECT_EQ(replies_, expected);
    if (!scene_.isStopped && !scene_.ownerEnds) {
      EXPECT_EQ(Count(replies_, kNoReply), 0);
    }
    const bool isShutDown = Count(log, "ipc op=shutdown") > 0;
    EXPECT_EQ(
        stopReply_ == kOkIdle || lastReply_ == kOkIdle || Count(scene_.requests, kShutdown) > 0,
        isShutDown);
    if (lastReply_) {
      EXPECT_EQ(Count(log, "owner pid open failed err=87"), 1) << "nobody stopped the server";
      EXPECT_EQ(Count(replies_, kNoReply), 0);
    }
  }

  void CheckLog() const {
    static const auto& known =
        *new std::set<std::string>{"daemon mode. runtime=C:\\run",
                                   "daemon stopped",
                                   "TavrinService console mode. Pipe \\\\.\\pipe\\TavrinService",
                                   "Runtime C:\\run",
                                   "Ctrl+C to stop.",
                                   "stopped.",
                                   "service running. runtime=C:\\run",
                                   "service stopped",
                                   "ipc op=connect",
                                   "ipc op=disconnect",
                                   "ipc op=shutdown",
                                   "owner pid open failed err=87",
                                   "ui process exited; stopping helper"};
    const Lines log = LogLines();
    for (const std::string& line : log) {
      EXPECT_TRUE(known.contains(line)) << line;
      EXPECT_EQ(Count(log, line), 1) << line;
    }
    EXPECT_EQ(Count(log, "daemon stopped") + Count(log, "stopped.") + Count(log, "service stopped"),
              1);
    if (scene_.ownerEnds) {
      EXPECT_EQ(Count(log, "owner pid open failed err=87") +
                    Count(log, "ui process exited; stopping helper"),
                1);
    }
  }

  static constexpr wchar_t kLog[] = L"C:\\run\\tavrin-service.log";

  const Scene& scene_;
  fault::Stage stage_{fault::AllScenes().back()};  // the account comes from a panel
  sim::Machine& machine_ = *stage_.machine;
  sim::Scheduler scheduler_;
  std::mt19937_64 random_;
  std::uint64_t calls_ = 0;
  bool hasEnded_ = false;
  int exitCode_ = -1;
  Lines replies_;
  std::optional<std::string> stopReply_;
  std::optional<std::string> lastReply_;
};

struct Seeds {
  std::uint64_t first = 1;
  std::uint64_t count = TAVRIN_THREAD_SEEDS;
};

// TAVRIN_THREAD_SEED: this one alone.
Seeds ChosenSeeds() {
  const char* const chosen = std::getenv("TAVRIN_THREAD_SEED");
  return chosen == nullptr ? Seeds{} : Seeds{std::strtoull(chosen, nullptr, 10), 1};
}

// `3 CreateFileW "…"`
Lines Interleaving(const std::vector<sim::CallRecord>& calls) {
  Lines lines;
  for (const sim::CallRecord& call : calls) {
    lines.push_back(std::to_string(call.thread) + ' ' + call.name + ' ' + call.text);
  }
  return lines;
}

class ThreadScene : public ::testing::TestWithParam<Scene> {
 protected:
  void SetUp() override {
    Life life(GetParam(), 0);
    life.Go(0);
    calls = life.Calls().size();
  }

  std::uint64_t calls = 0;
};

TEST_P(ThreadScene, EndsInOrderWhoeverRunsFirst) {
  const Seeds seeds = ChosenSeeds();
  std::set<Lines> interleavings;
  for (std::uint64_t seed = seeds.first; seed < seeds.first + seeds.count; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    Life life(GetParam(), seed);
    life.Go(calls);
    life.Check();
    interleavings.insert(Interleaving(life.Calls()));
    ASSERT_FALSE(HasFailure());
  }
  std::printf("%s: %llu seeds, %zu interleavings of about %llu calls\n", GetParam().name,
              static_cast<unsigned long long>(seeds.count), interleavings.size(),
              static_cast<unsigned long long>(calls));
}

TEST_P(ThreadScene, IsTheSameForTheSameSeed) {
  for (std::uint64_t seed = 1; seed <= 10; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    Lines first;
    {
      Life life(GetParam(), seed);
      life.Go(calls);
      first = Interleaving(life.Calls());
    }
    Life again(GetParam(), seed);
    again.Go(calls);
    EXPECT_EQ(Interleaving(again.Calls()), first);
  }
}

INSTANTIATE_TEST_SUITE_P(Scenes, ThreadScene, ::testing::ValuesIn(AllScenes()),
                         [](const auto& scene) { return std::string(scene.param.name); });

}  // namespace
}  // namespace sequence
