// Owner of one platform resource: closes it exactly once, at destruction, reset or assignment.
#ifndef TAVRIN_SRC_COMMON_UNIQUE_HANDLE_H_
#define TAVRIN_SRC_COMMON_UNIQUE_HANDLE_H_

#include <windows.h>

#include <cstdio>
#include <utility>

namespace vpn {

// Traits give `Type`, `static Type empty()`, `static bool isValid(Type)` and `static void
// close(Type)`. Moving leaves the source empty. Not thread-safe.
template <class Traits>
class UniqueHandle {
 public:
  using Type = typename Traits::Type;

  UniqueHandle() = default;
  explicit UniqueHandle(Type value) : value_(value) {}
  UniqueHandle(UniqueHandle&& other) noexcept : value_(other.release()) {}
  UniqueHandle& operator=(UniqueHandle&& other) noexcept {
    reset(other.release());  // released first, so that moving onto itself keeps the resource
    return *this;
  }
  UniqueHandle(const UniqueHandle&) = delete;
  UniqueHandle& operator=(const UniqueHandle&) = delete;
  ~UniqueHandle() { reset(); }

  Type get() const { return value_; }
  explicit operator bool() const { return Traits::isValid(value_); }

  Type release() { return std::exchange(value_, Traits::empty()); }

  void reset(Type value = Traits::empty()) {
    const Type old = std::exchange(value_, value);
    if (Traits::isValid(old)) {
      Traits::close(old);
    }
  }

  // The address for a call that hands out a resource; what was held is closed first.
  Type* put() {
    reset();
    return &value_;
  }

 private:
  Type value_ = Traits::empty();
};

// Traits but for `close`, where null is the one value that is no resource.
template <class Handle>
struct NullIsEmpty {
  using Type = Handle;
  static Type empty() { return nullptr; }
  static bool isValid(Type value) { return value != nullptr; }
};

struct KernelHandleTraits {
  using Type = HANDLE;
  static Type empty() { return nullptr; }
  // Some calls fail with null and some with INVALID_HANDLE_VALUE; neither is ever closed.
  static bool isValid(Type value) { return value != nullptr && value != INVALID_HANDLE_VALUE; }
  static void close(Type value) { (void)CloseHandle(value); }  // nothing to do about a failure
};
using KernelHandle = UniqueHandle<KernelHandleTraits>;

struct FileTraits : NullIsEmpty<std::FILE*> {
  static void close(std::FILE* value) { (void)std::fclose(value); }  // no failure is looked at
};
using UniqueFile = UniqueHandle<FileTraits>;

}  // namespace vpn

#endif  // TAVRIN_SRC_COMMON_UNIQUE_HANDLE_H_
