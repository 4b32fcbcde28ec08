#include "src/tunnel/leftovers.h"

#include "src/net/adapters.h"
#include "src/net/interface_address.h"
#include "src/net/netsh.h"
#include "src/net/routes.h"
#include "src/tunnel/tunnel_config.h"

namespace vpn {

constexpr DWORD kSinglePass = 1;  // milliseconds: one look at the adapter list

void ClearTunIpv4(const std::wstring& tunAlias, const std::wstring& tunAddress) {
  (void)DeleteRoute(tunAlias, kLowerHalf, kSplitRoutePrefix, tunAddress);
  (void)DeleteRoute(tunAlias, kUpperHalf, kSplitRoutePrefix, tunAddress);
  (void)ClearInterfaceDns(tunAlias);
}

void CleanupLeftoverNetwork(const std::wstring& tunAddress, const std::wstring& physicalAlias) {
  NetshSetRouterDiscovery(physicalAlias, true);
  const std::optional<std::wstring> tunAlias = WaitForTunAdapter(kAdapterName, kSinglePass);
  // An adapter that is known by its description alone has no alias that a command could name.
  if (tunAlias && !tunAlias->empty()) {
    ClearTunIpv4(*tunAlias, tunAddress);
    NetshDeleteIpv6SplitRoutes(*tunAlias);
  }
}

}  // namespace vpn
