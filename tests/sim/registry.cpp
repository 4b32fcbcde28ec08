#include "tests/sim/registry.h"

#include <cstring>
#include <utility>

#include "tests/sim/text.h"

#include <win/registry.h>

namespace sim {

void Registry::SetDword(const std::wstring& key, const std::wstring& name, std::uint32_t value) {
  RegistryValue entry{REG_DWORD, std::vector<std::uint8_t>(sizeof value)};
  std::memcpy(entry.data.data(), &value, sizeof value);
  Set(key, name, std::move(entry));
}

void Registry::SetText(const std::wstring& key, const std::wstring& name,
                       const std::wstring& text) {
  const std::wstring units = Units(text);
  RegistryValue entry{REG_SZ, std::vector<std::uint8_t>((units.size() + 1) * sizeof(wchar_t))};
  std::memcpy(entry.data.data(), units.c_str(), entry.data.size());
  Set(key, name, std::move(entry));
}

void Registry::Set(const std::wstring& key, const std::wstring& name, RegistryValue value) {
  const MachineLock lock = core_.Lock();
  keys_[Fold(key)][Fold(name)] = std::move(value);
}

void Registry::AddKey(const std::wstring& key) {
  const MachineLock lock = core_.Lock();
  keys_[Fold(key)];
}

void Registry::RemoveKey(const std::wstring& key) {
  const MachineLock lock = core_.Lock();
  keys_.erase(Fold(key));
}

std::map<std::wstring, Registry::Values> Registry::All() const {
  const MachineLock lock = core_.Lock();
  return keys_;
}

bool Registry::HasKey(const std::wstring& key) const {
  const MachineLock lock = core_.Lock();
  return keys_.count(Fold(key)) != 0;
}

std::optional<RegistryValue> Registry::Find(const std::wstring& key,
                                            const std::wstring& name) const {
  const MachineLock lock = core_.Lock();
  const auto values = keys_.find(Fold(key));
  if (values == keys_.end()) {
    return std::nullopt;
  }
  const auto value = values->second.find(Fold(name));
  return value == values->second.end() ? std::nullopt : std::optional(value->second);
}

void Environment::Set(const std::wstring& name, const std::wstring& value) {
  const MachineLock lock = core_.Lock();
  variables_[Fold(name)] = Units(value);
}

void Environment::Unset(const std::wstring& name) {
  const MachineLock lock = core_.Lock();
  variables_.erase(Fold(name));
}

std::optional<std::wstring> Environment::Find(const std::wstring& name) const {
  const MachineLock lock = core_.Lock();
  const auto found = variables_.find(Fold(name));
  return found == variables_.end() ? std::nullopt : std::optional(found->second);
}

}  // namespace sim
