// The one lock of a machine, and the signal that something on it has changed.
#ifndef TAVRIN_TESTS_SIM_CORE_H_
#define TAVRIN_TESTS_SIM_CORE_H_

#include <chrono>
#include <condition_variable>
#include <mutex>

#include "tests/sim/scheduler.h"

namespace sim {

// Recursive, because the callbacks that tests schedule run under it and use the machine. A thread
// blocks on `changed` only with one level held.
using MachineLock = std::unique_lock<std::recursive_mutex>;

// A condition variable. A thread with a scheduler over it gives its turn up where it would wait; a
// wait with a limit is over when no other thread can go on.
class Signal {
 public:
  void notify_all() {
    Scheduler::NoteChange();
    condition_.notify_all();
  }

  template <class Done>
  void wait(MachineLock& lock, Done done) {
    if (Scheduler::TakesPart()) {
      (void)TakeTurns(lock, done, false);
    } else {
      condition_.wait(lock, done);
    }
  }

  // What `done` gives in the end.
  template <class Done>
  bool wait_for(MachineLock& lock, std::chrono::seconds patience, Done done) {
    return Scheduler::TakesPart() ? TakeTurns(lock, done, true)
                                  : condition_.wait_for(lock, patience, done);
  }

 private:
  template <class Done>
  static bool TakeTurns(MachineLock& lock, Done done, bool hasLimit) {
    for (bool goesOn = true; !done();) {
      if (!goesOn) {
        return false;
      }
      lock.unlock();
      goesOn = Scheduler::Block(hasLimit);
      lock.lock();
    }
    return true;
  }

  std::condition_variable_any condition_;
};

struct Core {
  std::recursive_mutex mutex;
  Signal changed;
  std::condition_variable_any processEnded;  // for RunProcess, which nothing else need wake

  MachineLock Lock() { return MachineLock(mutex); }
};

}  // namespace sim

#endif  // TAVRIN_TESTS_SIM_CORE_H_
