// Real threads: which simulated process a thread belongs to, and which threads a test leaves
// behind.
#ifndef TAVRIN_TESTS_SIM_THREADS_H_
#define TAVRIN_TESTS_SIM_THREADS_H_

#include <cstdint>
#include <functional>
#include <set>
#include <string>

#include "tests/sim/core.h"
#include "tests/sim/handles.h"

namespace sim {

// A thread that CreateThread made.
struct ThreadObject : Object {
  std::string Describe() const override { return "thread"; }
  bool IsWaitable() const override { return true; }
  bool IsSignalled() const override { return done; }
  bool done = false;
};

// Blocks the calling thread for the rest of the program, as a thread of a killed process: nothing
// on its stack is ever destroyed.
[[noreturn]] void ParkForEver();

// The threads of this program that are neither parked nor in `known`.
std::set<int> OtherThreads(const std::set<int>& known);
std::set<int> AllThreads();

}  // namespace sim

#endif  // TAVRIN_TESTS_SIM_THREADS_H_
