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
  bool isDone = false;      // its last mark is there, or a later step
  bool hasFailed = false;   // its own work failed, and the connect went on
};

struct StepList {
  std::vector<Step> steps;
  // Marks of another version of the service, which no step knows. Their time belongs to the step
  // that follows.
  std::vector<std::string> unknown;
};

StepList StepsOf(const ConnectTrace& connect);

// "not known to this version: LABEL, …"; empty when there are none.
std::wstring UnknownMarksText(const StepList& steps);

// The step that comes after what the trace holds: where a failed connect ended, or what is under
// way. Nothing behind the last one: `kStepCount`.
size_t NextStep(const StepList& steps);

// The step with the most time; the first one among equals; 0 where there is none.
size_t LongestStep(const std::vector<Step>& steps);

}  // namespace vpn

#endif  // TAVRIN_CLIENT_TRACE_STEPS_H_
