#include "src/control/tunnel_instance.h"

namespace vpn {

Mutex TunnelLock;
TunnelManager Tunnel;

void StopTunnel() {
  const MutexLock lock(TunnelLock);
  Tunnel.stop();
}

}  // namespace vpn
