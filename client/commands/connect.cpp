#include <utility>

#include "client/account/node_lookup.h"
#include "client/advice/advice.h"
#include "client/commands/asking.h"
#include "client/commands/commands.h"
#include "client/exit_codes.h"
#include "client/json/json_text.h"
#include "client/live/live_view.h"
#include "client/report/secrets.h"
#include "client/service/presence.h"
#include "client/text/amounts.h"
#include "client/text/display_width.h"
#include "client/trace/trace_file.h"
#include "client/trace/trace_json.h"
#include "client/trace/trace_watch.h"
#include "src/common/files.h"
#include "src/common/text.h"
#include "src/net/physical_route.h"
#include "src/runtime/runtime_files.h"

namespace vpn {
namespace {

constexpr size_t kPhysicalStep = 2;
constexpr size_t kXrayStep = 5;

struct Plan {
  ServicePlace place;
  bool isKnown = false;  // the node was found in the account
  NodeInfo node;
};

// How the one exchange went.
struct Outcome {
  ExchangeEnd end = ExchangeEnd::kAbsent;
  Reply reply;
  std::uint64_t time = 0;  // milliseconds from the sending of the request to its end
  bool wasSent = false;
  std::uint64_t xrayLogSize = 0;  // before
};

// False when the account has no node of the name. An account that can't be fetched decides nothing:
// the service may see more than this user, and has the better text.
bool LookUpNode(const CommandLine& line, Screen& screen, Plan& plan) {
  MovingLine moving(screen.err);
  moving.show(L"The account is being fetched …");
  const FetchedAccount account = FetchAccount(plan.place.runtimeDir);
  moving.clear();
  const std::vector<NodeInfo>& nodes = account.session.nodes;
  if (!account.isFetched || nodes.empty()) {
    return true;
  }
  const NodeInfo* const node = line.node.empty() ? &nodes.front() : NodeByName(nodes, line.node);
  if (node == nullptr) {
    const std::wstring nearest = NearestName(nodes, line.node);
    screen.err.line(L"No node is called \"" + PlainLine(line.node) + L"\"." +
                    (nearest.empty() ? L"" : L" Did you mean \"" + PlainLine(nearest) + L"\"?"));
    screen.err.line(L"  What to do: choose one that tavrinctl nodes shows.");
    return false;
  }
  plan.isKnown = true;
  plan.node = *node;
  return true;
}

std::wstring NameOfGoal(const CommandLine& line, const Plan& plan) {
  if (plan.isKnown) {
    return PlainLine(plan.node.name) + L" (" + Endpoint(plan.node.address, plan.node.port) + L")";
  }
  return line.node.empty() ? L"the account's first node" : PlainLine(line.node);
}

std::wstring StepDetail(size_t step) {
  PhysicalRoute route;
  if (step != kPhysicalStep || !FindPhysicalRoute(route)) {
    return {};
  }
  return route.interfaceAlias + L" via " + route.gateway;
}

std::vector<std::int64_t> EarlierMedians(const std::wstring& path) {
  FileTail tail;
  (void)ReadFileTail(path, kTraceLimit, tail);  // without one there are no estimates
  return MedianTimes(ParseTrace(tail.text, tail.isCut).connects);
}

// The last line that Xray has written since `from`, empty when there is none. Xray quotes what it
// refuses, and that may be a key of the configuration.
std::wstring LastXrayLine(const std::wstring& runtimeDir, std::uint64_t from) {
  std::string text;
  if (!ReadFileFrom(runtimeDir + L"\\" + kXrayErrorLog, from, 64 << 10, text)) {
    return {};
  }
  text.erase(text.find_last_not_of("\r\n") + 1);
  std::string config;
  (void)ReadFileBytes(runtimeDir + L"\\" + kXrayConfigFile,
                      config);                                 // without one it quotes nothing
  const std::string line = text.substr(text.rfind('\n') + 1);  // npos + 1 is 0
  return PlainLine(Utf8ToWide(Scrub(line, SecretsIn(config))));
}

Outcome SendConnect(const CommandLine& line, Screen& screen, const Plan& plan, TraceWatch& watch,
                    LiveView* view) {
  Outcome outcome;
  const InterruptWatch interrupt;
  MovingLine moving(screen.err);
  ExchangeHooks hooks = PatientHooks(moving, screen.err, interrupt);
  hooks.replyLimit = std::uint64_t{line.timeout} * 1000;
  ULONGLONG start = 0;
  hooks.beforeSending = [&] {
    moving.clear();
    (void)FileSize(plan.place.runtimeDir + L"\\" + kXrayErrorLog, outcome.xrayLogSize);
    watch.begin();
    start = GetTickCount64();
    outcome.wasSent = true;
  };
  hooks.whileWaiting = [&](std::uint64_t now) {
    watch.look();
    if (view != nullptr) {
      view->update(watch.connect(), now);
    }
  };
  outcome.end = Ask(ConnectRequest(line.node), hooks, outcome.reply);
  outcome.time = GetTickCount64() - start;
  return outcome;
}

bool FailedInChecks(const std::wstring& error) {
  FoundAdvice advice;
  return FindAdvice(error, advice) && advice.place == FailurePlace::kChecks;
}

// True when Xray's own words explain the failure: it was started, and did not come to listen.
bool FailedAtXray(const ConnectTrace* connect) {
  return connect != nullptr && NextStep(StepsOf(*connect)) == kXrayStep;
}

Json OutcomeObject(const Plan& plan, const Outcome& outcome, const ConnectTrace* connect) {
  Json object = NewJson();
  object["reachable"] = true;
  object["ok"] = outcome.reply.ok;
  object["running"] = outcome.reply.running;
  object["error"] = JsonValue(outcome.reply.error);
  object["whatToDo"] = outcome.reply.ok ? "" : JsonValue(WhatToDo(outcome.reply.error));
  object["milliseconds"] = outcome.time;
  if (plan.isKnown) {
    object["node"]["name"] = JsonValue(plan.node.name);
    object["node"]["address"] = JsonValue(plan.node.address);
    object["node"]["port"] = plan.node.port;
  }
  object["trace"] = connect == nullptr ? Json(nullptr) : TraceObject(*connect);
  return object;
}

void TellFailure(const Plan& plan, const Outcome& outcome, const ConnectTrace* connect,
                 Screen& screen) {
  screen.err.line(PlainLine(outcome.reply.error), Ink::kBad);
  if (FailedAtXray(connect)) {
    const std::wstring words = LastXrayLine(plan.place.runtimeDir, outcome.xrayLogSize);
    screen.err.line(words.empty() ? L"  Xray has written nothing into xray-error.log."
                                  : L"  Xray's own words (xray-error.log): " + words);
  }
  screen.err.paragraph(L"  What to do: " + WhatToDo(outcome.reply.error) + L".", 14);
  if (outcome.reply.running) {
    screen.err.line(L"The tunnel from before is still up.");
  }
}

int TellNoReply(const CommandLine& line, const Outcome& outcome, Screen& screen) {
  const int exitCode = FailWithoutReply(outcome.end, line.json, screen);
  if (outcome.wasSent) {
    screen.err.line(L"The service goes on with the connect.");
  }
  return exitCode;
}

int TellOutcome(const CommandLine& line, const Plan& plan, const Outcome& outcome,
                const TraceWatch& watch, Screen& screen) {
  if (outcome.end != ExchangeEnd::kReplied) {
    return TellNoReply(line, outcome, screen);
  }
  if (line.json) {
    screen.out.write(JsonText(OutcomeObject(plan, outcome, watch.connect())));
  }
  if (!outcome.reply.ok) {
    TellFailure(plan, outcome, watch.connect(), screen);
    return kExitRefused;
  }
  if (!line.json && !line.quiet) {
    screen.out.line(L"Connected in " + SecondsText(outcome.time) + L".", Ink::kGood);
  }
  return kExitDone;
}

}  // namespace

int RunConnect(const CommandLine& line, Screen& screen) {
  Plan plan;
  plan.place = FindServicePlace(line.runtimeDir);
  if (!line.force && !LookUpNode(line, screen, plan)) {
    return kExitRefused;
  }
  const std::wstring tracePath = TracePath(plan.place.directory);
  const bool isShown = !line.json && !line.quiet;
  TraceWatch watch(tracePath);
  LiveView view(screen.out, isShown ? EarlierMedians(tracePath) : std::vector<std::int64_t>(),
                StepDetail);
  if (isShown) {
    screen.out.line(L"Connecting to " + NameOfGoal(line, plan));
  }
  const Outcome outcome = SendConnect(line, screen, plan, watch, isShown ? &view : nullptr);
  if (outcome.end == ExchangeEnd::kReplied) {
    watch.readNow();
  }
  if (isShown) {
    const bool failed = outcome.end == ExchangeEnd::kReplied && !outcome.reply.ok;
    view.finish(watch.connect(), outcome.time, failed, FailedInChecks(outcome.reply.error));
  }
  return TellOutcome(line, plan, outcome, watch, screen);
}

}  // namespace vpn
