// The gate that every platform function passes: it notes the call, applies faults, hooks and kills,
// and holds the machine's lock for the length of the call.
#ifndef TAVRIN_TESTS_SIM_CALL_H_
#define TAVRIN_TESTS_SIM_CALL_H_

#include <cstdint>
#include <functional>
#include <initializer_list>
#include <memory>
#include <string>
#include <thread>

#include "tests/sim/machine.h"

#include <win/base.h>

namespace sim {

// One argument as the call log shows it.
class Arg {
 public:
  Arg(const wchar_t* text);                                   // NOLINT: implicit on purpose
  Arg(const char* text);                                      // NOLINT
  Arg(std::string readable) : text_(std::move(readable)) {}   // NOLINT
  Arg(int value) : text_(std::to_string(value)) {}            // NOLINT
  Arg(std::uint32_t value) : text_(std::to_string(value)) {}  // NOLINT
  Arg(HANDLE handle)
      : handle_(reinterpret_cast<std::uintptr_t>(handle)), isHandle_(true) {}  // NOLINT
  static Arg OfHandle(std::uintptr_t value);
  static Arg OfHex(std::uint32_t value);

  std::string Text(const Handles& handles) const;

 private:
  std::string text_;
  std::uintptr_t handle_ = 0;
  bool isHandle_ = false;
};

class Call {
 public:
  explicit Call(const char* name, std::initializer_list<Arg> arguments = {});
  Call(const Call&) = delete;
  Call& operator=(const Call&) = delete;

  const char* name() const { return name_; }
  Machine& machine() const { return *machine_; }
  Machine* operator->() const { return machine_.get(); }
  const std::shared_ptr<Process>& process() const { return process_; }

  // An injected fault: the function fails with `code()` and does nothing.
  bool failed() const { return failed_; }
  std::uint32_t code() const { return code_; }

  // Sets the calling thread's last error, and gives `result`: for `return call.Fail(FALSE, 5)`.
  template <class Result>
  Result Fail(Result result, std::uint32_t code) const {
    SetThreadError(code);
    return result;
  }
  // With the code of the injected fault.
  template <class Result>
  Result Fail(Result result) const {
    return Fail(result, code_);
  }

  // Opens a handle for this process whose origin is this call.
  std::uintptr_t Open(std::shared_ptr<Object> object, std::uint32_t access = 0) const;
  HANDLE OpenHandle(std::shared_ptr<Object> object, std::uint32_t access = 0) const {
    return reinterpret_cast<HANDLE>(Open(std::move(object), access));
  }
  template <class T>
  std::shared_ptr<T> Kernel(HANDLE handle) const {
    return machine_->handles.FindAs<T>(reinterpret_cast<std::uintptr_t>(handle), Family::kKernel,
                                       name_);
  }
  void Track(void* memory, const std::string& kind, std::shared_ptr<void> owner) const;

  // Really blocks this thread until `done` holds. A process that is killed meanwhile never returns.
  void Block(const std::function<bool()>& done);
  // The calling process ends, and with it this thread.
  [[noreturn]] void EndProcess(std::uint32_t exitCode);
  // Gives the lock back early, for a function that goes on without the machine.
  void Release() { lock_.unlock(); }
  // The end of a released call that has started a thread: waits for it, or dies with the process.
  void Join(std::thread& thread);
  MachineLock& lock() { return lock_; }

  static void SetThreadError(std::uint32_t code);
  static std::uint32_t ThreadError();

 private:
  void Judge(const std::string& text);
  [[noreturn]] void Park();

  const char* const name_;
  std::shared_ptr<Machine> machine_;
  MachineLock lock_;
  std::shared_ptr<Process> process_;
  bool failed_ = false;
  std::uint32_t code_ = 0;
};

}  // namespace sim

#endif  // TAVRIN_TESTS_SIM_CALL_H_
