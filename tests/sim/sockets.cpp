#include "tests/sim/sockets.h"

#include <utility>

#include "tests/netmodel/network_model.h"

#include <win/errors.h>

namespace sim {

bool Listeners::Listen(std::uint16_t port, std::uint32_t ownerProcessId) {
  const MachineLock lock = core_.Lock();
  return ports_.emplace(port, ownerProcessId).second;
}

void Listeners::StopListening(std::uint16_t port) {
  const MachineLock lock = core_.Lock();
  ports_.erase(port);
}

void Listeners::StopAllOf(std::uint32_t processId) {
  const MachineLock lock = core_.Lock();
  std::erase_if(ports_, [processId](const auto& entry) { return entry.second == processId; });
}

bool Listeners::IsListening(std::uint16_t port) const {
  const MachineLock lock = core_.Lock();
  return ports_.count(port) != 0;
}

void ConnectPlans::Next(ConnectPlan plan) {
  const MachineLock lock = core_.Lock();
  plans_.push_back(plan);
}

bool ConnectPlans::Take(ConnectPlan* plan) {
  const MachineLock lock = core_.Lock();
  if (plans_.empty()) {
    return false;
  }
  *plan = plans_.front();
  plans_.pop_front();
  return true;
}

void Names::Set(const std::string& name, HostEntry entry) {
  const MachineLock lock = core_.Lock();
  hosts_[name] = std::move(entry);
}

void Names::Set(const std::string& name, std::vector<std::string> ipv4) {
  HostEntry entry;
  entry.ipv4 = std::move(ipv4);
  Set(name, std::move(entry));
}

HostEntry Names::Find(const std::string& name) const {
  const MachineLock lock = core_.Lock();
  HostEntry entry;
  if (const auto found = hosts_.find(name); found != hosts_.end()) {
    entry = found->second;
  } else if (std::uint32_t address = 0; netmodel::ParseIpv4(name, &address)) {
    entry.ipv4 = {name};
  } else {
    entry.error = WSAHOST_NOT_FOUND;
  }
  if (entry.error == 0 && entry.ipv4.empty()) {
    entry.error = WSANO_DATA;
  }
  return entry;
}

std::vector<std::string> Names::Asked() const {
  const MachineLock lock = core_.Lock();
  return asked_;
}

void Names::NoteAsked(const std::string& name) {
  const MachineLock lock = core_.Lock();
  asked_.push_back(name);
}

}  // namespace sim
