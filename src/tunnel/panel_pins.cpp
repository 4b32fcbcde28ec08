// Keeps the panel reachable on the physical interface while the tunnel is up.
#include <algorithm>

#include "src/net/host_resolve.h"
#include "src/net/routes.h"
#include "src/tunnel/tunnel_manager.h"

namespace vpn {

void TunnelManager::pinPanelHosts(const std::vector<std::wstring>& hosts) {
  std::vector<std::wstring> addresses;
  for (const std::wstring& host : hosts) {
    const std::vector<std::wstring> resolved = ResolveHostIpv4(host);
    addresses.insert(addresses.end(), resolved.begin(), resolved.end());
  }
  pinAddresses(addresses);
}

// A pin that fails is just not recorded: it never stops a connect.
void TunnelManager::pinAddresses(const std::vector<std::wstring>& addresses) {
  if (physicalAlias.empty() || physicalGateway.empty()) {
    return;
  }
  for (const std::wstring& address : addresses) {
    const bool pinned =
        std::find(pinnedRoutes.begin(), pinnedRoutes.end(), address) != pinnedRoutes.end();
    if (pinned || !IsIpv4Literal(address)) {
      continue;
    }
    // An older route to that destination gives way.
    (void)DeleteRoute(physicalAlias, address, kHostRoutePrefix, physicalGateway);
    std::wstring ignored;
    if (AddRoute(physicalAlias, address, kHostRoutePrefix, physicalGateway, kHostRouteMetric,
                 ignored)) {
      pinnedRoutes.push_back(address);
    }
  }
}

}  // namespace vpn
