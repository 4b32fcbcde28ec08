// Which interface and gateway carry the machine's real traffic.
#ifndef TAVRIN_SRC_NET_PHYSICAL_ROUTE_H_
#define TAVRIN_SRC_NET_PHYSICAL_ROUTE_H_

#include <cstdint>
#include <string>

#include "src/common/status.h"

namespace vpn {

struct PhysicalRoute {
  std::wstring interfaceAlias;
  std::wstring gateway;              // dotted IPv4
  std::uint32_t interfaceIndex = 0;  // 0 when the platform does not tell
};

// The IPv4 default route with the lowest metric of its own among those with a next hop on an
// interface that is not virtual; of equal ones the first in table order. A failure leaves `route`
// as it is.
Status FindPhysicalRoute(PhysicalRoute& route);

}  // namespace vpn

#endif  // TAVRIN_SRC_NET_PHYSICAL_ROUTE_H_
