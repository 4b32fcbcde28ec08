#include "tests/unit/control/platform_calls.h"

#include <algorithm>
#include <thread>

#include "src/control/pipe_server.h"
#include "src/runtime/service_log.h"
#include "tests/unit/background_server.h"
#include "tests/unit/product_state.h"
#include "tests/unit/runtime_files.h"

namespace unit {
namespace {

constexpr char kTrace[] = "_wfopen_s";  // opened once for each step of the tunnel's start

// Each line of the trace ends a step. Before the first of them the connect has got the account and
// written its configuration; behind the last comes the reply.
const std::vector<std::string>& StepsOfAConnect() {
  static const auto& steps = *new std::vector<std::string>{"stop() idle",
                                                           "kill stale (clean)",
                                                           "find physical route",
                                                           "pin panel hosts",
                                                           "spawn xray",
                                                           "xray socks listening",
                                                           "spawn tun2socks",
                                                           "wintun adapter up",
                                                           "set tun address (api)",
                                                           "set tun dns (api)",
                                                           "tun ipv4 ready",
                                                           "routes installed",
                                                           "ipv6 leak blocked",
                                                           "reply"};
  return steps;
}

std::map<std::string, int> Count(const std::vector<sim::CallRecord>& records) {
  std::map<std::string, int> counts;
  for (const sim::CallRecord& record : records) {
    ++counts[record.name];
  }
  return counts;
}

using Records = std::vector<sim::CallRecord>;

// The steps end with a line of the trace, or, where there is none, with the reply.
CallCounts BySteps(const Records& records, const std::vector<std::string>& steps) {
  CallCounts counts;
  std::size_t step = 0;
  for (const sim::CallRecord& record : records) {
    if (step + 2 == steps.size() && record.name == "WriteFile") {
      ++step;
    }
    ++counts[steps.at(step)][record.name];
    step += record.name == kTrace ? 1 : 0;
  }
  return counts;
}

// Takes the calls of one line of the log out of `records`, wherever they stand.
void TakeOutLog(const Records& line, Records& records) {
  const auto isSameCall = [](const sim::CallRecord& a, const sim::CallRecord& b) {
    return a.name == b.name;
  };
  const auto found =
      std::search(records.begin(), records.end(), line.begin(), line.end(), isSameCall);
  if (found != records.end()) {
    records.erase(found, found + static_cast<std::ptrdiff_t>(line.size()));
  }
}

// A daemon on a machine whose helpers need no time.
class CountedService {
 public:
  CountedService() {
    ResetProductState();
    PutRuntime(machine_);
    machine_.programs.On(L"xray.exe", sim::Script().Listens(17593, 0));
    sim::AdapterPlan plan = sim::TavrinAdapter();
    plan.appearsAfter = plan.renamedAfter = 0;
    plan.upAfter = 0;
    machine_.programs.On(L"tun2socks*.exe", sim::Script().BringsAdapter(plan));
    machine_.files.Put(L"C:\\run\\panel.json", R"({"deviceApi":"https://device.example/api"})");
    machine_.names.Set("device.example", {"203.0.113.72"});
    vpn::SetRuntimeDir(kRuntimeDir);
    machine_.calls.Clear();
    vpn::WriteLog(L"ipc op=connect");
    logLine_ = machine_.calls.All();
    machine_.calls.Clear();
  }

  // False when something does not go as it should.
  bool run(CountedRun& run) {
    BackgroundServer server(machine_, [] {
      vpn::ServeControlPipe();
      return 0;
    });
    // The warm-up has stored its account, and the server waits.
    if (!Eventually([this] { return machine_.calls.Count("GetTickCount64") == 1; }) || !waits()) {
      return false;
    }
    machine_.clock.Advance(kAccountForgotten);
    if (!ask("connect", R"({"ok":true,"running":true,"error":""})")) {
      return false;
    }
    run.connect = counts(StepsOfAConnect());
    run.idleMinute["idle"] = Count(idleCalls());
    if (!ask("disconnect", R"({"ok":true,"running":false,"error":""})")) {
      return false;
    }
    run.disconnect = counts({"stop", "reply"});
    vpn::WakeControlPipe();
    return server.Ends();
  }

 private:
  static constexpr std::uint64_t kAccountForgotten = 90'001;  // milliseconds

  // The call log then holds what the request has cost.
  bool ask(const std::string& op, const char* reply) {
    machine_.calls.Clear();
    return sim::PipeClient::Exchange(machine_, R"({"op":")" + op + R"("})") == reply && waits();
  }
  bool waits() {
    return Eventually([this] { return machine_.calls.Count("ConnectNamedPipe") == 1; });
  }
  // Of what the call log holds.
  CallCounts counts(const std::vector<std::string>& steps) const {
    Records records = machine_.calls.All();
    TakeOutLog(logLine_, records);
    CallCounts counts = BySteps(records, steps);
    counts["log"] = Count(logLine_);
    return counts;
  }
  Records idleCalls() {
    machine_.calls.Clear();
    machine_.clock.Advance(60'000);
    std::this_thread::sleep_for(std::chrono::milliseconds(50));  // for whoever woke up
    return machine_.calls.All();
  }

  sim::InstalledMachine installed_;
  sim::Machine& machine_ = *installed_;
  Records logLine_;
};

}  // namespace

CountedRun CountPlatformCalls() {
  CountedRun run;
  CountedService service;
  return service.run(run) ? run : CountedRun();
}

int Total(const CallCounts& counts) {
  int total = 0;
  for (const auto& [step, calls] : counts) {
    for (const auto& [call, count] : calls) {
      total += step == "log" ? 0 : count;
    }
  }
  return total;
}

}  // namespace unit
