// The handful of netsh lines that the product writes, carried out on the model.
#include <algorithm>
#include <regex>

#include "tests/netmodel/network_model.h"

namespace netmodel {
namespace {

constexpr std::uint32_t kDone = 0;
constexpr std::uint32_t kRefused = 1;

std::uint32_t DeleteIpv6Route(Network& network, const std::string& prefix,
                              const std::string& alias) {
  const Adapter* adapter = network.FindByAlias(alias);
  if (adapter == nullptr) return kRefused;
  const Ipv6Route key{adapter->luid, prefix};
  return std::erase(network.ipv6Routes, key) == 0 ? kRefused : kDone;
}

// The router's next advertisement; it reaches only an adapter that listens for it.
void HearRouter(Network& network, const Adapter& adapter) {
  for (const std::string& prefix : adapter.advertisedIpv6Prefixes) {
    const Ipv6Route route{adapter.luid, prefix};
    const auto& present = network.ipv6Routes;
    if (std::find(present.begin(), present.end(), route) == present.end()) {
      network.ipv6Routes.push_back(route);
    }
  }
}

std::uint32_t SetIpv6Interface(Network& network, const std::string& alias,
                               const std::string& setting, bool enabled) {
  Adapter* adapter = network.FindByAlias(alias);
  if (adapter == nullptr) return kRefused;
  (setting == "admin" ? adapter->ipv6Enabled : adapter->ipv6RouterDiscovery) = enabled;
  if (setting == "routerdiscovery" && enabled) HearRouter(network, *adapter);
  return kDone;
}

std::uint32_t SetDnsFromDhcp(Network& network, const std::string& alias) {
  Adapter* adapter = network.FindByAlias(alias);
  if (adapter == nullptr) return kRefused;
  adapter->dnsFromDhcp = true;
  adapter->dnsServers = adapter->dhcpDnsServers;
  return kDone;
}

}  // namespace

std::uint32_t Network::RunNetsh(const std::string& commandLine) {
  static const std::regex setInterface(
      "netsh interface ipv6 set interface \"([^\"]*)\" (routerdiscovery|admin)=(enabled|disabled) "
      "store=active");
  static const std::regex deleteRoute(
      "netsh interface ipv6 delete route ([0-9a-f:]+/[0-9]+) interface=\"([^\"]*)\"");
  static const std::regex dnsFromDhcp(
      "netsh interface ipv4 set dnsservers name=\"([^\"]*)\" source=dhcp");
  std::smatch match;
  if (std::regex_match(commandLine, match, setInterface)) {
    return SetIpv6Interface(*this, match[1], match[2], match[3] == "enabled");
  }
  if (std::regex_match(commandLine, match, deleteRoute)) {
    return DeleteIpv6Route(*this, match[1], match[2]);
  }
  if (std::regex_match(commandLine, match, dnsFromDhcp)) {
    return SetDnsFromDhcp(*this, match[1]);
  }
  return kRefused;
}

}  // namespace netmodel
