// What the product asked of the platform, in order.
#ifndef TAVRIN_TESTS_SIM_CALL_LOG_H_
#define TAVRIN_TESTS_SIM_CALL_LOG_H_

#include <cstdint>
#include <set>
#include <string>
#include <vector>

#include "tests/sim/core.h"

namespace sim {

struct CallRecord {
  std::string name;
  std::string text;        // the main arguments: `"C:\run\xray.exe", null`
  std::uint64_t time = 0;  // of the virtual clock
  std::uint32_t processId = 0;
  bool failed = false;  // by an injected fault
  int thread = 0;       // its number with a scheduler; 0 without
};

class CallLog {
 public:
  explicit CallLog(Core& core) : core_(core) {}

  std::vector<CallRecord> All() const {
    const MachineLock lock = core_.Lock();
    return records_;
  }
  std::vector<std::string> Names() const;
  // The argument texts of every call of one function.
  std::vector<std::string> TextsOf(const std::string& name) const;
  // `name text` of the calls of these functions, in order.
  std::vector<std::string> Sequence(const std::set<std::string>& names) const;
  // The argument text of the latest call of a function by a process; empty when it made none.
  std::string LatestText(const std::string& name, std::uint32_t processId) const;
  size_t Count(const std::string& name) const { return TextsOf(name).size(); }
  void Clear();

  void Add(CallRecord record);

 private:
  Core& core_;
  std::vector<CallRecord> records_;
};

}  // namespace sim

#endif  // TAVRIN_TESTS_SIM_CALL_LOG_H_
