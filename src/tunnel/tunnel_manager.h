// Owns everything that a running tunnel consists of: the job object, the two child processes, and
// the memory of what was changed on the machine's network.
#ifndef TAVRIN_SRC_TUNNEL_TUNNEL_MANAGER_H_
#define TAVRIN_SRC_TUNNEL_TUNNEL_MANAGER_H_

#include <string>
#include <vector>

#include "src/common/hidden_process.h"
#include "src/common/status.h"
#include "src/common/unique_handle.h"
#include "src/net/physical_route.h"
#include "src/tunnel/connect_timer.h"
#include "src/tunnel/tunnel_config.h"

namespace vpn {

// Takes no lock of its own: the owner of an instance serializes every call.
class TunnelManager {
 public:
  TunnelManager() = default;
  TunnelManager(const TunnelManager&) = delete;
  TunnelManager& operator=(const TunnelManager&) = delete;
  ~TunnelManager();

  // Takes the machine from whatever state it is in to a working tunnel; what ran before is stopped
  // first. A failure after the job exists has called `stop`, and one before it leaves the panel's
  // pins to the next `stop`. Blocks for tens of seconds at worst.
  Status start(const TunnelConfig& config);

  // Ends the children and undoes the network changes. Any state, any number of times; cannot fail.
  void stop();

  // Says nothing about the routes.
  bool childrenAlive() const;

 private:
  // What one start carries from phase to phase.
  struct Start {
    explicit Start(const TunnelConfig& wanted) : config(wanted) {}

    const TunnelConfig& config;
    ConnectTimer timer;
    std::wstring xrayPath;
    std::wstring tun2socksPath;
  };

  // The phases of a start, in order.
  void clearOldState(Start& start);
  static Status findHelperFiles(Start& start);
  Status preparePhysicalSide(Start& start);
  Status createJob();
  Status startXray(Start& start);
  Status startTun2socks(Start& start);
  Status bringUpAdapter(Start& start);
  Status installRoutes(Start& start);
  void blockIpv6(Start& start) const;

  // A name server of ours that a crashed run left on the physical interface goes back to DHCP.
  void repairPhysicalDns(Start& start) const;
  void pinPanelHosts(const std::vector<std::wstring>& hosts);
  Status pinNode();
  // Leads an address past the tunnel, and remembers it for the undoing.
  Status pinAnew(const std::wstring& address);
  Status makePin(const std::wstring& address) const;
  void undoNetwork();

  KernelHandle job_;  // the platform kills both children when its only handle is closed
  HiddenProcess xray_;
  HiddenProcess tun2socks_;
  bool networkChanged_ = false;  // the last act of a start; only then does `stop` undo the TUN side
  PhysicalRoute physical_;
  struct {
    std::wstring alias;
    std::wstring address;
  } tun_;
  std::wstring nodeAddress_;
  std::vector<std::wstring> pinnedRoutes_;  // IPv4 literals with a /32 route on the physical side
};

}  // namespace vpn

#endif  // TAVRIN_SRC_TUNNEL_TUNNEL_MANAGER_H_
