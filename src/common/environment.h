// What the process learns from its environment: variables and its own path.
#ifndef TAVRIN_SRC_COMMON_ENVIRONMENT_H_
#define TAVRIN_SRC_COMMON_ENVIRONMENT_H_

#include <windows.h>

#include <optional>
#include <string>
#include <string_view>

namespace vpn {

// Room for a path, its NUL included.
inline constexpr DWORD kPathCapacity = 260;  // MAX_PATH of the platform

// Nothing when the variable is unset or empty, which the platform does not tell apart. A value that
// does not fit in `capacity` units, its NUL included, reads as the empty text.
std::optional<std::wstring> ReadEnvironment(const wchar_t* name, DWORD capacity);

// Full path of the running executable, empty when the platform does not tell.
std::wstring ModulePath();

// Position of the last path separator of either kind, or npos.
size_t LastSeparator(std::wstring_view path);

}  // namespace vpn

#endif  // TAVRIN_SRC_COMMON_ENVIRONMENT_H_
