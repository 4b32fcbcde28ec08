// Every function of the simulated platform: how it reports a failure, and with which code it fails
// when a test names none.
#ifndef TAVRIN_TESTS_SIM_API_TABLE_H_
#define TAVRIN_TESTS_SIM_API_TABLE_H_

#include <cstdint>
#include <string_view>
#include <vector>

namespace sim {

enum class FailureStyle {
  kNone,       // has no failure result: faults can't be injected
  kLastError,  // FALSE, 0, null, INVALID_HANDLE_VALUE or the like, and GetLastError
  kResult,     // the result is the code
  kErrno,      // a C runtime function; the code is an errno
};

struct ApiEntry {
  std::string_view name;
  FailureStyle style;
  std::uint32_t defaultCode;
  // Counts as one of the N fallible calls of a run. Functions that fail only for wrong arguments
  // can be failed by name, but are not counted.
  bool counted;
};

// Ends the program for an unknown name: a function that is missing here is a mistake in the
// machine.
const ApiEntry& FindApi(std::string_view name);
const std::vector<ApiEntry>& AllApis();

}  // namespace sim

#endif  // TAVRIN_TESTS_SIM_API_TABLE_H_
