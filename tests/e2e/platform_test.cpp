// The platform that these tests run on is one that the product supports.
#include <windows.h>

#include <gtest/gtest.h>

namespace e2e {
namespace {

// What GetVersionExW says depends on a program's manifest; this one does not.
RTL_OSVERSIONINFOW Version() {
  using RtlGetVersionFunction = LONG(WINAPI*)(RTL_OSVERSIONINFOW*);
  RTL_OSVERSIONINFOW version{};
  version.dwOSVersionInfoSize = sizeof version;
  const HMODULE ntdll = GetModuleHandleW(L"ntdll.dll");
  const auto get = reinterpret_cast<RtlGetVersionFunction>(
      reinterpret_cast<void*>(GetProcAddress(ntdll, "RtlGetVersion")));
  EXPECT_EQ(get(&version), 0);
  return version;
}

TEST(Platform, SaysThatItIsWindows10OrNewer) {
  EXPECT_GE(Version().dwMajorVersion, 10u);
}

}  // namespace
}  // namespace e2e
