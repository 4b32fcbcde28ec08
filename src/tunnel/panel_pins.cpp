// Keeps the node and the panel reachable on the physical interface while the tunnel is up.
#include <algorithm>

#include "src/net/host_resolve.h"
#include "src/net/routes.h"
#include "src/tunnel/tunnel_manager.h"

namespace vpn {

// A pin that fails never stops a connect, and is tried again for the next host of that address.
void TunnelManager::pinPanelHosts(const std::vector<std::wstring>& hosts) {
  std::vector<std::wstring> addresses;
  for (const std::wstring& host : hosts) {
    const std::vector<std::wstring> resolved = ResolveHostIpv4(host);
    addresses.insert(addresses.end(), resolved.begin(), resolved.end());
  }
  // The platform may name an interface with an empty text, and fail to write a gateway as text.
  if (physical_.interfaceAlias.empty() || physical_.gateway.empty()) {
    return;
  }
  // Sorted, so that none has to be looked for among all that are pinned already.
  std::vector<std::wstring> ordered = addresses;
  std::sort(ordered.begin(), ordered.end());
  std::vector<bool> isDone(ordered.size());
  for (const std::wstring& address : addresses) {
    const auto place = std::lower_bound(ordered.begin(), ordered.end(), address);
    auto done = isDone.begin() + (place - ordered.begin());
    *done = *done || pinAnew(address);
  }
}

Status TunnelManager::pinNode() {
  const bool isPinned = std::find(pinnedRoutes_.begin(), pinnedRoutes_.end(), nodeAddress_) !=
                        pinnedRoutes_.end();  // it may be a panel host as well
  return isPinned ? makePin(nodeAddress_) : pinAnew(nodeAddress_);
}

Status TunnelManager::pinAnew(const std::wstring& address) {
  Status added = makePin(address);
  if (added) {
    pinnedRoutes_.push_back(address);
  }
  return added;
}

Status TunnelManager::makePin(const std::wstring& address) const {
  // An older route to that destination gives way.
  (void)DeleteRoute(physical_.interfaceAlias, address, kHostRoutePrefix, physical_.gateway);
  return AddRoute(physical_.interfaceAlias, address, kHostRoutePrefix, physical_.gateway,
                  kHostRouteMetric);
}

}  // namespace vpn
