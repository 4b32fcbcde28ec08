// The netsh commands, best effort, within 2500 ms each: the reset of name servers to DHCP, and IPv6
// settings, but not for an empty alias (the platform may give one). Aliases go in as they are.
#ifndef TAVRIN_SRC_NET_NETSH_H_
#define TAVRIN_SRC_NET_NETSH_H_

#include <string>

namespace vpn {

void NetshResetDns(const std::wstring& alias);
void NetshSetRouterDiscovery(const std::wstring& alias, bool enabled);
void NetshDisableIpv6(const std::wstring& alias);

// `prefix` such as ::/0.
void NetshDeleteIpv6Route(const std::wstring& prefix, const std::wstring& alias);

// ::/1 and 8000::/1, which together shadow the default route.
void NetshDeleteIpv6SplitRoutes(const std::wstring& alias);

}  // namespace vpn

#endif  // TAVRIN_SRC_NET_NETSH_H_
