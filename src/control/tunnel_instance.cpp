#include "src/control/tunnel_instance.h"

namespace vpn {

Mutex g_tunnelLock;
TunnelManager g_tunnel;

void StopTunnel() {
  const MutexLock lock(g_tunnelLock);
  g_tunnel.stop();
}

}  // namespace vpn
