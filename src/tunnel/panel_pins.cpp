// Keeps the node and the panel reachable on the physical interface while the tunnel is up.
#include <algorithm>

#include "src/net/host_resolve.h"
#include "src/net/routes.h"
#include "src/tunnel/tunnel_manager.h"

namespace vpn {

// A pin that fails never stops a connect.
void TunnelManager::pinPanelHosts(const std::vector<std::wstring>& hosts) {
  std::vector<std::wstring> addresses;
  for (const std::wstring& host : hosts) {
    const std::vector<std::wstring> resolved = ResolveHostIpv4(host);
    addresses.insert(addresses.end(), resolved.begin(), resolved.end());
  }
  // The platform may name an interface with an empty text, and fail to write a gateway as text.
  const bool canPin = !physical_.interfaceAlias.empty() && !physical_.gateway.empty();
  for (const std::wstring& address : addresses) {
    if (canPin && !isPinned(address)) {
      (void)pin(address);
    }
  }
}

Status TunnelManager::pin(const std::wstring& address) {
  // An older route to that destination gives way.
  (void)DeleteRoute(physical_.interfaceAlias, address, kHostRoutePrefix, physical_.gateway);
  Status added = AddRoute(physical_.interfaceAlias, address, kHostRoutePrefix, physical_.gateway,
                          kHostRouteMetric);
  if (added && !isPinned(address)) {
    pinnedRoutes_.push_back(address);
  }
  return added;
}

bool TunnelManager::isPinned(const std::wstring& address) const {
  return std::find(pinnedRoutes_.begin(), pinnedRoutes_.end(), address) != pinnedRoutes_.end();
}

}  // namespace vpn
