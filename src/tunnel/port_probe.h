// Finds out whether something listens on a local TCP port.
#ifndef TAVRIN_SRC_TUNNEL_PORT_PROBE_H_
#define TAVRIN_SRC_TUNNEL_PORT_PROBE_H_

#include <windows.h>

#include <cstdint>

namespace vpn {

// Tries to connect to 127.0.0.1 until it works (true), `budget` milliseconds are over, or the
// process, when one is given, has ended. A budget that is over before the first attempt makes none.
bool WaitForLocalPort(std::uint16_t port, DWORD budget, HANDLE process);

}  // namespace vpn

#endif  // TAVRIN_SRC_TUNNEL_PORT_PROBE_H_
