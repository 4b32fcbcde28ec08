// The registry and the environment: names and values.
#ifndef TAVRIN_TESTS_SIM_REGISTRY_H_
#define TAVRIN_TESTS_SIM_REGISTRY_H_

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "tests/sim/core.h"
#include "tests/sim/handles.h"

namespace sim {

struct RegistryValue {
  std::uint32_t type = 0;
  std::vector<std::uint8_t> data;  // text in units of sizeof(wchar_t)
  bool operator==(const RegistryValue&) const = default;
};

// Keys below HKEY_CURRENT_USER, by path and without regard to case. Those of other users begin with
// `HKEY_USERS\\` and the user's SID.
class Registry {
 public:
  explicit Registry(Core& core) : core_(core) {}

  void SetDword(const std::wstring& key, const std::wstring& name, std::uint32_t value);
  void SetText(const std::wstring& key, const std::wstring& name, const std::wstring& text);
  // As it stands: any type, any bytes, with a terminator or without.
  void Set(const std::wstring& key, const std::wstring& name, RegistryValue value);
  void AddKey(const std::wstring& key);
  void RemoveKey(const std::wstring& key);

  using Values = std::map<std::wstring, RegistryValue>;
  std::map<std::wstring, Values> All() const;
  bool HasKey(const std::wstring& key) const;
  std::optional<RegistryValue> Find(const std::wstring& key, const std::wstring& name) const;

 private:
  Core& core_;
  std::map<std::wstring, Values> keys_;
};

struct RegistryKey : Object {
  Family family() const override { return Family::kRegistry; }
  std::string Describe() const override { return "registry key"; }
  std::wstring path;
};

class Environment {
 public:
  explicit Environment(Core& core) : core_(core) {}
  void Set(const std::wstring& name, const std::wstring& value);
  void Unset(const std::wstring& name);
  std::optional<std::wstring> Find(const std::wstring& name) const;

 private:
  Core& core_;
  std::map<std::wstring, std::wstring> variables_;
};

}  // namespace sim

#endif  // TAVRIN_TESTS_SIM_REGISTRY_H_
