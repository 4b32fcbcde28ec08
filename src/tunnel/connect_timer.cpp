#include "src/tunnel/connect_timer.h"

#include <windows.h>

#include <cstdio>
#include <cwchar>

#include "src/common/environment.h"
#include "src/common/unique_handle.h"

namespace vpn {
namespace {

std::wstring TracePath() {
  if (const auto fromEnvironment = ReadEnvironment(L"TAVRIN_TIMING", kPathCapacity)) {
    return *fromEnvironment;
  }
  const std::wstring module = ModulePath();
  if (module.empty()) {
    return {};
  }
  const size_t separator = LastSeparator(module);
  const std::wstring directory =
      separator == std::wstring::npos ? module : module.substr(0, separator + 1);
  return directory + L"connect-timing.log";
}

}  // namespace

ConnectTimer::ConnectTimer()
    : path_(TracePath()), startTicks_(GetTickCount64()), lastTicks_(startTicks_) {}

void ConnectTimer::mark(const wchar_t* label) {
  if (path_.empty()) {
    return;
  }
  const std::uint64_t now = GetTickCount64();
  std::FILE* opened = nullptr;
  if (_wfopen_s(&opened, path_.c_str(), L"a, ccs=UTF-8") == 0) {
    const UniqueFile file(opened);
    (void)std::fwprintf(file.get(), L"%-28ls +%5llums  total %5llums\n", label,
                        static_cast<unsigned long long>(now - lastTicks_),
                        static_cast<unsigned long long>(now - startTicks_));
  }
  lastTicks_ = now;
}

}  // namespace vpn
