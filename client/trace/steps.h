// The steps of a connect in plain words. One step of the screen stands for one to three marks of
// the trace.
#ifndef TAVRIN_CLIENT_TRACE_STEPS_H_
#define TAVRIN_CLIENT_TRACE_STEPS_H_

#include <cstdint>
#include <string>
#include <vector>

#include "client/trace/connect_trace.h"

namespace vpn {

struct StepNames {
  const wchar_t* done;      // "routes installed"
  const wchar_t* underWay;  // "routes being installed"
};

// In the order of a connect.
inline constexpr size_t kStepCount = 10;
const StepNames& NamesOfStep(size_t step);

// A step without which a connect can be complete.
bool IsOptionalStep(size_t step);

struct Step {
  size_t index = 0;         // into the names
  std::uint64_t start = 0;  // milliseconds since the connect's start
  std::uint64_t time = 0;   // milliseconds
  bool isDone = false;      // its last mark is there
  bool hasFailed = false;   // its own work failed, and the connect went on
};

struct StepList {
  std::vector<Step> steps;
  // Marks of another version of the service, which no step knows. Their time belongs to the step
  // that follows.
  std::vector<std::string> unknown;
};

StepList StepsOf(const ConnectTrace& connect);

// The step that comes after what the trace holds: where a failed connect ended, or what is under
// way. Nothing behind the last one: `kStepCount`.
size_t NextStep(const StepList& steps);

// The step with the most time; the first one among equals. `steps` is not empty.
size_t LongestStep(const std::vector<Step>& steps);

// For each step the median of its time in complete connects; -1 where none has it.
std::vector<std::int64_t> MedianTimes(const std::vector<ConnectTrace>& connects);

// -1 for none.
std::int64_t MedianOf(std::vector<std::uint64_t> values);

}  // namespace vpn

#endif  // TAVRIN_CLIENT_TRACE_STEPS_H_
