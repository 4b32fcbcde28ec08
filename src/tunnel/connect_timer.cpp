#include "src/tunnel/connect_timer.h"

#include <windows.h>

#include <algorithm>
#include <cstdio>
#include <cwchar>

#include "src/common/environment.h"
#include "src/common/number_text.h"
#include "src/common/unique_handle.h"

namespace vpn {
namespace {

constexpr size_t kLabelWidth = 28;
constexpr size_t kNumberWidth = 5;

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

std::wstring TraceLine(std::wstring label, std::uint64_t since, std::uint64_t total) {
  label.resize(std::max(label.size(), kLabelWidth), L' ');
  return label + L" +" + DecimalText(since, kNumberWidth, L' ') + L"ms  total " +
         DecimalText(total, kNumberWidth, L' ') + L"ms\n";
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
    (void)std::fputws(TraceLine(label, now - lastTicks_, now - startTicks_).c_str(), file.get());
  }
  lastTicks_ = now;
}

}  // namespace vpn
