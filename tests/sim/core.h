// The one lock of a machine, and the signal that something on it has changed.
#ifndef TAVRIN_TESTS_SIM_CORE_H_
#define TAVRIN_TESTS_SIM_CORE_H_

#include <condition_variable>
#include <mutex>

namespace sim {

// Recursive, because the callbacks that tests schedule run under it and use the machine. A thread
// blocks on `changed` only with one level held.
using MachineLock = std::unique_lock<std::recursive_mutex>;

struct Core {
  std::recursive_mutex mutex;
  std::condition_variable_any changed;
  std::condition_variable_any processEnded;  // for RunProcess, which nothing else need wake

  MachineLock Lock() { return MachineLock(mutex); }
};

}  // namespace sim

#endif  // TAVRIN_TESTS_SIM_CORE_H_
