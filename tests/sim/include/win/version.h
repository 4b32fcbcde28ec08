// Version resources of executables.
#ifndef TAVRIN_TESTS_SIM_INCLUDE_WIN_VERSION_H_
#define TAVRIN_TESTS_SIM_INCLUDE_WIN_VERSION_H_

#include <win/base.h>

struct VS_FIXEDFILEINFO {
  DWORD dwSignature;
  DWORD dwStrucVersion;
  DWORD dwFileVersionMS;
  DWORD dwFileVersionLS;
  DWORD dwProductVersionMS;
  DWORD dwProductVersionLS;
  DWORD dwFileFlagsMask;
  DWORD dwFileFlags;
  DWORD dwFileOS;
  DWORD dwFileType;
  DWORD dwFileSubtype;
  DWORD dwFileDateMS;
  DWORD dwFileDateLS;
};
static_assert(sizeof(VS_FIXEDFILEINFO) == 52);

DWORD GetFileVersionInfoSizeW(LPCWSTR path, DWORD* unused);
BOOL GetFileVersionInfoW(LPCWSTR path, DWORD unused, DWORD size, LPVOID data);
BOOL VerQueryValueW(LPCVOID data, LPCWSTR name, LPVOID* value, UINT* size);

#endif  // TAVRIN_TESTS_SIM_INCLUDE_WIN_VERSION_H_
