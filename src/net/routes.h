// IPv4 routes, in the system's own terms: an interface by its alias, addresses as dotted text. No
// state, no retries.
#ifndef TAVRIN_SRC_NET_ROUTES_H_
#define TAVRIN_SRC_NET_ROUTES_H_

#include "src/net/ip_helper.h"

#include <cstdint>
#include <string>

namespace vpn {

// False with `error` set for an alias that has no LUID or a text that is no IPv4 address.
bool BuildRouteRow(const std::wstring& alias, const std::wstring& destination,
                   std::uint8_t prefixLength, const std::wstring& nextHop, ULONG metric,
                   MIB_IPFORWARD_ROW2& row, std::wstring& error);

// A route that already stands is a success; its metric is not compared. `error` is set on failure
// only.
bool AddRoute(const std::wstring& alias, const std::wstring& destination, std::uint8_t prefixLength,
              const std::wstring& nextHop, ULONG metric, std::wstring& error);

// True only when a route was deleted.
bool DeleteRoute(const std::wstring& alias, const std::wstring& destination,
                 std::uint8_t prefixLength, const std::wstring& nextHop);

// Next hop and metric are not compared.
bool RouteExists(const std::wstring& alias, const std::wstring& destination,
                 std::uint8_t prefixLength);

// By its shape alone: digits and dots with exactly three dots. "..." passes, and so does
// "999.0.0.1".
bool IsIpv4Literal(const std::wstring& text);

}  // namespace vpn

#endif  // TAVRIN_SRC_NET_ROUTES_H_
