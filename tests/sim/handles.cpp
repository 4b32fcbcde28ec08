#include "tests/sim/handles.h"

#include <cstdio>
#include <utility>

namespace sim {
namespace {

std::string Hex(Handles::Value value) {
  char text[32];
  std::snprintf(text, sizeof text, "0x%llx", static_cast<unsigned long long>(value));
  return text;
}

}  // namespace

Handles::Value Handles::Open(std::shared_ptr<Object> object, std::uint32_t processId,
                             std::string origin, std::uint32_t access) {
  const MachineLock lock = core_.Lock();
  ++object->handleCount;
  const Value value = next_;
  next_ += 4;
  open_.emplace(value, Entry{std::move(object), processId, access, std::move(origin)});
  return value;
}

std::shared_ptr<Object> Handles::Find(Value value, Family family, const char* call) {
  const MachineLock lock = core_.Lock();
  const auto found = open_.find(value);
  if (found == open_.end()) {
    NoteMisuse(value, call);
    return nullptr;
  }
  if (found->second.object->family() != family) {
    violations_.push_back(std::string(call) + " was given a " + found->second.object->Describe() +
                          " from " + found->second.origin);
    return nullptr;
  }
  return found->second.object;
}

void Handles::NoteMisuse(Value value, const char* call) {
  const auto closed = closed_.find(value);
  violations_.push_back(std::string(call) + " on " +
                        (closed == closed_.end() ? "a value that is no handle, " + Hex(value)
                                                 : "a closed handle: " + closed->second));
}

std::uint32_t Handles::AccessOf(Value value) const {
  const MachineLock lock = core_.Lock();
  const auto found = open_.find(value);
  return found == open_.end() ? 0 : found->second.access;
}

bool Handles::Close(Value value, Family family, const char* call) {
  const MachineLock lock = core_.Lock();
  if (!Find(value, family, call)) {
    return false;
  }
  Drop(open_.find(value));
  return true;
}

void Handles::Drop(std::map<Value, Entry>::iterator entry) {
  const std::shared_ptr<Object> object = std::move(entry->second.object);
  closed_.emplace(entry->first, object->Describe() + " from " + entry->second.origin);
  open_.erase(entry);
  if (--object->handleCount == 0) {
    object->OnLastHandleClosed();
  }
  core_.changed.notify_all();
}

void Handles::CloseAllOf(std::uint32_t processId) {
  const MachineLock lock = core_.Lock();
  for (auto entry = open_.begin(); entry != open_.end();) {
    const auto next = std::next(entry);
    if (entry->second.processId == processId) {
      Drop(entry);
    }
    entry = next;
  }
}

std::string Handles::Describe(Value value) const {
  const MachineLock lock = core_.Lock();
  const auto found = open_.find(value);
  if (found != open_.end()) {
    return found->second.object->Describe();
  }
  return value == 0 ? "null" : "invalid " + Hex(value);
}

std::vector<OpenItem> Handles::Open() const {
  const MachineLock lock = core_.Lock();
  std::vector<OpenItem> items;
  for (const auto& [value, entry] : open_) {
    items.push_back({entry.object->Describe(), entry.origin, entry.processId});
  }
  return items;
}

}  // namespace sim
