// A plain, non-recursive mutex that clang's thread-safety analysis understands.
#ifndef TAVRIN_SRC_COMMON_MUTEX_H_
#define TAVRIN_SRC_COMMON_MUTEX_H_

#include <mutex>

#if defined(__clang__)
#define VPN_THREAD_ANNOTATION(x) __attribute__((x))
#else
#define VPN_THREAD_ANNOTATION(x)
#endif

#define VPN_GUARDED_BY(lock) VPN_THREAD_ANNOTATION(guarded_by(lock))
#define VPN_REQUIRES(lock) VPN_THREAD_ANNOTATION(requires_capability(lock))
#define VPN_EXCLUDES(lock) VPN_THREAD_ANNOTATION(locks_excluded(lock))

namespace vpn {

class VPN_THREAD_ANNOTATION(capability("mutex")) Mutex {
 public:
  void lock() VPN_THREAD_ANNOTATION(acquire_capability()) { mutex_.lock(); }
  void unlock() VPN_THREAD_ANNOTATION(release_capability()) { mutex_.unlock(); }

 private:
  std::mutex mutex_;
};

class VPN_THREAD_ANNOTATION(scoped_lockable) MutexLock {
 public:
  explicit MutexLock(Mutex& mutex) VPN_THREAD_ANNOTATION(acquire_capability(mutex))
      : mutex_(mutex) {
    mutex_.lock();
  }
  ~MutexLock() VPN_THREAD_ANNOTATION(release_capability()) { mutex_.unlock(); }
  MutexLock(const MutexLock&) = delete;
  MutexLock& operator=(const MutexLock&) = delete;

 private:
  Mutex& mutex_;
};

}  // namespace vpn

#endif  // TAVRIN_SRC_COMMON_MUTEX_H_
