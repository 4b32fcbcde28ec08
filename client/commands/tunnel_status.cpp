#include "client/commands/tunnel_status.h"

#include <algorithm>
#include <utility>

#include "client/trace/connect_trace.h"
#include "client/trace/trace_file.h"
#include "src/panel/endpoints.h"
#include "src/runtime/runtime_files.h"

namespace vpn {
namespace {

constexpr std::uint64_t kTail = 16 << 10;  // bytes, which hold the last connect

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

// By Xray's start. A process of the system does not tell a plain user when it started: then by the
// end of the last connect.
std::optional<std::uint64_t> UpFor(const std::wstring& runtimeDir, const LastConnect& last) {
  std::optional<std::uint64_t> longest;
  for (const RunningProcess& xray :
       FindProcessesUnder(runtimeDir + L"\\" + kXrayDirectory, kXrayProgram)) {
    longest = std::max(longest, xray.runsFor);  // nothing counts less than any time
  }
  return longest ? longest : last.age;
}

}  // namespace

LastConnect ReadLastConnect(const ServicePlace& place) {
  const std::wstring path = TracePath(place.directory);
  LastConnect last;
  FileTail tail;
  FILETIME written = {};
  if (!LastWrite(path, written) || !ReadFileTail(path, kTail, tail)) {
    return last;
  }
  const TraceText trace = ParseTrace(std::move(tail.text), tail.isCut);
  if (!trace.connects.empty() && trace.connects.back().isComplete()) {
    last.time = trace.connects.back().totalTime();
    last.age = SecondsSince(written);
  }
  return last;
}

TunnelStatus LookAround(const ServicePlace& place, const LastConnect& last, bool isUp) {
  TunnelStatus status;
  status.isUp = isUp;
  status.place = place;
  status.serviceState = StateWord(place.installed);
  status.version = FileVersion(place.directory + L"\\TavrinService.exe");
  if (isUp) {
    status.upFor = UpFor(place.runtimeDir, last);
    status.connectTime = last.time;
    status.node = ReadRunningNode(place.runtimeDir);
    status.nodeName = NameOfNode(place.runtimeDir, status.node);
  }
  return status;
}

}  // namespace vpn
