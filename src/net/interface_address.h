// The address and the name servers of an interface, by its alias. No retries.
#ifndef TAVRIN_SRC_NET_INTERFACE_ADDRESS_H_
#define TAVRIN_SRC_NET_INTERFACE_ADDRESS_H_

#include "src/net/ip_helper.h"

#include <cstdint>
#include <string>
#include <vector>

namespace vpn {

// False with `error` set when either is unknown.
bool LookupInterfaceIds(const std::wstring& alias, NET_LUID& luid, GUID& guid, std::wstring& error);

// Makes `address` (dotted IPv4) the interface's only IPv4 address and switches duplicate address
// detection off. Nothing is changed for an address that does not parse.
bool SetInterfaceAddress(const std::wstring& alias, const std::wstring& address,
                         std::uint8_t prefixLength, std::wstring& error);

// Sets the one static name server; the empty text clears them.
bool SetInterfaceDns(const std::wstring& alias, const std::wstring& server, std::wstring& error);
bool ClearInterfaceDns(const std::wstring& alias);

// Dotted IPv4 name servers of every adapter whose friendly name equals `alias` exactly, in order.
// Empty when the list can't be read.
std::vector<std::wstring> ListInterfaceDnsServers(const std::wstring& alias);

}  // namespace vpn

#endif  // TAVRIN_SRC_NET_INTERFACE_ADDRESS_H_
