#include "tests/sequence/conditions.h"

#include <algorithm>

namespace sequence {
namespace {

using netmodel::Adapter;
using netmodel::Network;
using netmodel::Route;

// The wired adapter keeps its LUID under either name.
Adapter& Wired(Network& network) {
  Adapter* const adapter = network.FindByAlias(kWired);
  return adapter != nullptr ? *adapter : *network.FindByAlias(kWiredRenamed);
}

void PutRoute(Network& network, std::uint64_t luid, const char* destination, std::uint8_t prefix,
              const char* nextHop, std::uint32_t metric) {
  (void)network.CreateRoute({luid, Ip(destination), prefix, Ip(nextHop), metric});
}

// Default routes of the wired and the wireless interface, and nothing else.
void SetPhysical(Network& network, const std::string& value) {
  Adapter& wired = Wired(network);
  Adapter& wireless = *network.FindByAlias("WLAN");
  if (value == "lost") {  // all of them, in the middle of something
    std::erase_if(network.routes,
                  [](const Route& route) { return route.prefixLength == 0 && route.nextHop != 0; });
    return;
  }
  wired.friendlyName = value == "renamed" ? kWiredRenamed : kWired;
  std::erase_if(network.routes, [&](const Route& route) {
    return route.prefixLength == 0 && (route.luid == wired.luid || route.luid == wireless.luid);
  });
  if (value != "none" && value != "wireless") {
    PutRoute(network, wired.luid, "0.0.0.0", 0,
             value == "gateway" ? "192.168.1.254" : "192.168.1.1", 25);
  }
  wireless.operStatus =
      value == "wireless" || value == "both" ? netmodel::kOperStatusUp : netmodel::kOperStatusDown;
  if (wireless.operStatus == netmodel::kOperStatusUp) {
    PutRoute(network, wireless.luid, "0.0.0.0", 0, "192.168.2.1", 10);
  }
}

void SetForeignVpn(Network& network, bool on) {
  const Adapter* const present = network.FindByAlias("Work");
  if (on && present == nullptr) {
    Adapter adapter;
    adapter.friendlyName = "Work";
    adapter.description = "WireGuard Tunnel";
    network.AddAdapter(adapter);
  } else if (!on && present != nullptr) {
    network.RemoveAdapter(present->luid);
  }
}

// Other people's routes. One has the key of a pin, which the product can't tell from its own.
void AddForeignRoutes(Network& network, const std::string& value) {
  const std::uint64_t wired = Wired(network).luid;
  if (value == "pin") {
    PutRoute(network, wired, "203.0.113.77", 32, "192.168.1.1", 50);
  } else if (value == "split") {
    PutRoute(network, wired, "0.0.0.0", 1, "192.168.1.1", 5);
    PutRoute(network, wired, "128.0.0.0", 1, "192.168.1.1", 5);
  } else {
    PutRoute(network, wired, "198.51.100.7", 32, "192.168.1.9", 1);
  }
}

void SetWiredServers(Network& network, const std::string& value) {
  Adapter& wired = Wired(network);
  wired.dnsFromDhcp = value == "dhcp";
  wired.dnsServers = value == "dhcp"   ? wired.dhcpDnsServers
                     : value == "left" ? std::vector<std::string>{"1.1.1.1"}
                                       : std::vector<std::string>{"1.1.1.1", "8.8.8.8"};
}

void ChangeOwnAdapter(Network& network, const std::string& value) {
  Adapter* const adapter = OwnAdapter(network);
  if (adapter == nullptr) {
    return;
  }
  if (value == "rename") {
    adapter->friendlyName = "tavrin 9";
    return;
  }
  if (value == "down") {
    adapter->operStatus = netmodel::kOperStatusDown;
    return;
  }
  Adapter again = *adapter;
  network.RemoveAdapter(again.luid);
  if (value == "reindex") {  // its routes are gone with the old one
    again.index = 0;
    again.luid = 0;
    again.guid = {};
    network.AddAdapter(again);
  }
}

}  // namespace

std::uint32_t Ip(const std::string& text) {
  std::uint32_t address = 0;
  (void)netmodel::ParseIpv4(text, &address);
  return address;
}

netmodel::Adapter* OwnAdapter(Network& network) {
  const auto found =
      std::find_if(network.adapters.begin(), network.adapters.end(), [](const Adapter& adapter) {
        return adapter.friendlyName.starts_with("tavrin") &&
               adapter.description == "tun2socks Tunnel" &&
               adapter.operStatus == netmodel::kOperStatusUp;
      });
  return found == network.adapters.end() ? nullptr : &*found;
}

bool Conditions::Takes(const std::string& name, const std::string& value) {
  const auto found = values.find(name);
  if (found == values.end()) {
    return false;
  }
  found->second = value;
  return true;
}

bool Conditions::HasPanel() const {
  const std::string& account = values.at("account");
  return account == "panel" || account == "signedout" || account == "noplan";
}

Node Conditions::AccountNode() const {
  static const auto& nodes = *new std::vector<Node>{{"Tokyo", "198.51.100.7"},
                                                    {"Osaka", "198.51.100.9"},
                                                    {"Kyoto", "node.example"},
                                                    {"Seoul", "198.51.100.12"}};
  return nodes[static_cast<size_t>(std::stoi(values.at("node")))];
}

std::vector<Node> Conditions::PanelNodes() const {
  static const auto& lists =
      *new std::vector<std::vector<Node>>{{{"Tokyo", "198.51.100.7"}, {"Osaka", "198.51.100.9"}},
                                          {{"Osaka", "198.51.100.9"}, {"Kyoto", "node.example"}},
                                          {{"Tokyo", "198.51.100.12"}, {"Tokyo", "198.51.100.13"}},
                                          {}};
  return lists[static_cast<size_t>(std::stoi(values.at("node")))];
}

std::map<std::string, std::vector<std::string>> Conditions::HostNames() const {
  const std::string& names = values.at("names");
  std::map<std::string, std::vector<std::string>> hosts = {
      {"panel.example", {"203.0.113.70", "203.0.113.71"}},
      {"device.example", {"203.0.113.72"}},
      {"download.example", {"203.0.113.72", "203.0.113.73"}},
      {"node.example", {"198.51.100.14"}}};
  if (names == "1") {
    hosts["panel.example"] = {"203.0.113.75"};
    hosts["device.example"] = {"198.51.100.7", "203.0.113.73"};  // the first is a node too
  } else if (names == "2") {
    hosts["panel.example"] = {};
    hosts["download.example"] = {};
  }
  return hosts;
}

std::vector<std::string> Conditions::HostAddresses() const {
  std::vector<std::string> hosts;
  if (values.at("hosts") == "0") {
    hosts.push_back("203.0.113.77");
  } else if (values.at("hosts") == "1") {
    hosts = {"device.example", "download.example"};
  }
  if (HasPanel()) {
    hosts.push_back("panel.example");
  }
  std::vector<std::string> addresses;
  const auto names = HostNames();
  for (const std::string& host : hosts) {
    const auto known = names.find(host);
    const auto list = known == names.end() ? std::vector<std::string>{host} : known->second;
    for (const std::string& address : list) {
      if (std::find(addresses.begin(), addresses.end(), address) == addresses.end()) {
        addresses.push_back(address);
      }
    }
  }
  return addresses;
}

bool ChangeNetwork(const std::string& name, const std::string& value, Network& network) {
  if (name == "phys") {
    SetPhysical(network, value);
  } else if (name == "vpn") {
    SetForeignVpn(network, value == "on");
  } else if (name == "foreign") {
    AddForeignRoutes(network, value);
  } else if (name == "dns") {
    SetWiredServers(network, value);
  } else if (name == "adapter") {
    ChangeOwnAdapter(network, value);
  } else {
    return false;
  }
  return true;
}

}  // namespace sequence
