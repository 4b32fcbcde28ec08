// The process snapshot.
#include "tests/sim/call.h"
#include "tests/sim/path.h"

#include <tlhelp32.h>
#include <windows.h>

#include <algorithm>
#include <vector>

using sim::Call;

namespace {

struct Snapshot : sim::Object {
  std::string Describe() const override { return "process snapshot"; }
  std::vector<PROCESSENTRY32W> entries;
  size_t next = 0;
};

PROCESSENTRY32W MakeEntry(std::uint32_t id, std::uint32_t parentId, const std::wstring& name) {
  PROCESSENTRY32W entry = {};
  entry.dwSize = sizeof entry;
  entry.th32ProcessID = id;
  entry.th32ParentProcessID = parentId;
  entry.cntThreads = 1;
  const size_t length = std::min<size_t>(name.size(), MAX_PATH - 1);
  std::copy_n(name.begin(), length, entry.szExeFile);
  return entry;
}

BOOL CopyNext(Call& call, HANDLE snapshot, PROCESSENTRY32W* entry, bool first) {
  if (call.failed()) {
    return call.Fail(FALSE);
  }
  const auto target = call.Kernel<Snapshot>(snapshot);
  if (!target) {
    return call.Fail(FALSE, ERROR_INVALID_HANDLE);
  }
  if (entry->dwSize < sizeof *entry) {
    return call.Fail(FALSE, ERROR_BAD_LENGTH);
  }
  target->next = first ? 0 : target->next;
  if (target->next >= target->entries.size()) {
    return call.Fail(FALSE, ERROR_NO_MORE_FILES);
  }
  *entry = target->entries[target->next++];
  return TRUE;
}

}  // namespace

HANDLE CreateToolhelp32Snapshot(DWORD flags, DWORD processId) {
  Call call("CreateToolhelp32Snapshot", {sim::Arg::OfHex(flags), processId});
  if (call.failed()) {
    return call.Fail(INVALID_HANDLE_VALUE);
  }
  const auto snapshot = std::make_shared<Snapshot>();
  snapshot->entries = {MakeEntry(0, 0, L"[System Process]"), MakeEntry(4, 0, L"System")};
  for (const auto& process : call->processes.AliveProcesses()) {
    snapshot->entries.push_back(
        MakeEntry(process->id, process->parentId, sim::BaseName(process->image)));
  }
  return call.OpenHandle(snapshot);
}

BOOL Process32FirstW(HANDLE snapshot, PROCESSENTRY32W* entry) {
  Call call("Process32FirstW", {snapshot});
  return CopyNext(call, snapshot, entry, true);
}

BOOL Process32NextW(HANDLE snapshot, PROCESSENTRY32W* entry) {
  Call call("Process32NextW", {snapshot});
  return CopyNext(call, snapshot, entry, false);
}
