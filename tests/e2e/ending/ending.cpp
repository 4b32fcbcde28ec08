// ending HOW: a program that is compiled and linked as the service is, and goes wrong in a chosen
// way.
#include <windows.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

extern "C" std::uintptr_t __stack_chk_guard;

namespace {

// Without a debugger, which Wine would start.
LONG WINAPI EndWithItsCode(EXCEPTION_POINTERS* failure) {
  TerminateProcess(GetCurrentProcess(), failure->ExceptionRecord->ExceptionCode);
  return EXCEPTION_CONTINUE_SEARCH;
}

__attribute__((noinline)) int WriteBehindAnArray(std::size_t count) {
  char bytes[16];
  volatile char* const first = bytes;
  for (std::size_t i = 0; i < count; ++i) {
    first[i] = 'x';
  }
  return first[0];
}

// A part of the value that fits into an exit code.
int GuardOfThisProcess() {
  return static_cast<int>((__stack_chk_guard >> 8) & 0x7FFFFFFF);
}

}  // namespace

int wmain(int argc, wchar_t** argv) {
  SetUnhandledExceptionFilter(EndWithItsCode);
  const std::wstring how = argc > 1 ? argv[1] : L"";
  volatile std::size_t tooMuch = std::size_t{1} << 62;
  std::string text = "short";
  if (how == L"stack") {
    return WriteBehindAnArray(64);
  }
  if (how == L"memory") {
    return *new char[tooMuch];
  }
  if (how == L"length") {
    text.reserve(text.max_size() + tooMuch);
  } else if (how == L"range") {
    text.erase(tooMuch);
  } else if (how == L"vector") {
    std::vector<std::uint64_t>(tooMuch).clear();
  }
  return how == L"guard" ? GuardOfThisProcess() : 0;
}
