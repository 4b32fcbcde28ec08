// The one tunnel of the process and its lock.
#ifndef TAVRIN_SRC_CONTROL_TUNNEL_INSTANCE_H_
#define TAVRIN_SRC_CONTROL_TUNNEL_INSTANCE_H_

#include "src/common/mutex.h"
#include "src/tunnel/tunnel_manager.h"

namespace vpn {

// Held around every call into `Tunnel`, and for the whole of a start. Taken before
// `SessionCacheLock`, never after it.
extern Mutex TunnelLock;

// Its destructor stops the tunnel once more at process exit, without the lock.
extern TunnelManager Tunnel VPN_GUARDED_BY(TunnelLock);

// `TunnelManager::stop` under the lock.
void StopTunnel() VPN_EXCLUDES(TunnelLock);

}  // namespace vpn

#endif  // TAVRIN_SRC_CONTROL_TUNNEL_INSTANCE_H_
