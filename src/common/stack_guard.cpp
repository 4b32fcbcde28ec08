// The stack protector's guard value and its end, in place of the toolchain's own. That one asks a
// provider of cryptography for the value, for which Windows loads a dozen libraries before the
// program begins.
#ifdef __MINGW32__

#include <windows.h>
#include <ntsecapi.h>

#include <cstdint>

extern "C" {

// The compiler puts it between the arrays of a function and its return address.
std::uintptr_t __stack_chk_guard = 0;

// The guard was overwritten, so nothing on the stack can be trusted: ends the process at once.
[[noreturn]] void __stack_chk_fail() {
  __builtin_trap();
}

// Before every other constructor: what is on the stack then was entered with the value 0.
__attribute__((constructor(101), no_stack_protector)) static void SetStackGuard() {
  std::uintptr_t value = 0;
  if (RtlGenRandom(&value, sizeof(value)) == FALSE || value == 0) {
    value =
        static_cast<std::uintptr_t>(GetTickCount64()) ^ reinterpret_cast<std::uintptr_t>(&value);
  }
  __stack_chk_guard = value;
}

}  // extern "C"

#endif  // __MINGW32__
