#include "tests/fault/process.h"

#include <array>
#include <cstddef>
#include <cstring>
#include <memory>
#include <new>
#include <vector>

#include "src/control/account_cache.h"
#include "src/control/connect_operation.h"
#include "src/control/tunnel_instance.h"
#include "src/panel/panel_client.h"
#include "src/runtime/process_state.h"
#include "src/runtime/service_log.h"

namespace fault {
namespace {

// What the members of an abandoned tunnel own stays reachable here, so that it is no leak.
void KeepBytesOf(const void* object, size_t size) {
  static auto& graves = *new std::vector<std::unique_ptr<std::byte[]>>;
  graves.push_back(std::make_unique<std::byte[]>(size));
  std::memcpy(graves.back().get(), object, size);
}

}  // namespace

void BeginProcess() VPN_THREAD_ANNOTATION(no_thread_safety_analysis) {
  KeepBytesOf(&vpn::g_tunnel, sizeof vpn::g_tunnel);
  new (&vpn::g_tunnel) vpn::TunnelManager;
  new (&vpn::g_tunnelLock) vpn::Mutex;
  new (&vpn::g_accountCacheLock) vpn::Mutex;
  new (&vpn::g_logLock) vpn::Mutex;
  vpn::InvalidateAccountCache();
  vpn::g_runtimeDir = L"C:\\run";
  vpn::g_stopRequested = 0;
  // A process opens its WinHTTP session once, and this program is one process for WinHTTP: without
  // this, the first life alone would make the two calls of the opening.
  (void)vpn::SharedHttpSession();
}

void EndProcess() VPN_THREAD_ANNOTATION(no_thread_safety_analysis) {
  vpn::g_tunnel.~TunnelManager();
  new (&vpn::g_tunnel) vpn::TunnelManager;
}

std::wstring Connect() {
  return vpn::ConnectOperation(L"").text();
}

void Disconnect() {
  vpn::StopTunnel();
}

}  // namespace fault
