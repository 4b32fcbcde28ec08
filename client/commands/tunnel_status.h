// What `status` tells: the service's reply, and what its files and the platform know besides.
#ifndef TAVRIN_CLIENT_COMMANDS_TUNNEL_STATUS_H_
#define TAVRIN_CLIENT_COMMANDS_TUNNEL_STATUS_H_

#include <cstdint>
#include <optional>
#include <string>

#include "client/account/node_lookup.h"
#include "client/service/presence.h"

namespace vpn {

// The last connect of the trace, when it is complete.
struct LastConnect {
  std::optional<std::uint64_t> time;  // milliseconds that it took
  std::optional<std::uint64_t> age;   // seconds since its end
};

struct TunnelStatus {
  bool isUp = false;
  std::optional<std::uint64_t> upFor;  // seconds
  std::optional<std::uint64_t> connectTime;
  RunningNode node;
  std::wstring nodeName;
  std::wstring serviceState;
  std::wstring version;
  ServicePlace place;
};

// To be read while no connect of anybody's is under way, since it could lose a line.
LastConnect ReadLastConnect(const ServicePlace& place);

TunnelStatus LookAround(const ServicePlace& place, const LastConnect& last, bool isUp);

}  // namespace vpn

#endif  // TAVRIN_CLIENT_COMMANDS_TUNNEL_STATUS_H_
