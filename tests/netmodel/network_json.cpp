#include "tests/netmodel/network_json.h"

namespace netmodel {
namespace {

using nlohmann::json;
using Guid = std::array<std::uint8_t, 16>;

constexpr char kHexDigits[] = "0123456789abcdef";

std::string FormatGuid(const Guid& guid) {
  std::string text;
  for (const std::uint8_t byte : guid) {
    text += kHexDigits[byte >> 4];
    text += kHexDigits[byte & 15];
  }
  return text;
}

Guid ParseGuid(const std::string& text) {
  Guid guid{};
  for (std::size_t i = 0; i < guid.size() && i * 2 + 2 <= text.size(); ++i) {
    guid[i] = static_cast<std::uint8_t>(std::stoul(text.substr(i * 2, 2), nullptr, 16));
  }
  return guid;
}

std::uint32_t RequireIpv4(const std::string& text) {
  std::uint32_t address = 0;
  if (!ParseIpv4(text, &address)) {
    throw json::other_error::create(500, "not an IPv4 address: " + text, nullptr);
  }
  return address;
}

// Takes the member over when the object has it, and leaves the default otherwise.
template <typename T>
void Take(const json& object, const char* key, T& member) {
  if (const auto found = object.find(key); found != object.end()) found->get_to(member);
}

// "10.0.0.1/24" for an address and its prefix length, or for a destination.
std::string FormatPrefix(std::uint32_t address, std::uint8_t length) {
  return FormatIpv4(address) + "/" + std::to_string(length);
}

void ParsePrefix(const std::string& text, std::uint32_t& address, std::uint8_t& length) {
  const std::size_t slash = text.find('/');
  address = RequireIpv4(text.substr(0, slash));
  if (slash != std::string::npos) {
    length = static_cast<std::uint8_t>(std::stoul(text.substr(slash + 1)));
  }
}

json FormatAdapter(const Adapter& adapter) {
  json addresses = json::array();
  for (const UnicastAddress& a : adapter.addresses) {
    addresses.push_back(FormatPrefix(a.address, a.prefixLength));
  }
  return {{"friendlyName", adapter.friendlyName},
          {"description", adapter.description},
          {"index", adapter.index},
          {"luid", adapter.luid},
          {"guid", FormatGuid(adapter.guid)},
          {"operStatus", adapter.operStatus},
          {"ifType", adapter.ifType},
          {"mtu", adapter.mtu},
          {"addresses", addresses},
          {"dnsServers", adapter.dnsServers},
          {"dnsFromDhcp", adapter.dnsFromDhcp},
          {"dhcpDnsServers", adapter.dhcpDnsServers},
          {"dadTransmits", adapter.dadTransmits},
          {"ipv6RouterDiscovery", adapter.ipv6RouterDiscovery},
          {"advertisedIpv6Prefixes", adapter.advertisedIpv6Prefixes},
          {"ipv6Enabled", adapter.ipv6Enabled}};
}

Adapter ParseAdapter(const json& object) {
  Adapter adapter;
  Take(object, "friendlyName", adapter.friendlyName);
  Take(object, "description", adapter.description);
  Take(object, "index", adapter.index);
  Take(object, "luid", adapter.luid);
  std::string guid;
  Take(object, "guid", guid);
  adapter.guid = ParseGuid(guid);
  Take(object, "operStatus", adapter.operStatus);
  Take(object, "ifType", adapter.ifType);
  Take(object, "mtu", adapter.mtu);
  std::vector<std::string> addresses;
  Take(object, "addresses", addresses);
  for (const std::string& text : addresses) {
    UnicastAddress& address = adapter.addresses.emplace_back();
    ParsePrefix(text, address.address, address.prefixLength);
  }
  Take(object, "dnsServers", adapter.dnsServers);
  Take(object, "dnsFromDhcp", adapter.dnsFromDhcp);
  Take(object, "dhcpDnsServers", adapter.dhcpDnsServers);
  Take(object, "dadTransmits", adapter.dadTransmits);
  Take(object, "ipv6RouterDiscovery", adapter.ipv6RouterDiscovery);
  Take(object, "advertisedIpv6Prefixes", adapter.advertisedIpv6Prefixes);
  Take(object, "ipv6Enabled", adapter.ipv6Enabled);
  return adapter;
}

json FormatRoute(const Route& route) {
  return {{"luid", route.luid},
          {"destination", FormatPrefix(route.destination, route.prefixLength)},
          {"nextHop", FormatIpv4(route.nextHop)},
          {"metric", route.metric},
          {"protocol", route.protocol},
          {"validLifetime", route.validLifetime},
          {"preferredLifetime", route.preferredLifetime}};
}

Route ParseRoute(const json& object) {
  Route route;
  Take(object, "luid", route.luid);
  ParsePrefix(object.at("destination").get<std::string>(), route.destination, route.prefixLength);
  route.nextHop = RequireIpv4(object.at("nextHop").get<std::string>());
  Take(object, "metric", route.metric);
  Take(object, "protocol", route.protocol);
  Take(object, "validLifetime", route.validLifetime);
  Take(object, "preferredLifetime", route.preferredLifetime);
  return route;
}

}  // namespace

void to_json(json& out, const Network& network) {
  out = {{"adapters", json::array()},
         {"routes", json::array()},
         {"ipv6Routes", json::array()},
         {"nextIndex", network.nextIndex}};
  for (const Adapter& a : network.adapters) out["adapters"].push_back(FormatAdapter(a));
  for (const Route& r : network.routes) out["routes"].push_back(FormatRoute(r));
  for (const Ipv6Route& r : network.ipv6Routes) {
    out["ipv6Routes"].push_back({{"luid", r.luid}, {"prefix", r.prefix}});
  }
}

void from_json(const json& in, Network& network) {
  network = Network();
  const json empty = json::array();
  for (const json& a : in.value("adapters", empty)) network.adapters.push_back(ParseAdapter(a));
  for (const json& r : in.value("routes", empty)) network.routes.push_back(ParseRoute(r));
  for (const json& r : in.value("ipv6Routes", empty)) {
    network.ipv6Routes.push_back({r.at("luid"), r.at("prefix")});
  }
  Take(in, "nextIndex", network.nextIndex);
}

std::string FormatNetwork(const Network& network) {
  return json(network).dump(2) + "\n";
}

Network ParseNetwork(const std::string& text) {
  return json::parse(text).get<Network>();
}

}  // namespace netmodel
