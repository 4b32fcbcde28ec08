#include "src/tunnel/orphans.h"

#include <windows.h>
#include <tlhelp32.h>

#include <array>

#include "src/common/text.h"
#include "src/common/unique_handle.h"
#include "src/net/physical_route.h"
#include "src/runtime/runtime_files.h"
#include "src/tunnel/leftovers.h"
#include "src/tunnel/tunnel_internal.h"

namespace vpn {
namespace {

constexpr DWORD kOrphanPause = 150;  // milliseconds

// Lower case, ending in exactly one backslash, so that a sibling directory never matches.
std::wstring PathPrefix(const std::wstring& directory) {
  std::wstring prefix = ToLowerText(directory);
  prefix.erase(prefix.find_last_not_of(L"\\/") + 1);
  return prefix + L'\\';
}

// Lower-cased full path of the process's executable, empty when the platform does not tell.
std::wstring ImagePath(HANDLE process) {
  std::array<wchar_t, 521> path{};
  DWORD length = 520;
  if (QueryFullProcessImageNameW(process, 0, path.data(), &length) == FALSE) {
    return {};
  }
  return ToLowerText(path.data());
}

bool KillIfUnder(DWORD processId, const std::wstring& prefix) {
  const KernelHandle process(
      OpenProcess(PROCESS_TERMINATE | PROCESS_QUERY_LIMITED_INFORMATION, FALSE, processId));
  if (!process || !ImagePath(process.get()).starts_with(prefix)) {
    return false;
  }
  (void)TerminateProcess(process.get(), 0);  // one that resists still counts as found
  return true;
}

}  // namespace

bool KillProcessesUnder(const std::wstring& directory, const std::wstring& name) {
  if (directory.empty() || name.empty()) {
    return false;
  }
  const std::wstring prefix = PathPrefix(directory);
  const KernelHandle snapshot(CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0));
  if (!snapshot) {
    return false;
  }
  const std::wstring lowerName = ToLowerText(name);
  PROCESSENTRY32W entry = {};
  entry.dwSize = sizeof(entry);
  bool killed = false;
  for (BOOL more = Process32FirstW(snapshot.get(), &entry); more != FALSE;
       more = Process32NextW(snapshot.get(), &entry)) {
    if (ToLowerText(entry.szExeFile).starts_with(lowerName) &&
        KillIfUnder(entry.th32ProcessID, prefix)) {
      killed = true;
    }
  }
  return killed;
}

bool KillOrphans(const TunnelConfig& config) {
  const bool hitXray = KillProcessesUnder(config.xrayDir, kXrayProgram);
  const bool hitTun2socks = KillProcessesUnder(config.tun2socksDir, kTun2socksImage);
  if (!hitXray && !hitTun2socks) {
    return false;
  }
  Sleep(kOrphanPause);
  PhysicalRoute route;
  (void)FindPhysicalRoute(route);  // without a route the alias is just empty
  CleanupLeftoverNetwork(TunAddressOf(config), route.interfaceAlias);
  return true;
}

}  // namespace vpn
