#include "client/account/backend.h"
#include "client/account/node_lookup.h"
#include "client/advice/advice.h"
#include "client/commands/asking.h"
#include "client/commands/commands.h"
#include "client/exit_codes.h"
#include "client/json/json_text.h"
#include "client/latency/tcp_latency.h"
#include "client/service/presence.h"
#include "client/text/amounts.h"
#include "client/text/display_width.h"
#include "client/text/table.h"

namespace vpn {
namespace {

std::vector<Latency> Measure(const std::vector<NodeInfo>& nodes, const InterruptWatch& interrupt,
                             Screen& screen) {
  std::vector<LatencyGoal> goals;
  goals.reserve(nodes.size());
  for (const NodeInfo& node : nodes) {
    goals.push_back({node.address, node.port});
  }
  MovingLine moving(screen.err);
  const LatencyHooks hooks = {
      [&](size_t done) {
        moving.show(std::wstring(1, WheelAt(GetTickCount64())) + L" " + std::to_wstring(done) +
                    L" of " + CountText(goals.size(), L"node", L"nodes") + L" answered …");
      },
      [&interrupt] { return interrupt.wasInterrupted(); }};
  return MeasureLatency(goals, hooks);
}

// What stands behind a row without a time.
std::wstring Remark(const Latency& latency) {
  switch (latency.kind) {
    case Latency::Kind::kRefused:
      return L"refused";
    case Latency::Kind::kNoAnswer:
      return L"no answer in 2 s";
    case Latency::Kind::kNoAddress:
      return L"the name does not resolve";
    case Latency::Kind::kSlowName:
      return L"the name did not resolve in 2 s";
    case Latency::Kind::kIpv6:
      return L"an IPv6 address; only IPv4 is measured";
    case Latency::Kind::kNoPort:
      return L"there is no such port";
    case Latency::Kind::kInterrupted:
      return L"interrupted";
    default:
      return {};
  }
}

void ShowNodes(const std::vector<NodeInfo>& nodes, const std::vector<Latency>& latencies,
               Output& out) {
  std::vector<Table::Column> columns = {{L"Node"}, {L"Address"}, {L"Port", Table::Align::kRight}};
  if (!latencies.empty()) {
    columns.push_back({L"Latency", Table::Align::kRight});
  }
  Table table(std::move(columns));
  for (size_t at = 0; at < nodes.size(); ++at) {
    const NodeInfo& node = nodes[at];
    std::vector<std::wstring> cells = {PlainLine(node.name), PlainLine(node.address),
                                       std::to_wstring(node.port)};
    if (!latencies.empty()) {
      const Latency& latency = latencies[at];
      const bool hasTime = latency.kind == Latency::Kind::kConnected;
      cells.push_back(hasTime ? MillisecondsText(latency.milliseconds) : L"–");
      cells.push_back(Remark(latency));
    }
    table.addRow(std::move(cells));
  }
  for (const std::wstring& line : table.lines()) {
    out.line(line);
  }
}

Json NodesObject(const std::vector<NodeInfo>& nodes, const std::vector<Latency>& latencies) {
  Json object = NewJson();
  Json& list = PutList(object, "nodes");
  for (size_t at = 0; at < nodes.size(); ++at) {
    Json& entry = AppendObject(list);
    PutText(entry, "name", nodes[at].name);
    PutText(entry, "address", nodes[at].address);
    PutNumber(entry, "port", nodes[at].port);
    if (latencies.empty()) {
      continue;
    }
    const Latency& latency = latencies[at];
    if (latency.kind == Latency::Kind::kConnected) {
      PutNumber(entry, "latency", static_cast<std::int64_t>(latency.milliseconds));
    } else {
      PutNull(entry, "latency");
    }
    PutText(entry, "remark", Remark(latency));
  }
  return object;
}

// An account without nodes may be no account at all.
std::wstring WhatToDoWithoutNodes(const std::wstring& runtimeDir, const std::wstring& error) {
  const Backend backend = FindBackend(runtimeDir);
  const Complaint complaint = LookAtAccount(backend, backend.sessionPath());
  return complaint ? complaint.whatToDo + L": " + complaint.text : WhatToDo(error);
}

int TellNoAccount(const std::wstring& error, const std::wstring& whatToDo, bool json,
                  Screen& screen) {
  if (json) {
    Json object = NewJson();
    (void)PutList(object, "nodes");
    PutText(object, "error", error);
    screen.out.write(JsonText(object));
  }
  TellRefusal(error, whatToDo, screen);
  return kExitRefused;
}

}  // namespace

int RunNodes(const CommandLine& line, Screen& screen) {
  const std::wstring runtimeDir = FindServicePlace(line.runtimeDir).runtimeDir;
  const FetchedAccount account = [&] {
    MovingLine moving(screen.err);
    moving.show(L"The account is being fetched …");
    return FetchAccount(runtimeDir);
  }();
  const std::vector<NodeInfo>& nodes = account.session.nodes;
  if (!account.isFetched) {
    return TellNoAccount(account.error, WhatToDo(account.error), line.json, screen);
  }
  if (nodes.empty()) {
    const std::wstring error = L"没有可用节点";
    return TellNoAccount(error, WhatToDoWithoutNodes(runtimeDir, error), line.json, screen);
  }
  const InterruptWatch interrupt;
  const std::vector<Latency> latencies =
      line.latency ? Measure(nodes, interrupt, screen) : std::vector<Latency>();
  if (line.json) {
    screen.out.write(JsonText(NodesObject(nodes, latencies)));
  } else {
    ShowNodes(nodes, latencies, screen.out);
  }
  return interrupt.wasInterrupted() ? kExitInterrupted : kExitDone;
}

}  // namespace vpn
