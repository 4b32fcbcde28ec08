// IPv4 addresses of the panel's hosts.
#ifndef TAVRIN_SRC_NET_HOST_RESOLVE_H_
#define TAVRIN_SRC_NET_HOST_RESOLVE_H_

#include <string>
#include <vector>

namespace vpn {

// Dotted texts, sorted, without duplicates. A host in the shape of a literal is handed back without
// a look-up; one that does not resolve gives nothing. Blocks for as long as the resolver takes.
std::vector<std::wstring> ResolveHostIpv4(const std::wstring& host);

}  // namespace vpn

#endif  // TAVRIN_SRC_NET_HOST_RESOLVE_H_
