#include "src/panel/http_session.h"

#include "src/common/mutex.h"

namespace vpn {
namespace {

// Guards the creation and the copying of the session.
Mutex g_httpSessionLock;

// Never destroyed: a fetch may still run while the process exits.
SharedInternetHandle& g_httpSession VPN_GUARDED_BY(g_httpSessionLock) = *new SharedInternetHandle;

SharedInternetHandle OpenHttpSession() {
  constexpr int kResolve = 8000;  // time-outs in milliseconds
  constexpr int kConnect = 12000;
  constexpr int kSend = 15000;
  constexpr int kReceive = 20000;
  HINTERNET session = WinHttpOpen(kUserAgent, WINHTTP_ACCESS_TYPE_NO_PROXY, WINHTTP_NO_PROXY_NAME,
                                  WINHTTP_NO_PROXY_BYPASS, 0);
  if (session == nullptr) {
    return nullptr;
  }
  (void)WinHttpSetTimeouts(session, kResolve, kConnect, kSend, kReceive);  // else the defaults
  return {session, [](HINTERNET handle) { (void)WinHttpCloseHandle(handle); }};
}

}  // namespace

SharedInternetHandle SharedHttpSession() {
  const MutexLock lock(g_httpSessionLock);
  if (g_httpSession == nullptr) {
    g_httpSession = OpenHttpSession();
  }
  return g_httpSession;
}

}  // namespace vpn
