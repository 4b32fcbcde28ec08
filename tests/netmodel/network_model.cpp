#include "tests/netmodel/network_model.h"

#include <algorithm>
#include <charconv>

namespace netmodel {
namespace {

bool SameKey(const Route& a, const Route& b) {
  return a.luid == b.luid && a.destination == b.destination && a.prefixLength == b.prefixLength &&
         a.nextHop == b.nextHop;
}

template <typename Adapters, typename Predicate>
auto* Find(Adapters& adapters, Predicate matches) {
  const auto found = std::find_if(adapters.begin(), adapters.end(), matches);
  return found == adapters.end() ? nullptr : &*found;
}

// A LUID as ifdef.h lays it out: the low 24 bits reserved, 24 bits of index, 16 bits of type.
std::uint64_t MakeLuid(std::uint32_t index, std::uint32_t ifType) {
  return (static_cast<std::uint64_t>(ifType) << 48) | (static_cast<std::uint64_t>(index) << 24);
}

// Distinct for each index and recognisable in a log.
std::array<std::uint8_t, 16> MakeGuid(std::uint32_t index) {
  std::array<std::uint8_t, 16> guid = {0,    0,    0,    0,    0x57, 0x15, 0x0D, 0x4A,
                                       0x9A, 0x3B, 0x54, 0x41, 0x56, 0x52, 0x49, 0x4E};
  for (std::size_t i = 0; i < 4; ++i) guid[i] = static_cast<std::uint8_t>(index >> (8 * i));
  return guid;
}

std::vector<std::string> SplitServers(const std::string& servers) {
  std::vector<std::string> parts;
  std::string part;
  for (const char c : servers + ",") {
    if (c != ',' && c != ' ') {
      part += c;
    } else if (!part.empty()) {
      parts.push_back(part);
      part.clear();
    }
  }
  return parts;
}

bool ParseOctet(const char*& position, const char* end, std::uint32_t* octet) {
  const auto [next, failure] = std::from_chars(position, end, *octet);
  const auto digits = next - position;
  // A leading zero would mean octal, which the strict reading does not take.
  if (failure != std::errc() || *octet > 255 || (digits > 1 && *position == '0')) return false;
  position = next;
  return true;
}

}  // namespace

Adapter* Network::FindByAlias(const std::string& alias) {
  return Find(adapters, [&](const Adapter& a) { return a.friendlyName == alias; });
}

Adapter* Network::FindByLuid(std::uint64_t luid) {
  return Find(adapters, [&](const Adapter& a) { return a.luid == luid; });
}

Adapter* Network::FindByGuid(const std::array<std::uint8_t, 16>& guid) {
  return Find(adapters, [&](const Adapter& a) { return a.guid == guid; });
}

const Adapter* Network::FindByAlias(const std::string& alias) const {
  return Find(adapters, [&](const Adapter& a) { return a.friendlyName == alias; });
}

const Adapter* Network::FindByLuid(std::uint64_t luid) const {
  return Find(adapters, [&](const Adapter& a) { return a.luid == luid; });
}

Adapter& Network::AddAdapter(Adapter adapter) {
  if (adapter.index == 0) adapter.index = nextIndex++;
  if (adapter.luid == 0) adapter.luid = MakeLuid(adapter.index, adapter.ifType);
  if (adapter.guid == std::array<std::uint8_t, 16>{}) adapter.guid = MakeGuid(adapter.index);
  return adapters.emplace_back(std::move(adapter));
}

void Network::RemoveAdapter(std::uint64_t luid) {
  std::erase_if(adapters, [&](const Adapter& a) { return a.luid == luid; });
  std::erase_if(routes, [&](const Route& r) { return r.luid == luid; });
  std::erase_if(ipv6Routes, [&](const Ipv6Route& r) { return r.luid == luid; });
}

std::uint32_t Network::CreateRoute(const Route& route) {
  if (FindByLuid(route.luid) == nullptr) return kErrorNotFound;
  if (Find(routes, [&](const Route& r) { return SameKey(r, route); }) != nullptr) {
    return kErrorObjectAlreadyExists;
  }
  routes.push_back(route);
  return kNoError;
}

std::uint32_t Network::DeleteRoute(const Route& key) {
  const auto erased = std::erase_if(routes, [&](const Route& r) { return SameKey(r, key); });
  return erased == 0 ? kErrorNotFound : kNoError;
}

std::uint32_t Network::CreateAddress(std::uint64_t luid, UnicastAddress address) {
  Adapter* adapter = FindByLuid(luid);
  if (adapter == nullptr) return kErrorNotFound;
  for (const UnicastAddress& present : adapter->addresses) {
    if (present.address == address.address) return kErrorObjectAlreadyExists;
  }
  adapter->addresses.push_back(address);
  return kNoError;
}

std::uint32_t Network::DeleteAddress(std::uint64_t luid, std::uint32_t address) {
  Adapter* adapter = FindByLuid(luid);
  if (adapter == nullptr) return kErrorNotFound;
  const auto erased = std::erase_if(adapter->addresses,
                                    [&](const UnicastAddress& a) { return a.address == address; });
  return erased == 0 ? kErrorNotFound : kNoError;
}

std::uint32_t Network::SetDnsServers(const std::array<std::uint8_t, 16>& guid,
                                     const std::string& servers) {
  Adapter* adapter = FindByGuid(guid);
  if (adapter == nullptr) return kErrorFileNotFound;
  adapter->dnsServers = SplitServers(servers);
  adapter->dnsFromDhcp = adapter->dnsServers.empty();
  if (adapter->dnsFromDhcp) adapter->dnsServers = adapter->dhcpDnsServers;
  return kNoError;
}

bool ParseIpv4(const std::string& text, std::uint32_t* address) {
  const char* position = text.data();
  const char* const end = position + text.size();
  std::uint32_t result = 0;
  for (int group = 0; group < 4; ++group) {
    if (group > 0 && (position == end || *position++ != '.')) return false;
    std::uint32_t octet = 0;
    if (!ParseOctet(position, end, &octet)) return false;
    result = (result << 8) | octet;
  }
  if (position != end) return false;
  *address = result;
  return true;
}

std::string FormatIpv4(std::uint32_t address) {
  return std::to_string(address >> 24) + "." + std::to_string((address >> 16) & 255) + "." +
         std::to_string((address >> 8) & 255) + "." + std::to_string(address & 255);
}

Network TypicalNetwork() {
  Network network;
  Adapter ethernet;
  ethernet.friendlyName = "\xE4\xBB\xA5\xE5\xA4\xAA\xE7\xBD\x91";  // 以太网
  ethernet.description = "Intel(R) Ethernet Connection I219-V";
  ethernet.index = 12;
  ethernet.addresses = {{0xC0A80114, 24}};
  ethernet.dnsServers = {"192.168.1.1"};
  ethernet.dhcpDnsServers = {"192.168.1.1"};
  ethernet.advertisedIpv6Prefixes = {"::/0"};
  const std::uint64_t wired = network.AddAdapter(ethernet).luid;

  Adapter loopback;
  loopback.friendlyName = "Loopback Pseudo-Interface 1";
  loopback.description = "Software Loopback Interface 1";
  loopback.index = 1;
  loopback.ifType = 24;  // IF_TYPE_SOFTWARE_LOOPBACK
  loopback.mtu = 0xFFFFFFFF;
  loopback.addresses = {{0x7F000001, 8}};
  const std::uint64_t local = network.AddAdapter(loopback).luid;

  // On-link routes carry MIB_IPPROTO_LOCAL; only the default route was configured.
  network.routes = {{wired, 0, 0, 0xC0A80101, 25},
                    {local, 0x7F000000, 8, 0, 331, 2},
                    {wired, 0xC0A80100, 24, 0, 281, 2},
                    {wired, 0xC0A80114, 32, 0, 281, 2}};
  network.ipv6Routes = {{wired, "::/0"}};
  return network;
}

}  // namespace netmodel
