#include "src/control/session_cache.h"

#include <windows.h>

#include <memory>

#include "src/account/control_plane_choice.h"

namespace vpn {

Mutex SessionCacheLock;

namespace {

constexpr ULONGLONG kCacheLifetime = 90000;  // milliseconds

// Never destroyed: the warm-up may still run while the process exits.
AccountSession& SessionCache VPN_GUARDED_BY(SessionCacheLock) = *new AccountSession;

// `GetTickCount64` when the cache was stored; 0 means that it is invalid.
ULONGLONG SessionCacheTime VPN_GUARDED_BY(SessionCacheLock) = 0;

bool ReadSessionCache(AccountSession& session) VPN_EXCLUDES(SessionCacheLock) {
  const MutexLock lock(SessionCacheLock);
  if (SessionCacheTime == 0 || GetTickCount64() - SessionCacheTime >= kCacheLifetime ||
      SessionCache.nodes.empty()) {
    return false;
  }
  session = SessionCache;
  return true;
}

void StoreSessionCache(const AccountSession& session) VPN_EXCLUDES(SessionCacheLock) {
  const MutexLock lock(SessionCacheLock);
  SessionCache = session;
  SessionCacheTime = GetTickCount64();
}

}  // namespace

bool FetchAccountCached(const std::wstring& runtimeDir, AccountSession& session,
                        std::wstring& error) {
  if (ReadSessionCache(session)) {
    return true;
  }
  const std::unique_ptr<ControlPlane> controlPlane = CreateControlPlane(runtimeDir);
  if (!controlPlane->fetchAccount(session, error)) {
    return false;
  }
  StoreSessionCache(session);
  return true;
}

void InvalidateSessionCache() {
  const MutexLock lock(SessionCacheLock);
  SessionCacheTime = 0;
}

void WarmSessionCache(const std::wstring& runtimeDir) {
  AccountSession session;
  std::wstring error;
  (void)FetchAccountCached(runtimeDir, session, error);
}

}  // namespace vpn
