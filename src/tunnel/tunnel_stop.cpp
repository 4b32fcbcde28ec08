// The teardown. No step reports anything, and none keeps the next from running.
#include "src/net/netsh.h"
#include "src/net/routes.h"
#include "src/tunnel/child_process.h"
#include "src/tunnel/leftovers.h"
#include "src/tunnel/tunnel_manager.h"

namespace vpn {
namespace {

constexpr DWORD kChildExitWait = 200;  // milliseconds

void TerminateChild(HANDLE process) {
  if (IsProcessRunning(process)) {
    (void)TerminateProcess(process, 0);  // the job's closing is the last word
  }
}

void AwaitExit(HANDLE process) {
  if (process != nullptr) {
    (void)WaitForSingleObject(process, kChildExitWait);
  }
}

}  // namespace

TunnelManager::~TunnelManager() {
  stop();
}

bool TunnelManager::isRunning() const {
  return IsProcessRunning(tun2socksProcess.get()) && IsProcessRunning(xrayProcess.get());
}

void TunnelManager::stop() {
  TerminateChild(tun2socksProcess.get());
  TerminateChild(xrayProcess.get());
  AwaitExit(tun2socksProcess.get());
  AwaitExit(xrayProcess.get());
  tun2socksThread.reset();
  xrayThread.reset();
  tun2socksProcess.reset();
  xrayProcess.reset();
  job.reset();
  undoNetwork();
  for (std::wstring* text :
       {&tunAlias, &physicalAlias, &physicalGateway, &tunAddress, &serverAddress}) {
    text->clear();
  }
}

void TunnelManager::undoNetwork() {
  if (!physicalAlias.empty() && !physicalGateway.empty()) {
    for (const std::wstring& address : pinnedRoutes) {
      (void)DeleteRoute(physicalAlias, address, kHostRoutePrefix, physicalGateway);
    }
    if (!serverAddress.empty()) {
      (void)DeleteRoute(physicalAlias, serverAddress, kHostRoutePrefix, physicalGateway);
    }
  }
  pinnedRoutes.clear();
  if (!running) {
    return;
  }
  if (!tunAlias.empty() && !tunAddress.empty()) {
    ClearTunIpv4(tunAlias, tunAddress);
  }
  if (!physicalAlias.empty()) {
    NetshSetRouterDiscovery(physicalAlias, true);  // which brings the IPv6 default route back
  }
  if (!tunAlias.empty()) {
    NetshDeleteIpv6SplitRoutes(tunAlias);
  }
  running = false;
}

}  // namespace vpn
