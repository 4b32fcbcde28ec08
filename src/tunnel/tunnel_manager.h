// Owns everything that a running tunnel consists of: the job object, the two child processes, and
// the memory of what was changed on the machine's network.
#ifndef TAVRIN_SRC_TUNNEL_TUNNEL_MANAGER_H_
#define TAVRIN_SRC_TUNNEL_TUNNEL_MANAGER_H_

#include <string>
#include <vector>

#include "src/common/unique_handle.h"
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
  // first. On true `error` is unchanged. On false it holds the text for the user; a failure after
  // the job exists has called `stop`, and one before it leaves the panel's pins to the next `stop`.
  // Blocks for tens of seconds at worst.
  bool start(const TunnelConfig& config, std::wstring& error);

  // Ends the children and undoes the network changes. Any state, any number of times; cannot fail.
  void stop();

  // True when both children are alive. Says nothing about the routes.
  bool isRunning() const;

 private:
  struct HelperFiles {
    std::wstring xray;
    std::wstring tun2socks;
  };

  // The phases of a start, in order. Those with an error text return false after setting it.
  void clearOldState(const TunnelConfig& config, ConnectTimer& timer);
  bool preparePhysicalSide(const TunnelConfig& config, ConnectTimer& timer, std::wstring& error);
  bool createJob(std::wstring& error);
  bool startChildren(const TunnelConfig& config, const HelperFiles& files, ConnectTimer& timer,
                     std::wstring& error);
  bool startXray(const TunnelConfig& config, const HelperFiles& files, ConnectTimer& timer,
                 std::wstring& error);
  bool bringUpAdapter(ConnectTimer& timer, std::wstring& error);
  bool installRoutes(ConnectTimer& timer, std::wstring& error);
  void blockIpv6(ConnectTimer& timer);

  // A name server of ours that a crashed run left on the physical interface goes back to DHCP.
  void repairPhysicalDns(ConnectTimer& timer);
  void pinPanelHosts(const std::vector<std::wstring>& hosts);
  void pinAddresses(const std::vector<std::wstring>& addresses);
  bool pinNode(std::wstring& error);
  void undoNetwork();

  static bool findHelperFiles(const TunnelConfig& config, HelperFiles& files, std::wstring& error);

  KernelHandle job;  // kills both children when it is closed
  KernelHandle xrayProcess;
  KernelHandle xrayThread;
  KernelHandle tun2socksProcess;
  KernelHandle tun2socksThread;
  bool running = false;  // the last act of a start; only then does `stop` undo the TUN side
  std::wstring physicalAlias;
  std::wstring physicalGateway;
  std::wstring tunAlias;
  std::wstring tunAddress;
  std::wstring serverAddress;
  std::vector<std::wstring> pinnedRoutes;  // IPv4 literals with a /32 route on the physical side
};

}  // namespace vpn

#endif  // TAVRIN_SRC_TUNNEL_TUNNEL_MANAGER_H_
