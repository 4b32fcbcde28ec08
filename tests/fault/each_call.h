// What the runs have in common in which something happens at each fallible call in turn.
#ifndef TAVRIN_TESTS_FAULT_EACH_CALL_H_
#define TAVRIN_TESTS_FAULT_EACH_CALL_H_

#include <cstddef>
#include <functional>
#include <vector>

#include "tests/fault/network_lines.h"
#include "tests/sim/machine.h"

namespace fault {

enum class Mode {
  kOnce,     // this call fails, and none behind it
  kOnwards,  // this call and every later one fail
  kKilled,   // the process dies in front of this call
};

// For the call with this index, from 0 on, of those that are still to come.
void Arrange(sim::Machine& machine, Mode mode, size_t index);

// The fallible calls that the machine has seen, behind its first `from` calls of any kind.
std::vector<sim::CallRecord> FallibleCalls(const sim::Machine& machine, size_t from = 0);

// `name text`
std::string Describe(const sim::CallRecord& call);
Lines Describe(const std::vector<sim::CallRecord>& calls);

// Calls `run` with each index of `calls`, under a trace that tells the call, and prints how many
// there were.
void EachCall(const char* name, const Lines& calls, const std::function<void(size_t)>& run);

}  // namespace fault

#endif  // TAVRIN_TESTS_FAULT_EACH_CALL_H_
