#include <utility>

#include "client/account/node_lookup.h"
#include "client/commands/asking.h"
#include "client/commands/commands.h"
#include "client/commands/connect_outcome.h"
#include "client/live/live_view.h"
#include "client/text/display_width.h"
#include "client/trace/medians.h"
#include "client/trace/trace_file.h"
#include "client/trace/trace_watch.h"
#include "src/net/physical_route.h"
#include "src/runtime/runtime_files.h"

namespace vpn {
namespace {

constexpr size_t kPhysicalStep = 2;

// False when the account has no node of the name; `nearest` is then what was probably meant. An
// account that can't be fetched decides nothing: the service may see more than this user, and has
// the better text.
bool LookUpNode(const CommandLine& line, Screen& screen, ConnectPlan& plan, std::wstring& nearest) {
  MovingLine moving(screen.err);
  moving.show(L"The account is being fetched …");
  const FetchedAccount account = FetchAccount(plan.place.runtimeDir);
  const std::vector<NodeInfo>& nodes = account.session.nodes;
  if (!account.isFetched || nodes.empty()) {
    return true;
  }
  const NodeInfo* const node = line.node.empty() ? &nodes.front() : NodeByName(nodes, line.node);
  if (node == nullptr) {
    nearest = NearestName(nodes, line.node);
    return false;
  }
  plan.isKnown = true;
  plan.node = *node;
  return true;
}

std::wstring NameOfGoal(const CommandLine& line, const ConnectPlan& plan) {
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
  return MedianTimes(ParseTrace(std::move(tail.text), tail.isCut).connects);
}

ConnectOutcome SendConnect(const CommandLine& line, Screen& screen, const ConnectPlan& plan,
                           TraceWatch& watch, LiveView* view) {
  ConnectOutcome outcome;
  const InterruptWatch interrupt;
  MovingLine moving(screen.err);
  ExchangeHooks hooks = PatientHooks(moving, screen.err, interrupt);
  hooks.replyLimit = std::uint64_t{line.timeout} * 1000;
  ULONGLONG start = 0;
  hooks.beforeSending = [&] {
    moving.clear();
    (void)FileSize(plan.place.runtimeDir + L"\\" + kXrayErrorLog, outcome.xrayLogSize);
    if (view != nullptr) {
      // The service is this client's now, so that nobody's connect loses a line by the reading.
      view->expect(EarlierMedians(TracePath(plan.place.directory)));
    }
    watch.begin();
    start = GetTickCount64();
    outcome.wasSent = true;
  };
  hooks.whileWaiting = [&](std::uint64_t now) {
    watch.look(now);
    if (view != nullptr) {
      view->update(watch.connect(), now, watch.grownAt());
    }
  };
  outcome.end = Ask(ConnectRequest(line.node), hooks, outcome.reply);
  outcome.time = GetTickCount64() - start;
  return outcome;
}

}  // namespace

int RunConnect(const CommandLine& line, Screen& screen) {
  ConnectPlan plan;
  plan.place = FindServicePlace(line.runtimeDir);
  std::wstring nearest;
  if (!line.force && !LookUpNode(line, screen, plan, nearest)) {
    return TellUnknownNode(line, nearest, screen);
  }
  const bool isShown = !line.json && !line.quiet;
  TraceWatch watch(TracePath(plan.place.directory));
  LiveView view(screen.out, StepDetail);
  if (isShown) {
    screen.out.line(L"Connecting to " + NameOfGoal(line, plan));
  }
  const ConnectOutcome outcome = SendConnect(line, screen, plan, watch, isShown ? &view : nullptr);
  if (outcome.end == ExchangeEnd::kReplied) {
    watch.readNow();
  }
  if (isShown) {
    const bool failed = outcome.end == ExchangeEnd::kReplied && !outcome.reply.ok;
    view.finish(watch.connect(), outcome.time, failed, FailedInChecks(outcome.reply.error));
  }
  return TellOutcome(line, plan, outcome, watch.connect(), screen);
}

}  // namespace vpn
