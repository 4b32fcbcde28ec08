#include <algorithm>

#include "client/account/node_lookup.h"
#include "client/commands/asking.h"
#include "client/commands/commands.h"
#include "client/exit_codes.h"
#include "client/json/json_text.h"
#include "client/service/presence.h"
#include "client/text/amounts.h"
#include "client/text/display_width.h"
#include "client/trace/connect_trace.h"
#include "client/trace/trace_file.h"
#include "src/common/text.h"
#include "src/panel/endpoints.h"
#include "src/runtime/runtime_files.h"

namespace vpn {
namespace {

constexpr DWORD kWatchPause = 1000;  // milliseconds
constexpr DWORD kWatchStep = 50;

struct Status {
  bool isUp = false;
  std::uint64_t upFor = 0;        // seconds
  std::int64_t connectTime = -1;  // milliseconds of the last complete connect
  RunningNode node;
  std::wstring nodeName;
  std::wstring serviceState;
  std::wstring version;
  ServicePlace place;
};

std::wstring StateWord(const InstalledService& installed) {
  switch (installed.state) {
    case SERVICE_RUNNING:
      return L"running as a Windows service";
    case SERVICE_START_PENDING:
      return L"starting as a Windows service";
    default:
      return L"running";
  }
}

// Only an account on this machine is asked: the panel would take longer than the whole answer.
std::wstring NameOfNode(const std::wstring& runtimeDir, const RunningNode& node) {
  if (!ReadPanelEndpoints(runtimeDir).apiBase.empty() || !PanelUrlFromEnvironment().empty()) {
    return {};
  }
  const FetchedAccount account = FetchAccount(runtimeDir);
  for (const NodeInfo& known : account.session.nodes) {
    if (known.address == node.address && known.port == node.port) {
      return known.name;
    }
  }
  return {};
}

std::int64_t LastConnectTime(const ServicePlace& place) {
  FileTail tail;
  if (!ReadFileTail(TracePath(place.directory), 16 << 10, tail)) {
    return -1;
  }
  const TraceText trace = ParseTrace(tail.text, tail.isCut);
  if (trace.connects.empty() || !trace.connects.back().isComplete()) {
    return -1;
  }
  return static_cast<std::int64_t>(trace.connects.back().totalTime());
}

void LookAtTunnel(Status& status) {
  const std::wstring& runtimeDir = status.place.runtimeDir;
  for (const RunningProcess& xray :
       FindProcessesUnder(runtimeDir + L"\\" + kXrayDirectory, kXrayProgram)) {
    status.upFor = std::max(status.upFor, xray.runsFor);
  }
  status.connectTime = LastConnectTime(status.place);
  status.node = ReadRunningNode(runtimeDir);
  status.nodeName = NameOfNode(runtimeDir, status.node);
}

Status LookAround(const CommandLine& line, const Reply& reply) {
  Status status;
  status.isUp = reply.running;
  status.place = FindServicePlace(line.runtimeDir);
  status.serviceState = StateWord(FindInstalledService());
  status.version = FileVersion(status.place.directory + L"\\TavrinService.exe");
  if (status.isUp) {
    LookAtTunnel(status);
  }
  return status;
}

std::wstring ServiceLine(const Status& status) {
  std::wstring text = status.serviceState;
  text += status.version.empty() ? L"" : L", version " + status.version;
  return text + L", " + status.place.runtimeDir;
}

void ShowStatus(const Status& status, Output& out) {
  if (!status.isUp) {
    out.line(L"Tavrin is not connected.");
  } else {
    out.write(PadRight(L"Tavrin is connected.", 28), Ink::kGood);
    out.line(L"up for " + DurationText(status.upFor));
    std::wstring node = status.node.address.empty()
                            ? std::wstring(L"unknown: the generated configuration can't be read")
                            : Endpoint(status.node.address, status.node.port);
    node += status.nodeName.empty() ? L"" : L"   (" + PlainLine(status.nodeName) + L")";
    out.line(L"Node     " + node);
  }
  out.line(L"Service  " + ServiceLine(status));
}

Json StatusObject(const Status& status) {
  Json object = NewJson();
  object["reachable"] = true;
  object["connected"] = status.isUp;
  if (status.isUp) {
    object["upSeconds"] = status.upFor;
    object["connectMilliseconds"] =
        status.connectTime < 0 ? Json(nullptr) : Json(status.connectTime);
    object["node"]["address"] = JsonValue(status.node.address);
    object["node"]["port"] = status.node.port;
    object["node"]["name"] = JsonValue(status.nodeName);
  }
  object["service"]["state"] = JsonValue(status.serviceState);
  object["service"]["version"] = JsonValue(status.version);
  object["service"]["runtimeDir"] = JsonValue(status.place.runtimeDir);
  return object;
}

int StatusOnce(const CommandLine& line, Screen& screen) {
  Reply reply;
  const ExchangeEnd end = AskPatiently(kStatusRequest, screen, reply);
  if (end != ExchangeEnd::kReplied) {
    return FailWithoutReply(end, line.json, screen);
  }
  const Status status = LookAround(line, reply);
  if (line.json) {
    screen.out.write(JsonText(StatusObject(status)));
  } else {
    ShowStatus(status, screen.out);
  }
  return kExitDone;
}

// One line of the watch; what changes by itself, the time, stands in `moving`.
std::wstring WatchLine(ExchangeEnd end, const Status& status) {
  if (end != ExchangeEnd::kReplied) {
    return DescribeNoReply(end).sentence;
  }
  return status.isUp ? L"Connected to " + Endpoint(status.node.address, status.node.port)
                     : L"Not connected";
}

bool PauseForNextLook(const InterruptWatch& interrupt) {
  for (DWORD waited = 0; waited < kWatchPause; waited += kWatchStep) {
    if (interrupt.wasInterrupted()) {
      return false;
    }
    Sleep(kWatchStep);
  }
  return !interrupt.wasInterrupted();
}

std::wstring WatchObject(ExchangeEnd end, const Status& status) {
  Json object = NewJson();
  object["reachable"] = end == ExchangeEnd::kReplied;
  object["connected"] = end == ExchangeEnd::kReplied && status.isUp;
  object["address"] = JsonValue(status.node.address);
  return Utf8ToWide(object.dump(-1, ' ', false, Json::error_handler_t::replace));
}

// A line for each change, until Ctrl+C.
int WatchStatus(const CommandLine& line, Screen& screen) {
  const InterruptWatch interrupt;
  MovingLine moving(screen.out);
  std::wstring before;
  do {
    ExchangeHooks hooks;
    hooks.patience = 0;  // a connect of somebody else's is told, not waited for
    Reply reply;
    const ExchangeEnd end = Ask(kStatusRequest, hooks, reply);
    const Status status = end == ExchangeEnd::kReplied ? LookAround(line, reply) : Status();
    const std::wstring now = line.json ? WatchObject(end, status) : WatchLine(end, status);
    if (now != before) {
      moving.clear();
      screen.out.line(now);
      before = now;
    }
    if (status.isUp && !line.json) {
      moving.show(L"  up for " + DurationText(status.upFor));
    }
  } while (PauseForNextLook(interrupt));
  return kExitInterrupted;
}

}  // namespace

int RunStatus(const CommandLine& line, Screen& screen) {
  return line.watch ? WatchStatus(line, screen) : StatusOnce(line, screen);
}

}  // namespace vpn
