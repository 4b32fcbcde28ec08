// The product's own locks are plain mutexes and no calls of the platform: the linker leads them
// here, so that a thread that would block in one gives its turn up instead.
#include <pthread.h>

#include <cerrno>

#include "tests/sim/scheduler.h"

extern "C" {

int __real_pthread_mutex_lock(pthread_mutex_t* mutex);
int __real_pthread_mutex_unlock(pthread_mutex_t* mutex);

int __wrap_pthread_mutex_lock(pthread_mutex_t* mutex) {
  if (sim::Scheduler::TakesPart()) {
    while (pthread_mutex_trylock(mutex) == EBUSY) {
      sim::Scheduler::BlockOn(mutex);
    }
    // ThreadSanitizer watches the order of locks that are taken, not of those that are tried.
    (void)__real_pthread_mutex_unlock(mutex);
  }
  return __real_pthread_mutex_lock(mutex);
}

int __wrap_pthread_mutex_unlock(pthread_mutex_t* mutex) {
  const int result = __real_pthread_mutex_unlock(mutex);
  sim::Scheduler::Free(mutex);
  return result;
}

}  // extern "C"
