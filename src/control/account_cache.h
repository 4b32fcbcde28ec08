// The last fetched account with its nodes, valid for 90 seconds.
#ifndef TAVRIN_SRC_CONTROL_ACCOUNT_CACHE_H_
#define TAVRIN_SRC_CONTROL_ACCOUNT_CACHE_H_

#include <string>

#include "src/account/control_plane.h"
#include "src/common/mutex.h"
#include "src/common/status.h"

namespace vpn {

// Guards the cache. Taken after `g_tunnelLock`; never held across a network call.
extern Mutex g_accountCacheLock;

// From the cache while it is fresh and holds a node, else from a new `ControlPlane`, whose answer
// is stored. A failure has the text of the control plane, possibly none, and leaves the cache as it
// was. Two fetches at once are not merged; the later store wins.
Status FetchAccountCached(const std::wstring& runtimeDir, AccountSession& session)
    VPN_EXCLUDES(g_accountCacheLock);

// The next fetch goes to the control plane.
void InvalidateAccountCache() VPN_EXCLUDES(g_accountCacheLock);

// Fills the cache ahead of the first connect. A failure is not reported.
void WarmAccountCache(const std::wstring& runtimeDir) VPN_EXCLUDES(g_accountCacheLock);

}  // namespace vpn

#endif  // TAVRIN_SRC_CONTROL_ACCOUNT_CACHE_H_
