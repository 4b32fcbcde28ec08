// The teardown. No step reports anything, and none keeps the next from running.
#include "src/net/netsh.h"
#include "src/net/routes.h"
#include "src/tunnel/leftovers.h"
#include "src/tunnel/tunnel_manager.h"

namespace vpn {

constexpr DWORD kChildExitWait = 200;  // milliseconds

TunnelManager::~TunnelManager() {
  stop();
}

bool TunnelManager::childrenAlive() const {
  return IsProcessRunning(tun2socks_.process.get()) && IsProcessRunning(xray_.process.get());
}

void TunnelManager::stop() {
  HiddenProcess* const children[] = {&tun2socks_, &xray_};
  for (HiddenProcess* child : children) {
    if (IsProcessRunning(child->process.get())) {
      // A child that resists ends below at the latest, when the job is closed.
      (void)TerminateProcess(child->process.get(), 0);
    }
  }
  for (HiddenProcess* child : children) {
    if (child->process) {
      (void)WaitForSingleObject(child->process.get(), kChildExitWait);
    }
  }
  tun2socks_.thread.reset();
  xray_.thread.reset();
  tun2socks_.process.reset();
  xray_.process.reset();
  job_.reset();
  undoNetwork();
  physical_ = {};
  tun_ = {};
  nodeAddress_.clear();
}

void TunnelManager::undoNetwork() {
  if (!physical_.interfaceAlias.empty() && !physical_.gateway.empty()) {
    for (const std::wstring& address : pinnedRoutes_) {
      (void)DeleteRoute(physical_.interfaceAlias, address, kHostRoutePrefix, physical_.gateway);
    }
    (void)DeleteRoute(physical_.interfaceAlias, nodeAddress_, kHostRoutePrefix, physical_.gateway);
  }
  pinnedRoutes_.clear();
  if (!networkChanged_) {
    return;
  }
  if (!tun_.alias.empty() && !tun_.address.empty()) {
    ClearTunIpv4(tun_.alias, tun_.address);
  }
  NetshSetRouterDiscovery(physical_.interfaceAlias, true);  // brings the IPv6 default route back
  NetshDeleteIpv6SplitRoutes(tun_.alias);
  networkChanged_ = false;
}

}  // namespace vpn
