// The last fetched account with its nodes, valid for 90 seconds.
#ifndef TAVRIN_SRC_CONTROL_SESSION_CACHE_H_
#define TAVRIN_SRC_CONTROL_SESSION_CACHE_H_

#include <string>

#include "src/account/control_plane.h"
#include "src/common/mutex.h"

namespace vpn {

// Guards the cache. Taken after `TunnelLock`; never held across a network call.
extern Mutex SessionCacheLock;

// From the cache while it is fresh and holds a node, else from a new `ControlPlane`, whose answer
// is stored. On false `error` holds what the control plane said, possibly nothing, and the cache
// stands as it was. Two fetches at once are not merged; the later store wins.
bool FetchAccountCached(const std::wstring& runtimeDir, AccountSession& session,
                        std::wstring& error) VPN_EXCLUDES(SessionCacheLock);

// The next fetch goes to the control plane.
void InvalidateSessionCache() VPN_EXCLUDES(SessionCacheLock);

// Fills the cache ahead of the first connect; the outcome is nobody's concern.
void WarmSessionCache(const std::wstring& runtimeDir) VPN_EXCLUDES(SessionCacheLock);

}  // namespace vpn

#endif  // TAVRIN_SRC_CONTROL_SESSION_CACHE_H_
