// Owner of one platform resource: closes it exactly once, at destruction, reset or assignment.
#ifndef TAVRIN_SRC_COMMON_UNIQUE_HANDLE_H_
#define TAVRIN_SRC_COMMON_UNIQUE_HANDLE_H_

#include <windows.h>

#include <cstdio>
#include <utility>

namespace vpn {

// Traits give `Type`, `static Type Empty()`, `static bool IsValid(Type)` and `static void
// Close(Type)`. Moving leaves the source empty. Not thread-safe.
template <class Traits>
class UniqueHandle {
 public:
  using Type = typename Traits::Type;

  UniqueHandle() = default;
  explicit UniqueHandle(Type value) : value_(value) {}
  UniqueHandle(UniqueHandle&& other) noexcept : value_(other.release()) {}
  UniqueHandle& operator=(UniqueHandle&& other) noexcept {
    if (this != &other) {
      reset(other.release());
    }
    return *this;
  }
  UniqueHandle(const UniqueHandle&) = delete;
  UniqueHandle& operator=(const UniqueHandle&) = delete;
  ~UniqueHandle() { reset(); }

  Type get() const { return value_; }
  explicit operator bool() const { return Traits::IsValid(value_); }

  Type release() { return std::exchange(value_, Traits::Empty()); }

  void reset(Type value = Traits::Empty()) {
    const Type old = std::exchange(value_, value);
    if (Traits::IsValid(old)) {
      Traits::Close(old);
    }
  }

  // The address for a call that hands out a resource; what was held is closed first.
  Type* put() {
    reset();
    return &value_;
  }

 private:
  Type value_ = Traits::Empty();
};

struct KernelHandleTraits {
  using Type = HANDLE;
  static Type Empty() { return nullptr; }
  // Some calls fail with null and some with INVALID_HANDLE_VALUE; neither is ever closed.
  static bool IsValid(Type value) { return value != nullptr && value != INVALID_HANDLE_VALUE; }
  static void Close(Type value) { (void)CloseHandle(value); }  // nothing to do about a failure
};
using KernelHandle = UniqueHandle<KernelHandleTraits>;

struct FileTraits {
  using Type = std::FILE*;
  static Type Empty() { return nullptr; }
  static bool IsValid(Type value) { return value != nullptr; }
  static void Close(Type value) { (void)std::fclose(value); }  // only the opening is ever judged
};
using UniqueFile = UniqueHandle<FileTraits>;

}  // namespace vpn

#endif  // TAVRIN_SRC_COMMON_UNIQUE_HANDLE_H_
