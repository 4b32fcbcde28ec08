#include "src/runtime/runtime_dir.h"

#include "src/runtime/runtime_dir_internal.h"

#include <windows.h>

#include <array>

#include "src/common/environment.h"
#include "src/runtime/runtime_files.h"

namespace vpn {
namespace {

bool IsFile(const std::wstring& path) {
  const DWORD attributes = GetFileAttributesW(path.c_str());
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) == 0;
}

// Empty when the platform refuses, or when the path does not fit.
std::wstring FullPath(const std::wstring& path) {
  std::array<wchar_t, kPathCapacity> full{};
  const DWORD length = GetFullPathNameW(path.c_str(), kPathCapacity, full.data(), nullptr);
  return {full.data(), length < kPathCapacity ? length : 0};
}

}  // namespace

bool IsRuntimeDir(const std::wstring& directory) {
  return IsFile(directory + L'\\' + kXrayDirectory + L'\\' + kXrayProgram) ||
         IsFile(directory + L'\\' + kXrayProgram);
}

std::wstring ModuleDirectory() {
  const std::wstring path = ModulePath();
  const size_t separator = LastSeparator(path);
  return separator == std::wstring::npos ? L"." : path.substr(0, separator);
}

std::wstring FindRuntimeDir() {
  std::wstring fromEnvironment = ReadEnvironment(L"TAVRIN_RUNTIME", kPathCapacity).value_or(L"");
  if (!fromEnvironment.empty() && IsRuntimeDir(fromEnvironment)) {
    return fromEnvironment;
  }
  const std::wstring base = ModuleDirectory();
  const std::wstring besideExecutable = base + L"\\runtime";
  for (const std::wstring& candidate :
       {besideExecutable, base, base + L"\\..\\..\\..\\..\\tools\\phase-b\\local"}) {
    std::wstring full = FullPath(candidate);
    if (!full.empty() && IsRuntimeDir(full)) {
      return full;
    }
  }
  const std::wstring fallback = FullPath(besideExecutable);
  return fallback.empty() ? base : fallback;
}

}  // namespace vpn
