#include "tests/sim/resources.h"

#include <utility>

namespace sim {

void Resources::Add(void* memory, std::string kind, std::string origin, std::uint32_t processId,
                    std::shared_ptr<void> owner) {
  const MachineLock lock = core_.Lock();
  open_[memory] = Entry{{std::move(kind), std::move(origin), processId}, std::move(owner)};
}

bool Resources::Release(void* memory, const std::string& kind, const char* call) {
  const MachineLock lock = core_.Lock();
  const auto found = open_.find(memory);
  if (found == open_.end() || found->second.item.kind != kind) {
    violations_.push_back(std::string(call) + " on something that is no " + kind +
                          ", or is released already");
    return false;
  }
  open_.erase(found);
  return true;
}

std::shared_ptr<void> Resources::Find(void* memory, const std::string& kind) const {
  const MachineLock lock = core_.Lock();
  const auto found = open_.find(memory);
  const bool right = found != open_.end() && found->second.item.kind == kind;
  return right ? found->second.owner : nullptr;
}

void Resources::DropAllOf(std::uint32_t processId) {
  const MachineLock lock = core_.Lock();
  std::erase_if(
      open_, [processId](const auto& entry) { return entry.second.item.processId == processId; });
}

std::vector<OpenItem> Resources::Open() const {
  const MachineLock lock = core_.Lock();
  std::vector<OpenItem> items;
  for (const auto& [memory, entry] : open_) {
    items.push_back(entry.item);
  }
  return items;
}

}  // namespace sim
