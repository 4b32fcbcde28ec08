// The network of one Windows machine as a plain value: adapters, IPv4 routes, addresses, name
// servers and the few IPv6 settings that netsh changes. The simulated machine holds one in memory;
// the stand-in iphlpapi.dll loads one from a file that several processes share. Operations answer
// with the Win32 codes that the real platform gives, and know nothing of fault injection or logs.
//
// All text is UTF-8. IPv4 addresses are numbers in host byte order (10.0.0.1 is 0x0A000001).
#ifndef TAVRIN_TESTS_NETMODEL_NETWORK_MODEL_H_
#define TAVRIN_TESTS_NETMODEL_NETWORK_MODEL_H_

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace netmodel {

// winerror.h
inline constexpr std::uint32_t kNoError = 0;
inline constexpr std::uint32_t kErrorFileNotFound = 2;
inline constexpr std::uint32_t kErrorInvalidParameter = 87;
inline constexpr std::uint32_t kErrorNotFound = 1168;
inline constexpr std::uint32_t kErrorObjectAlreadyExists = 5010;

// ifdef.h, IF_OPER_STATUS
inline constexpr std::uint32_t kOperStatusUp = 1;
inline constexpr std::uint32_t kOperStatusDown = 2;

struct UnicastAddress {
  std::uint32_t address = 0;
  std::uint8_t prefixLength = 24;
  bool operator==(const UnicastAddress&) const = default;
};

struct Adapter {
  std::string friendlyName;  // the alias
  std::string description;
  std::uint32_t index = 0;
  std::uint64_t luid = 0;
  std::array<std::uint8_t, 16> guid{};  // bytes in the order of the GUID structure in memory
  std::uint32_t operStatus = kOperStatusUp;
  std::uint32_t ifType = 6;  // IF_TYPE_ETHERNET_CSMACD; 53 is the virtual type of Wintun
  std::uint32_t mtu = 1500;
  std::vector<UnicastAddress> addresses;    // IPv4 only
  std::vector<std::string> dnsServers;      // dotted IPv4 or IPv6 text, in the adapter's order
  bool dnsFromDhcp = true;                  // cleared by a static setting, set by netsh source=dhcp
  std::vector<std::string> dhcpDnsServers;  // what source=dhcp brings back
  std::uint32_t dadTransmits = 3;
  bool ipv6RouterDiscovery = true;
  // What the router on this link advertises; enabling router discovery brings these routes back.
  std::vector<std::string> advertisedIpv6Prefixes;
  bool ipv6Enabled = true;  // netsh admin=
  bool operator==(const Adapter&) const = default;
};

struct Route {  // IPv4; the key is (luid, destination, prefixLength, nextHop)
  std::uint64_t luid = 0;
  std::uint32_t destination = 0;
  std::uint8_t prefixLength = 0;
  std::uint32_t nextHop = 0;
  std::uint32_t metric = 0;
  std::uint32_t protocol = 3;  // MIB_IPPROTO_NETMGMT
  std::uint32_t validLifetime = 0xFFFFFFFF;
  std::uint32_t preferredLifetime = 0xFFFFFFFF;
  bool operator==(const Route&) const = default;
};

struct Ipv6Route {
  std::uint64_t luid = 0;
  std::string prefix;  // as netsh writes it: "::/0", "::/1", "8000::/1"
  bool operator==(const Ipv6Route&) const = default;
};

struct Network {
  std::vector<Adapter> adapters;  // list order is the order of GetAdaptersAddresses
  std::vector<Route> routes;      // list order is the table order of GetIpForwardTable2
  std::vector<Ipv6Route> ipv6Routes;
  std::uint32_t nextIndex = 40;  // index and LUID of the next adapter come from this
  bool operator==(const Network&) const = default;

  // Look-ups; null when there is none. An alias compares exactly.
  Adapter* FindByAlias(const std::string& alias);
  Adapter* FindByLuid(std::uint64_t luid);
  Adapter* FindByGuid(const std::array<std::uint8_t, 16>& guid);
  const Adapter* FindByAlias(const std::string& alias) const;
  const Adapter* FindByLuid(std::uint64_t luid) const;

  // Gives the adapter a fresh index, LUID and GUID where these are zero, and appends it.
  Adapter& AddAdapter(Adapter adapter);
  // Takes away the adapter with its routes. A missing adapter is no error.
  void RemoveAdapter(std::uint64_t luid);

  // 0, 5010 when a route with the same key stands (nothing changes), 1168 for an unknown LUID.
  std::uint32_t CreateRoute(const Route& route);
  // 0, or 1168 when no route has this key; metric and the rest are not compared.
  std::uint32_t DeleteRoute(const Route& key);
  // 0, 5010 for an address that stands on the same adapter, 1168 for an unknown LUID.
  std::uint32_t CreateAddress(std::uint64_t luid, UnicastAddress address);
  std::uint32_t DeleteAddress(std::uint64_t luid, std::uint32_t address);
  // Servers are separated by commas or blanks; the empty text clears the static list, and what DHCP
  // gave serves again. 0, or 2 for an unknown GUID.
  std::uint32_t SetDnsServers(const std::array<std::uint8_t, 16>& guid, const std::string& servers);

  // Carries out one netsh command line as the product writes them (ipv6 set interface
  // routerdiscovery/admin, ipv6 delete route, ipv4 set dnsservers source=dhcp). The exit code of
  // netsh: 0, or 1 for an unknown interface, a missing route or a line it does not understand.
  std::uint32_t RunNetsh(const std::string& commandLine);
};

// Dotted text to a number in host byte order, strictly four decimal groups of 0..255 as InetPton
// reads them; false when the text is no such address.
bool ParseIpv4(const std::string& text, std::uint32_t* address);
std::string FormatIpv4(std::uint32_t address);

// A machine with one Ethernet adapter "以太网" (192.168.1.20/24, name server 192.168.1.1, gateway
// 192.168.1.1 at metric 25, ::/0 on IPv6), the loopback adapter and their on-link routes.
Network TypicalNetwork();

}  // namespace netmodel

#endif  // TAVRIN_TESTS_NETMODEL_NETWORK_MODEL_H_
