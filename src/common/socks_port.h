#ifndef TAVRIN_SRC_COMMON_SOCKS_PORT_H_
#define TAVRIN_SRC_COMMON_SOCKS_PORT_H_

#include <cstdint>

namespace vpn {

// TCP and UDP port of Xray's SOCKS inbound on 127.0.0.1: written into its configuration, waited for
// by the start, and handed to tun2socks.
inline constexpr std::uint16_t kSocksPort = 17593;

}  // namespace vpn

#endif  // TAVRIN_SRC_COMMON_SOCKS_PORT_H_
