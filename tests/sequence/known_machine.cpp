#include "tests/sequence/known_machine.h"

#include <algorithm>

#include "tests/fault/network_lines.h"

namespace sequence {
namespace {

constexpr std::uint64_t kStubbornness = 600'000;  // how long a stubborn child takes to die

}  // namespace

void KnownMachine::Begin(std::uint64_t moment) {
  now = moment;
  expected = Expected();
}

void KnownMachine::End(std::uint64_t moment) {
  for (const ChildPointer& child : children) {
    if (child->diesFrom != 0 && child->diesTo == 0) child->diesTo = moment + kStubbornness;
    if (child->dead || (child->diesTo != 0 && moment >= child->diesTo)) Die(child);
  }
  std::erase_if(children, [](const ChildPointer& child) { return child->dead; });
}

void KnownMachine::Log(const std::string& line) {
  if (conditions["dir"] == "back" && conditions["disk"] == "ok") expected.log.push_back(line);
}

void KnownMachine::Trace(const std::string& label) {
  if (conditions["disk"] == "ok") expected.trace.push_back(label);
}

void KnownMachine::Act(const std::string& act) {
  expected.acts.push_back(act);
}

void KnownMachine::Netsh(const std::string& rest) {
  const std::string line = "netsh interface " + rest;
  Act(line);
  if (conditions["netsh"] == "hang") Act("end netsh.exe");
  if (conditions["netsh"] == "ok") (void)network.RunNetsh(line);
}

void KnownMachine::Route(bool add, const std::string& alias, const std::string& destination,
                         const std::string& nextHop, int metric) {
  const netmodel::Adapter* const adapter = network.FindByAlias(alias);
  if (adapter == nullptr) return;
  Act((add ? "add \"" : "delete \"") + alias + "\" " + destination + " via " + nextHop +
      (add ? " metric " + std::to_string(metric) : ""));
  const size_t slash = destination.find('/');
  const netmodel::Route route = {
      adapter->luid, Ip(destination.substr(0, slash)),
      static_cast<std::uint8_t>(std::stoi(destination.substr(slash + 1))), Ip(nextHop),
      static_cast<std::uint32_t>(metric)};
  (void)(add ? network.CreateRoute(route) : network.DeleteRoute(route));
}

void KnownMachine::SetAddress(const std::string& alias, const std::string& address) {
  netmodel::Adapter* const adapter = network.FindByAlias(alias);
  adapter->addresses = {{Ip(address), 24}};
  adapter->dadTransmits = 0;
  Act("address \"" + alias + "\", " + address + "/24");
}

void KnownMachine::SetNameServer(const std::string& alias, const std::string& server) {
  const netmodel::Adapter* const adapter = network.FindByAlias(alias);
  if (adapter == nullptr) return;
  Act("name server \"" + server + '"');
  (void)network.SetDnsServers(adapter->guid, server);
}

ChildPointer KnownMachine::Start(const char* name) {
  children.push_back(std::make_shared<Child>());
  children.back()->name = name;
  return children.back();
}

void KnownMachine::Terminate(const ChildPointer& child) {
  if (!child->isStubborn) {
    child->dead = true;
  } else if (child->diesFrom == 0) {
    child->diesFrom = now + kStubbornness;
  }
}

void KnownMachine::Die(const ChildPointer& child) {
  child->dead = true;
  network.RemoveAdapter(child->luid);
}

void KnownMachine::KillChild(const char* name) {
  const auto found = std::find_if(children.begin(), children.end(), [&](const ChildPointer& child) {
    return !child->dead && child->name == name;
  });
  if (found != children.end()) Die(*found);
}

void KnownMachine::Change(const std::string& name, const std::string& value) {
  if (!ChangeNetwork(name, value, network)) return;
  if (name != "adapter") (void)ChangeNetwork(name, value, untouched);
  const netmodel::Adapter* const own = OwnAdapter(network);
  for (const ChildPointer& child : children) {
    if (own != nullptr && child->name == kTun) child->luid = own->luid;
  }
}

Lines KnownMachine::Alive() const {
  Lines names;
  for (const ChildPointer& child : children) {
    if (!child->dead) names.push_back(child->name);
  }
  std::sort(names.begin(), names.end());
  return names;
}

bool KnownMachine::ChildListens() const {
  return std::any_of(children.begin(), children.end(),
                     [](const ChildPointer& child) { return !child->dead && child->listens; });
}

bool KnownMachine::IsTouched() const {
  const Lines more = fault::Missing(fault::LinesOf(network), fault::LinesOf(untouched));
  return std::any_of(more.begin(), more.end(), [](const std::string& line) {
    return line.starts_with("route") || line.find("discovery off") != std::string::npos;
  });
}

bool KnownMachine::IsCertain(std::uint64_t moment, std::uint64_t longest) const {
  return std::none_of(children.begin(), children.end(), [&](const ChildPointer& child) {
    return !child->dead && child->diesFrom != 0 && moment + longest >= child->diesFrom &&
           moment < child->diesTo;
  });
}

}  // namespace sequence
