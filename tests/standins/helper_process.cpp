#include "tests/standins/helper_process.h"

#include <windows.h>

#include <cstdio>
#include <thread>

#include "tests/standins/machine_state.h"

namespace standins {

void SleepFor(std::int64_t milliseconds) {
  Sleep(milliseconds == kNever ? INFINITE : static_cast<DWORD>(milliseconds));
}

void DieAfter(std::int64_t milliseconds) {
  if (milliseconds == kNever) return;
  std::thread([milliseconds] {
    SleepFor(milliseconds);
    End(1);
  }).detach();
}

std::wstring OwnDirectory() {
  wchar_t buffer[MAX_PATH] = {};
  const std::wstring path(buffer, GetModuleFileNameW(nullptr, buffer, MAX_PATH));
  return path.substr(0, path.find_last_of(L"\\/"));
}

void End(std::int64_t exitCode) {
  std::fflush(nullptr);
  TerminateProcess(GetCurrentProcess(), static_cast<UINT>(exitCode));
  Sleep(INFINITE);
  std::abort();
}

}  // namespace standins
