// The start: old state first, then refusals that need nothing undone, the physical side, the
// children, and only when these are proven alive the routes and the IPv6 block.
#include "src/common/deployment.h"
#include "src/common/number_text.h"
#include "src/common/text.h"
#include "src/net/adapters.h"
#include "src/net/interface_address.h"
#include "src/net/netsh.h"
#include "src/net/routes.h"
#include "src/runtime/runtime_files.h"
#include "src/tunnel/child_process.h"
#include "src/tunnel/orphans.h"
#include "src/tunnel/port_probe.h"
#include "src/tunnel/preflight.h"
#include "src/tunnel/tunnel_manager.h"

namespace vpn {
namespace {

constexpr DWORD kXrayPortBudget = 5000;  // milliseconds, like the budgets below
constexpr DWORD kAdapterBudget = 15000;
constexpr DWORD kAddressBudget = 4000;

std::wstring Tun2socksCommandLine(const std::wstring& executable) {
  return QuoteArgument(executable) + L" --loglevel warn --device " + kAdapterName +
         L" --mtu 1400 --tcp-auto-tuning --tcp-sndbuf 4m --tcp-rcvbuf 4m" +
         L" --proxy socks5://127.0.0.1:" + DecimalText(kSocksPort);
}

bool Exists(const std::wstring& path) {
  return GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

}  // namespace

Status TunnelManager::start(const TunnelConfig& config) {
  Start start(config);
  clearOldState(start);
  Status prepared = CheckConflicts()
                        .andThen([&] { return findHelperFiles(start); })
                        .andThen([&] { return preparePhysicalSide(start); })
                        .andThen([&] { return createJob(); });
  if (!prepared) {
    return prepared;
  }
  Status up = startXray(start)
                  .andThen([&] { return startTun2socks(start); })
                  .andThen([&] { return bringUpAdapter(start); })
                  .andThen([&] { return installRoutes(start); });
  if (!up) {
    stop();
    return up;
  }
  blockIpv6(start);
  networkChanged_ = true;
  return up;
}

void TunnelManager::clearOldState(Start& start) {
  const bool ownTunnel = childrenAlive() || networkChanged_;
  stop();
  start.timer.mark(ownTunnel ? L"stop() own session" : L"stop() idle");
  if (ownTunnel) {
    start.timer.mark(L"skip orphan scan");
    return;
  }
  start.timer.mark(KillOrphans(start.config) ? L"kill stale (hit)" : L"kill stale (clean)");
}

Status TunnelManager::findHelperFiles(Start& start) {
  const TunnelConfig& config = start.config;
  if (config.xrayDir.empty() || config.tun2socksDir.empty() || config.configPath.empty()) {
    return Status::failure(L"xray dir, tun2socks dir and config are required");
  }
  start.xrayPath = config.xrayDir + L'\\' + kXrayProgram;
  start.tun2socksPath = FindFileByPattern(config.tun2socksDir, kTun2socksPattern);
  if (!Exists(start.xrayPath)) {
    return Status::failure(L"xray.exe not found");
  }
  if (start.tun2socksPath.empty()) {
    return Status::failure(L"tun2socks exe not found");
  }
  if (!Exists(config.tun2socksDir + L'\\' + kWintunLibrary)) {
    return Status::failure(L"wintun.dll not found next to tun2socks");
  }
  return Exists(config.configPath) ? Status::success() : Status::failure(L"config not found");
}

Status TunnelManager::preparePhysicalSide(Start& start) {
  if (Status found = FindPhysicalRoute(physical_); !found) {
    return found;
  }
  tun_.address = TunAddressOf(start.config);
  // A node given by host name is not resolved here: Xray connects to it through the physical
  // interface, which its configuration names, so it needs no route. The pin goes to a fixed
  // address then, so that a start makes, and a stop undoes, the same routes for every node.
  nodeAddress_ =
      IsIpv4Literal(start.config.serverAddress) ? start.config.serverAddress : kDefaultNodeAddress;
  start.timer.mark(L"find physical route");
  repairPhysicalDns(start);
  pinPanelHosts(start.config.panelHosts);
  start.timer.mark(L"pin panel hosts");
  return Status::success();
}

void TunnelManager::repairPhysicalDns(Start& start) const {
  const std::wstring& alias = physical_.interfaceAlias;
  if (ListInterfaceDnsServers(alias) == std::vector<std::wstring>{kTunNameServer}) {
    NetshResetDns(alias);
    start.timer.mark(L"reset physical dns (netsh)");
  }
}

// A failure here leaves the panel pins and the texts to the next stop, which the next start makes.
Status TunnelManager::createJob() {
  KernelHandle created(CreateJobObjectW(nullptr, nullptr));
  if (!created) {
    return Status::failure(L"CreateJobObject failed");
  }
  JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits = {};
  limits.BasicLimitInformation.LimitFlags = JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE;
  if (SetInformationJobObject(created.get(), JobObjectExtendedLimitInformation, &limits,
                              sizeof(limits)) == FALSE) {
    return Status::failure(L"SetInformationJobObject failed");
  }
  job_ = std::move(created);
  return Status::success();
}

Status TunnelManager::startXray(Start& start) {
  const std::wstring commandLine =
      QuoteArgument(start.xrayPath) + L" run -c " + QuoteArgument(start.config.configPath);
  if (Status spawned =
          SpawnChild(job_.get(), start.xrayPath, commandLine, start.config.xrayDir, xray_);
      !spawned) {
    return spawned;
  }
  start.timer.mark(L"spawn xray");
  // Somebody else's listener may answer while Xray is already gone.
  if (!WaitForLocalPort(kSocksPort, kXrayPortBudget, xray_.process.get()) ||
      !IsProcessRunning(xray_.process.get())) {
    return Status::failure(L"连接核心无法启动，请换一条线路或重新登录后再试。");
  }
  start.timer.mark(L"xray socks listening");
  return Status::success();
}

Status TunnelManager::startTun2socks(Start& start) {
  Status spawned =
      SpawnChild(job_.get(), start.tun2socksPath, Tun2socksCommandLine(start.tun2socksPath),
                 start.config.tun2socksDir, tun2socks_);
  if (spawned) {
    start.timer.mark(L"spawn tun2socks");
  }
  return spawned;
}

Status TunnelManager::bringUpAdapter(Start& start) {
  const std::optional<std::wstring> alias = WaitForTunAdapter(kAdapterName, kAdapterBudget);
  if (!alias) {
    return Status::failure(L"wintun adapter not created");
  }
  tun_.alias = *alias;
  start.timer.mark(L"wintun adapter up");
  if (!IsProcessRunning(tun2socks_.process.get())) {
    return Status::failure(L"tun2socks exited early");
  }
  if (const Status set = SetInterfaceAddress(tun_.alias, tun_.address, kTunPrefixLength); !set) {
    return Status::failure(L"failed to assign TUN address: " + set.text());
  }
  start.timer.mark(L"set tun address (api)");
  const bool dnsSet = static_cast<bool>(SetInterfaceDns(tun_.alias, kTunNameServer));
  start.timer.mark(dnsSet ? L"set tun dns (api)" : L"set tun dns (api fail)");
  if (!WaitForAdapterIpv4(tun_.alias, kAddressBudget)) {
    return Status::failure(L"TUN adapter has no IPv4 address");
  }
  start.timer.mark(L"tun ipv4 ready");
  return Status::success();
}

Status TunnelManager::installRoutes(Start& start) {
  const auto addHalf = [&](const wchar_t* half) {
    return AddRoute(tun_.alias, half, kSplitRoutePrefix, tun_.address, kSplitRouteMetric);
  };
  Status added = pinNode().andThen([&] { return addHalf(kLowerHalf); }).andThen([&] {
    return addHalf(kUpperHalf);
  });
  if (!added) {
    return added;
  }
  if (!RouteExists(tun_.alias, kLowerHalf, kSplitRoutePrefix) ||
      !RouteExists(tun_.alias, kUpperHalf, kSplitRoutePrefix)) {
    return Status::failure(L"split default routes were not installed on TUN");
  }
  start.timer.mark(L"routes installed");
  return added;
}

// Without it, traffic to IPv6 hosts would leave through the physical interface. What fails here is
// ignored: the machine may have no IPv6 at all.
void TunnelManager::blockIpv6(Start& start) const {
  NetshSetRouterDiscovery(physical_.interfaceAlias, false);
  NetshDeleteIpv6Route(L"::/0", physical_.interfaceAlias);
  NetshDisableIpv6(tun_.alias);
  NetshDeleteIpv6SplitRoutes(tun_.alias);
  start.timer.mark(L"ipv6 leak blocked");
}

}  // namespace vpn
