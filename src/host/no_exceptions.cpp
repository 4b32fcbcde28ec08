// What the C++ library calls where it would throw, for the service on Windows. Nobody catches
// anything there: an exception could do no more than end the process with exit code 3, as `abort`
// does. So each of these calls it at once, and the library's throwing code, the unwinder and what
// prints an exception's type are not linked: 166 KiB.
//
// The library's own definitions stand in its archive, of which the linker takes what is missing.
// Once the library calls one that is not here, its own comes along, and the linker complains that
// these are defined twice.
#include <cstdlib>
#include <exception>
#include <new>
#include <string>

void* operator new(std::size_t size) {
  void* const memory = std::malloc(size);
  if (memory == nullptr) {
    std::abort();
  }
  return memory;
}

void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
  return std::malloc(size);
}

void operator delete(void* memory) noexcept {
  std::free(memory);
}

void operator delete(void* memory, std::size_t /*size*/) noexcept {
  std::free(memory);
}

namespace std {

void terminate() noexcept {
  abort();
}

void __throw_bad_alloc() {
  abort();
}

void __throw_bad_array_new_length() {
  abort();
}

void __throw_length_error(const char* /*what*/) {
  abort();
}

void __throw_logic_error(const char* /*what*/) {
  abort();
}

void __throw_out_of_range_fmt(const char* /*format*/, ...) {
  abort();
}

void __throw_system_error(int /*code*/) {
  abort();
}

}  // namespace std
