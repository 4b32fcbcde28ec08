// IPv4 routes, in the system's own terms: an interface by its alias, addresses as dotted text. No
// state, no retries.
#ifndef TAVRIN_SRC_NET_ROUTES_H_
#define TAVRIN_SRC_NET_ROUTES_H_

#include "src/net/ip_helper.h"

#include <cstdint>
#include <string>

#include "src/common/status.h"

namespace vpn {

// A route that already stands is a success; its metric is not compared.
Status AddRoute(const std::wstring& alias, const std::wstring& destination,
                std::uint8_t prefixLength, const std::wstring& nextHop, ULONG metric);

// True only when a route was deleted.
bool DeleteRoute(const std::wstring& alias, const std::wstring& destination,
                 std::uint8_t prefixLength, const std::wstring& nextHop);

// Next hop and metric are not compared.
bool RouteExists(const std::wstring& alias, const std::wstring& destination,
                 std::uint8_t prefixLength);

}  // namespace vpn

#endif  // TAVRIN_SRC_NET_ROUTES_H_
