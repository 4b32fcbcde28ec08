// What only the tests call beside this room's own files.
#ifndef TAVRIN_SRC_NET_NET_INTERNAL_H_
#define TAVRIN_SRC_NET_NET_INTERNAL_H_

#include "src/net/ip_helper.h"

#include <cstdint>
#include <string>

#include "src/common/status.h"

namespace vpn {

// interface_address.cpp

// Fails when either is unknown.
Status LookupInterfaceIds(const std::wstring& alias, NET_LUID& luid, GUID& guid);

// routes.cpp

// Fails for an alias that has no LUID and for a text that is no IPv4 address.
Status BuildRouteRow(const std::wstring& alias, const std::wstring& destination,
                     std::uint8_t prefixLength, const std::wstring& nextHop, ULONG metric,
                     MIB_IPFORWARD_ROW2& row);

}  // namespace vpn

#endif  // TAVRIN_SRC_NET_NET_INTERNAL_H_
