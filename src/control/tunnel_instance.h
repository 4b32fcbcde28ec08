// The one tunnel of the process and its lock.
#ifndef TAVRIN_SRC_CONTROL_TUNNEL_INSTANCE_H_
#define TAVRIN_SRC_CONTROL_TUNNEL_INSTANCE_H_

#include "src/common/mutex.h"
#include "src/tunnel/tunnel_manager.h"

namespace vpn {

// Held around every call into `g_tunnel`, and for the whole of a start. Taken before
// `g_accountCacheLock`, never after it.
extern Mutex g_tunnelLock;

// Its destructor stops the tunnel once more at process exit, without the lock.
extern TunnelManager g_tunnel VPN_GUARDED_BY(g_tunnelLock);

// `TunnelManager::stop` under the lock.
void StopTunnel() VPN_EXCLUDES(g_tunnelLock);

}  // namespace vpn

#endif  // TAVRIN_SRC_CONTROL_TUNNEL_INSTANCE_H_
