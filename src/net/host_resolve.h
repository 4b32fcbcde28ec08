// IPv4 addresses of hosts. Blocks for as long as the platform's resolver takes.
#ifndef TAVRIN_SRC_NET_HOST_RESOLVE_H_
#define TAVRIN_SRC_NET_HOST_RESOLVE_H_

#include <string>
#include <vector>

namespace vpn {

// For the panel's hosts: all addresses as dotted texts, sorted, without duplicates. A host in the
// shape of a literal is handed back without a look-up; one that does not resolve gives nothing.
std::vector<std::wstring> ResolveHostIpv4(const std::wstring& host);

// For the node: the first address as dotted text; empty when there is none.
std::string ResolveFirstIpv4(const std::string& host);

}  // namespace vpn

#endif  // TAVRIN_SRC_NET_HOST_RESOLVE_H_
