// Waiting for something that another process does: by polling, with a deadline far beyond what a
// busy machine needs, so that only a real fault runs into it.
#ifndef TAVRIN_TESTS_E2E_HARNESS_WAITING_H_
#define TAVRIN_TESTS_E2E_HARNESS_WAITING_H_

#include <windows.h>

#include <stdexcept>
#include <string>

namespace e2e {

inline constexpr DWORD kPatience = 60000;  // milliseconds

// Throws std::runtime_error naming what did not happen.
template <typename Condition>
void WaitUntil(const std::string& what, Condition condition) {
  const ULONGLONG start = GetTickCount64();
  while (!condition()) {
    if (GetTickCount64() - start > kPatience) throw std::runtime_error("never happened: " + what);
    Sleep(2);
  }
}

}  // namespace e2e

#endif  // TAVRIN_TESTS_E2E_HARNESS_WAITING_H_
