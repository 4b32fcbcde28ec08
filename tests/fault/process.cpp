#include "tests/fault/process.h"

#include <array>
#include <cstddef>
#include <cstring>
#include <memory>
#include <new>
#include <vector>

#include "src/control/connect_operation.h"
#include "src/control/session_cache.h"
#include "src/control/tunnel_instance.h"
#include "src/panel/panel_client.h"
#include "src/runtime/process_state.h"

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
  KeepBytesOf(&vpn::Tunnel, sizeof vpn::Tunnel);
  new (&vpn::Tunnel) vpn::TunnelManager;
  new (&vpn::TunnelLock) vpn::Mutex;
  vpn::InvalidateSessionCache();
  vpn::RuntimeDir = L"C:\\run";
  vpn::StopRequested = 0;
  // A process opens its WinHTTP session once, and this program is one process for WinHTTP: without
  // this, the first life alone would make the two calls of the opening.
  (void)vpn::SharedHttpSession();
}

void EndProcess() VPN_THREAD_ANNOTATION(no_thread_safety_analysis) {
  vpn::Tunnel.~TunnelManager();
  new (&vpn::Tunnel) vpn::TunnelManager;
}

std::wstring Connect() {
  return vpn::ConnectOperation(L"");
}

void Disconnect() {
  vpn::StopTunnel();
}

}  // namespace fault
