// The netsh commands: IPv6 settings, and the reset of name servers to DHCP. Best effort, each
// within a budget of 2500 ms; nobody reads an outcome. Aliases go into the command as they are.
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
