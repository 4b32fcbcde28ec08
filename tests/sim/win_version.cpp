// Version resources of executables, and the version of Windows.
#include "tests/sim/call.h"
#include "tests/sim/text.h"

#include <windows.h>

#include <cstdio>
#include <cstring>

using sim::Call;

namespace {

constexpr DWORD kTypeNotFound = 1813;

// Empty for a file without a version, and for no file.
std::string VersionOf(const Call& call, LPCWSTR path) {
  const auto node = call->files.Find(path);
  return node ? node->version : std::string();
}

VS_FIXEDFILEINFO InfoOf(const std::string& version) {
  unsigned major = 0;
  unsigned minor = 0;
  unsigned patch = 0;
  (void)std::sscanf(version.c_str(), "%u.%u.%u", &major, &minor, &patch);
  VS_FIXEDFILEINFO info = {};
  info.dwSignature = 0xFEEF04BD;
  info.dwFileVersionMS = major << 16 | minor;
  info.dwFileVersionLS = patch << 16;
  return info;
}

}  // namespace

DWORD GetFileVersionInfoSizeW(LPCWSTR path, DWORD* unused) {
  Call call("GetFileVersionInfoSizeW", {path});
  if (call.failed()) {
    return call.Fail(0u);
  }
  *unused = 0;
  return VersionOf(call, path).empty() ? call.Fail(0u, kTypeNotFound)
                                       : static_cast<DWORD>(sizeof(VS_FIXEDFILEINFO));
}

BOOL GetFileVersionInfoW(LPCWSTR path, DWORD /*unused*/, DWORD size, LPVOID data) {
  Call call("GetFileVersionInfoW", {path, size});
  if (call.failed()) {
    return call.Fail(FALSE);
  }
  const std::string version = VersionOf(call, path);
  if (version.empty() || size < sizeof(VS_FIXEDFILEINFO)) {
    return call.Fail(FALSE, kTypeNotFound);
  }
  const VS_FIXEDFILEINFO info = InfoOf(version);
  std::memcpy(data, &info, sizeof info);
  return TRUE;
}

BOOL VerQueryValueW(LPCVOID data, LPCWSTR name, LPVOID* value, UINT* size) {
  Call call("VerQueryValueW", {name});
  if (call.failed()) {
    return call.Fail(FALSE);
  }
  *value = const_cast<void*>(data);
  *size = sizeof(VS_FIXEDFILEINFO);
  return TRUE;
}

BOOL GetVersionExW(OSVERSIONINFOW* version) {
  Call call("GetVersionExW");
  if (call.failed()) {
    return call.Fail(FALSE);
  }
  version->dwMajorVersion = call->windowsBuild < 9000 ? 6 : 10;
  version->dwMinorVersion = call->windowsBuild < 9000 ? 1 : 0;
  version->dwBuildNumber = call->windowsBuild;
  return TRUE;
}
