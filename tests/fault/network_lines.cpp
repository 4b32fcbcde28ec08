#include "tests/fault/network_lines.h"

#include <algorithm>
#include <iterator>

namespace fault {
namespace {

std::string NameOf(const netmodel::Network& network, std::uint64_t luid) {
  const netmodel::Adapter* const adapter = network.FindByLuid(luid);
  return adapter == nullptr ? "LUID " + std::to_string(luid) : adapter->friendlyName;
}

std::string AdapterLine(const netmodel::Adapter& adapter) {
  std::string line = "adapter " + adapter.friendlyName + ": " + adapter.description;
  line += adapter.operStatus == netmodel::kOperStatusUp ? ", up" : ", not up";
  line += ", index " + std::to_string(adapter.index) + ", mtu " + std::to_string(adapter.mtu);
  for (const netmodel::UnicastAddress& address : adapter.addresses) {
    line +=
        ", " + netmodel::FormatIpv4(address.address) + "/" + std::to_string(address.prefixLength);
  }
  for (const std::string& server : adapter.dnsServers) {
    line += ", name server " + server;
  }
  line += adapter.dnsFromDhcp ? " by DHCP" : " fixed";
  return line + ", detection " + std::to_string(adapter.dadTransmits);
}

std::string Ipv6Line(const netmodel::Adapter& adapter) {
  return "ipv6 of " + adapter.friendlyName +
         (adapter.ipv6RouterDiscovery ? ": router discovery on" : ": router discovery off") +
         (adapter.ipv6Enabled ? "" : ", disabled");
}

std::string RouteLine(const netmodel::Network& network, const netmodel::Route& route) {
  return "route " + NameOf(network, route.luid) + " " + netmodel::FormatIpv4(route.destination) +
         "/" + std::to_string(route.prefixLength) + " via " + netmodel::FormatIpv4(route.nextHop) +
         " metric " + std::to_string(route.metric);
}

}  // namespace

Lines LinesOf(const netmodel::Network& network) {
  Lines lines;
  for (const netmodel::Adapter& adapter : network.adapters) {
    lines.push_back(AdapterLine(adapter));
    lines.push_back(Ipv6Line(adapter));
  }
  for (const netmodel::Route& route : network.routes) {
    lines.push_back(RouteLine(network, route));
  }
  for (const netmodel::Ipv6Route& route : network.ipv6Routes) {
    lines.push_back("ipv6 route " + NameOf(network, route.luid) + " " + route.prefix);
  }
  std::sort(lines.begin(), lines.end());
  return lines;
}

Lines Missing(const Lines& wanted, const Lines& lines) {
  Lines missing;
  std::set_difference(wanted.begin(), wanted.end(), lines.begin(), lines.end(),
                      std::back_inserter(missing));
  return missing;
}

Lines Difference(const Lines& expected, const Lines& now) {
  Lines difference;
  for (const std::string& line : Missing(now, expected)) {
    difference.push_back("+ " + line);
  }
  for (const std::string& line : Missing(expected, now)) {
    difference.push_back("- " + line);
  }
  return difference;
}

}  // namespace fault
