// What the platform hands out that is no handle: tables, address lists, security descriptors.
#ifndef TAVRIN_TESTS_SIM_RESOURCES_H_
#define TAVRIN_TESTS_SIM_RESOURCES_H_

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "tests/sim/core.h"
#include "tests/sim/handles.h"

namespace sim {

// The kind of everything that LocalFree frees.
inline constexpr char kDescriptor[] = "security descriptor";

class Resources {
 public:
  Resources(Core& core, std::vector<std::string>& violations)
      : core_(core), violations_(violations) {}

  // `memory` is what the caller sees; `owner` keeps it alive until the release.
  void Add(void* memory, std::string kind, std::string origin, std::uint32_t processId,
           std::shared_ptr<void> owner);
  // False, and a violation, when it is not there or of another kind.
  bool Release(void* memory, const std::string& kind, const char* call);
  // What keeps it alive, or null.
  std::shared_ptr<void> Find(void* memory, const std::string& kind) const;
  void DropAllOf(std::uint32_t processId);
  std::vector<OpenItem> Open() const;

 private:
  struct Entry {
    OpenItem item;
    std::shared_ptr<void> owner;
  };
  Core& core_;
  std::vector<std::string>& violations_;
  std::map<void*, Entry> open_;
};

}  // namespace sim

#endif  // TAVRIN_TESTS_SIM_RESOURCES_H_
