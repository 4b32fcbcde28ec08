// The address and the name servers of an interface, by its alias. No retries.
#ifndef TAVRIN_SRC_NET_INTERFACE_ADDRESS_H_
#define TAVRIN_SRC_NET_INTERFACE_ADDRESS_H_

#include "src/net/ip_helper.h"

#include <cstdint>
#include <string>
#include <vector>

#include "src/common/status.h"

namespace vpn {

// Makes `address` (dotted IPv4) the interface's only IPv4 address and switches duplicate address
// detection off. Nothing is changed for an address that does not parse.
Status SetInterfaceAddress(const std::wstring& alias, const std::wstring& address,
                           std::uint8_t prefixLength);

// Sets the one static name server; the empty text clears them.
Status SetInterfaceDns(const std::wstring& alias, const std::wstring& server);
Status ClearInterfaceDns(const std::wstring& alias);

// Dotted IPv4 name servers of every adapter whose friendly name equals `alias` exactly, in order.
// Empty when the list can't be read.
std::vector<std::wstring> ListInterfaceDnsServers(const std::wstring& alias);

}  // namespace vpn

#endif  // TAVRIN_SRC_NET_INTERFACE_ADDRESS_H_
