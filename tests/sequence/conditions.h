// What is so on the machine around the service: everything that events set and that stays until the
// next one changes it. The world makes the machine so; the model draws its conclusions from it.
#ifndef TAVRIN_TESTS_SEQUENCE_CONDITIONS_H_
#define TAVRIN_TESTS_SEQUENCE_CONDITIONS_H_

#include <map>
#include <string>
#include <vector>

#include "tests/netmodel/network_model.h"

namespace sequence {

inline constexpr char kWired[] = "以太网";
inline constexpr char kWiredRenamed[] = "以太网 2";

struct Node {
  std::string name;
  std::string address;
};

// By the names and values of events: `xray:deaf` sets "xray" to "deaf".
struct Conditions {
  std::map<std::string, std::string> values = {
      {"account", "local"}, {"node", "0"},  {"hosts", "0"},   {"names", "0"},  {"files", "ok"},
      {"dir", "back"},      {"disk", "ok"}, {"panel", "ok"},  {"xray", "ok"},  {"tun", "ok"},
      {"netsh", "ok"},      {"vpn", "off"}, {"proxy", "off"}, {"port", "free"}};

  const std::string& operator[](const char* name) const { return values.at(name); }
  // True for an event that is no more than a new value of a condition.
  bool Takes(const std::string& name, const std::string& value);

  bool HasPanel() const;     // panel.json names one
  Node AccountNode() const;  // of account.json
  std::vector<Node> PanelNodes() const;
  // The addresses of the panel's hosts in the order in which a start comes to them.
  std::vector<std::string> HostAddresses() const;
  std::map<std::string, std::vector<std::string>> HostNames() const;
};

// What an event does to a network by itself: the machine's, and the model's copy of it. False when
// the event does nothing to a network.
bool ChangeNetwork(const std::string& name, const std::string& value, netmodel::Network& network);

std::uint32_t Ip(const std::string& text);
// The adapter of a tunnel that is up, by its beginning "tavrin" and its state; null for none.
netmodel::Adapter* OwnAdapter(netmodel::Network& network);

}  // namespace sequence

#endif  // TAVRIN_TESTS_SEQUENCE_CONDITIONS_H_
