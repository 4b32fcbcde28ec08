#include "src/control/account_cache.h"

#include <windows.h>

#include <memory>

#include "src/account/control_plane_choice.h"

namespace vpn {

Mutex g_accountCacheLock;

namespace {

constexpr ULONGLONG kCacheLifetime = 90000;  // milliseconds

// Never destroyed: the warm-up may still run while the process exits.
AccountSession& g_accountCache VPN_GUARDED_BY(g_accountCacheLock) = *new AccountSession;

// `GetTickCount64` when the cache was stored; 0 means that it is invalid.
ULONGLONG g_accountCacheTime VPN_GUARDED_BY(g_accountCacheLock) = 0;

bool ReadAccountCache(AccountSession& session) VPN_EXCLUDES(g_accountCacheLock) {
  const MutexLock lock(g_accountCacheLock);
  if (g_accountCacheTime == 0 || GetTickCount64() - g_accountCacheTime >= kCacheLifetime ||
      g_accountCache.nodes.empty()) {
    return false;
  }
  session = g_accountCache;
  return true;
}

void StoreAccountCache(const AccountSession& session) VPN_EXCLUDES(g_accountCacheLock) {
  const MutexLock lock(g_accountCacheLock);
  g_accountCache = session;
  g_accountCacheTime = GetTickCount64();
}

}  // namespace

Status FetchAccountCached(const std::wstring& runtimeDir, AccountSession& session) {
  if (ReadAccountCache(session)) {
    return Status::success();
  }
  const std::unique_ptr<ControlPlane> controlPlane = CreateControlPlane(runtimeDir);
  std::wstring error;
  if (!controlPlane->fetchAccount(session, error)) {
    return Status::failure(error);
  }
  StoreAccountCache(session);
  return Status::success();
}

void InvalidateAccountCache() {
  const MutexLock lock(g_accountCacheLock);
  g_accountCacheTime = 0;
}

void WarmAccountCache(const std::wstring& runtimeDir) {
  AccountSession session;
  (void)FetchAccountCached(runtimeDir, session);
}

}  // namespace vpn
