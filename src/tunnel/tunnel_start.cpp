// The start: old state first, then refusals that need nothing undone, the physical side, the
// children, and only when these are proven alive the routes and the IPv6 block.
#include <algorithm>

#include "src/common/socks_port.h"
#include "src/net/adapter_wait.h"
#include "src/net/interface_address.h"
#include "src/net/netsh.h"
#include "src/net/physical_route.h"
#include "src/net/routes.h"
#include "src/runtime/runtime_files.h"
#include "src/tunnel/child_process.h"
#include "src/tunnel/leftovers.h"
#include "src/tunnel/orphans.h"
#include "src/tunnel/port_probe.h"
#include "src/tunnel/preflight.h"
#include "src/tunnel/tunnel_manager.h"

namespace vpn {
namespace {

constexpr DWORD kXrayPortBudget = 5000;  // milliseconds, like the budgets below
constexpr DWORD kAdapterBudget = 15000;
constexpr DWORD kAddressBudget = 4000;
constexpr DWORD kOrphanPause = 150;

std::wstring Tun2socksCommandLine(const std::wstring& executable) {
  return QuoteArgument(executable) + L" --loglevel warn --device " + kAdapterName +
         L" --mtu 1400 --tcp-auto-tuning --tcp-sndbuf 4m --tcp-rcvbuf 4m" +
         L" --proxy socks5://127.0.0.1:" + std::to_wstring(kSocksPort);
}

std::wstring OrDefault(const std::wstring& text, const wchar_t* fallback) {
  return text.empty() ? fallback : text;
}

bool Exists(const std::wstring& path) {
  return GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

// The user's text about the first file that is missing; null when all are there.
const wchar_t* MissingFile(const std::wstring& xray, const std::wstring& tun2socks,
                           const std::wstring& wintun, const std::wstring& configuration) {
  if (!Exists(xray)) {
    return L"xray.exe not found";
  }
  if (tun2socks.empty()) {
    return L"tun2socks exe not found";
  }
  if (!Exists(wintun)) {
    return L"wintun.dll not found next to tun2socks";
  }
  return Exists(configuration) ? nullptr : L"config not found";
}

// What a crashed run's children leave behind goes once they are dead.
bool KillOrphans(const TunnelConfig& config) {
  const bool hitXray = KillProcessesUnder(config.xrayDir, kXrayProgram);
  const bool hitTun2socks = KillProcessesUnder(config.tun2socksDir, kTun2socksImage);
  if (!hitXray && !hitTun2socks) {
    return false;
  }
  Sleep(kOrphanPause);
  PhysicalRoute route;
  std::wstring ignored;
  (void)FindPhysicalRoute(route, ignored);  // without a route the alias is just empty
  CleanupLeftoverNetwork(OrDefault(config.tunAddress, kDefaultTunAddress), route.interfaceAlias);
  return true;
}

}  // namespace

bool TunnelManager::start(const TunnelConfig& config, std::wstring& error) {
  ConnectTimer timer;
  clearOldState(config, timer);
  HelperFiles files;
  if (HasConflict(error) || !findHelperFiles(config, files, error) ||
      !preparePhysicalSide(config, timer, error) || !createJob(error)) {
    return false;
  }
  if (!startChildren(config, files, timer, error) || !bringUpAdapter(timer, error) ||
      !installRoutes(timer, error)) {
    stop();
    return false;
  }
  blockIpv6(timer);
  running = true;
  return true;
}

void TunnelManager::clearOldState(const TunnelConfig& config, ConnectTimer& timer) {
  const bool ownSession = isRunning() || running;
  stop();
  timer.mark(ownSession ? L"stop() own session" : L"stop() idle");
  if (ownSession) {
    timer.mark(L"skip orphan scan");
    return;
  }
  timer.mark(KillOrphans(config) ? L"kill stale (hit)" : L"kill stale (clean)");
}

bool TunnelManager::findHelperFiles(const TunnelConfig& config, HelperFiles& files,
                                    std::wstring& error) {
  if (config.xrayDir.empty() || config.tun2socksDir.empty() || config.configPath.empty()) {
    error = L"xray dir, tun2socks dir and config are required";
    return false;
  }
  files.xray = config.xrayDir + L'\\' + kXrayProgram;
  files.tun2socks = FindFileByPattern(config.tun2socksDir, kTun2socksPattern);
  const wchar_t* const missing = MissingFile(
      files.xray, files.tun2socks, config.tun2socksDir + L'\\' + kWintunLibrary, config.configPath);
  if (missing != nullptr) {
    error = missing;
  }
  return missing == nullptr;
}

bool TunnelManager::preparePhysicalSide(const TunnelConfig& config, ConnectTimer& timer,
                                        std::wstring& error) {
  PhysicalRoute route;
  if (!FindPhysicalRoute(route, error)) {
    return false;
  }
  physicalAlias = route.interfaceAlias;
  physicalGateway = route.gateway;
  tunAddress = OrDefault(config.tunAddress, kDefaultTunAddress);
  serverAddress = OrDefault(config.serverAddress, kDefaultNodeAddress);
  if (!IsIpv4Literal(serverAddress)) {
    serverAddress = kDefaultNodeAddress;  // a host name is not resolved here
  }
  timer.mark(L"find physical route");
  repairPhysicalDns(timer);
  pinPanelHosts(config.panelHosts);
  timer.mark(L"pin panel hosts");
  return true;
}

void TunnelManager::repairPhysicalDns(ConnectTimer& timer) {
  if (ListInterfaceDnsServers(physicalAlias) == std::vector<std::wstring>{kTunNameServer}) {
    NetshResetDns(physicalAlias);
    timer.mark(L"reset physical dns (netsh)");
  }
}

// A failure here leaves the panel pins and the texts to the next stop, which the next start makes.
bool TunnelManager::createJob(std::wstring& error) {
  KernelHandle created(CreateJobObjectW(nullptr, nullptr));
  if (!created) {
    error = L"CreateJobObject failed";
    return false;
  }
  JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits = {};
  limits.BasicLimitInformation.LimitFlags = JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE;
  if (SetInformationJobObject(created.get(), JobObjectExtendedLimitInformation, &limits,
                              sizeof(limits)) == FALSE) {
    error = L"SetInformationJobObject failed";
    return false;
  }
  job = std::move(created);
  return true;
}

bool TunnelManager::startChildren(const TunnelConfig& config, const HelperFiles& files,
                                  ConnectTimer& timer, std::wstring& error) {
  if (!startXray(config, files, timer, error) ||
      !SpawnChild(job.get(), files.tun2socks, Tun2socksCommandLine(files.tun2socks),
                  config.tun2socksDir, tun2socksProcess, tun2socksThread, error)) {
    return false;
  }
  timer.mark(L"spawn tun2socks");
  return true;
}

bool TunnelManager::startXray(const TunnelConfig& config, const HelperFiles& files,
                              ConnectTimer& timer, std::wstring& error) {
  const std::wstring commandLine =
      QuoteArgument(files.xray) + L" run -c " + QuoteArgument(config.configPath);
  if (!SpawnChild(job.get(), files.xray, commandLine, config.xrayDir, xrayProcess, xrayThread,
                  error)) {
    return false;
  }
  timer.mark(L"spawn xray");
  // Somebody else's listener may answer while Xray is already gone.
  if (!WaitForLocalPort(kSocksPort, kXrayPortBudget, xrayProcess.get()) ||
      !IsProcessRunning(xrayProcess.get())) {
    error = L"连接核心无法启动，请换一条线路或重新登录后再试。";
    return false;
  }
  timer.mark(L"xray socks listening");
  return true;
}

bool TunnelManager::bringUpAdapter(ConnectTimer& timer, std::wstring& error) {
  if (!WaitForTunAdapter(kAdapterName, tunAlias, kAdapterBudget)) {
    error = L"wintun adapter not created";
    return false;
  }
  timer.mark(L"wintun adapter up");
  if (!IsProcessRunning(tun2socksProcess.get())) {
    error = L"tun2socks exited early";
    return false;
  }
  std::wstring detail;
  if (!SetInterfaceAddress(tunAlias, tunAddress, kTunPrefixLength, detail)) {
    error = L"failed to assign TUN address: " + detail;
    return false;
  }
  timer.mark(L"set tun address (api)");
  const bool dnsSet = SetInterfaceDns(tunAlias, kTunNameServer, detail);
  timer.mark(dnsSet ? L"set tun dns (api)" : L"set tun dns (api fail)");
  if (!WaitForAdapterIpv4(tunAlias, kAddressBudget)) {
    error = L"TUN adapter has no IPv4 address";
    return false;
  }
  timer.mark(L"tun ipv4 ready");
  return true;
}

bool TunnelManager::pinNode(std::wstring& error) {
  (void)DeleteRoute(physicalAlias, serverAddress, kHostRoutePrefix, physicalGateway);
  if (!AddRoute(physicalAlias, serverAddress, kHostRoutePrefix, physicalGateway, kHostRouteMetric,
                error)) {
    return false;
  }
  if (std::find(pinnedRoutes.begin(), pinnedRoutes.end(), serverAddress) == pinnedRoutes.end()) {
    pinnedRoutes.push_back(serverAddress);
  }
  return true;
}

bool TunnelManager::installRoutes(ConnectTimer& timer, std::wstring& error) {
  if (!pinNode(error)) {
    return false;
  }
  for (const wchar_t* half : {kLowerHalf, kUpperHalf}) {
    if (!AddRoute(tunAlias, half, kSplitRoutePrefix, tunAddress, kSplitRouteMetric, error)) {
      return false;
    }
  }
  if (!RouteExists(tunAlias, kLowerHalf, kSplitRoutePrefix) ||
      !RouteExists(tunAlias, kUpperHalf, kSplitRoutePrefix)) {
    error = L"split default routes were not installed on TUN";
    return false;
  }
  timer.mark(L"routes installed");
  return true;
}

// Without it, traffic to IPv6 hosts would leave through the physical interface. What fails here is
// ignored: the machine may have no IPv6 at all.
void TunnelManager::blockIpv6(ConnectTimer& timer) {
  if (!physicalAlias.empty()) {
    NetshSetRouterDiscovery(physicalAlias, false);
    NetshDeleteIpv6Route(L"::/0", physicalAlias);
  }
  if (!tunAlias.empty()) {
    NetshDisableIpv6(tunAlias);
    NetshDeleteIpv6SplitRoutes(tunAlias);
  }
  timer.mark(L"ipv6 leak blocked");
}

}  // namespace vpn
