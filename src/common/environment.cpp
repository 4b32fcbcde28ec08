#include "src/common/environment.h"

#include <array>

namespace vpn {

std::optional<std::wstring> ReadEnvironment(const wchar_t* name, DWORD capacity) {
  std::wstring value(capacity, L'\0');
  const DWORD length = GetEnvironmentVariableW(name, value.data(), capacity);
  if (length == 0) {
    return std::nullopt;
  }
  // For a value that does not fit the result is the size wanted, and the buffer holds nothing
  // that can be relied on.
  value.resize(length < capacity ? length : 0);
  return value;
}

std::wstring ModulePath() {
  std::array<wchar_t, kPathCapacity + 1> path{};
  if (GetModuleFileNameW(nullptr, path.data(), kPathCapacity) == 0) {
    return {};
  }
  return path.data();
}

size_t LastSeparator(std::wstring_view path) {
  return path.find_last_of(L"\\/");
}

}  // namespace vpn
