// The registry, read only.
#ifndef TAVRIN_TESTS_SIM_INCLUDE_WIN_REGISTRY_H_
#define TAVRIN_TESTS_SIM_INCLUDE_WIN_REGISTRY_H_

#include <win/base.h>

using HKEY = struct HKEY__*;
using PHKEY = HKEY*;
using REGSAM = DWORD;

#define HKEY_CURRENT_USER (reinterpret_cast<HKEY>(static_cast<ULONG_PTR>(0x80000001u)))
#define HKEY_LOCAL_MACHINE (reinterpret_cast<HKEY>(static_cast<ULONG_PTR>(0x80000002u)))
#define HKEY_USERS (reinterpret_cast<HKEY>(static_cast<ULONG_PTR>(0x80000003u)))
#define KEY_QUERY_VALUE 0x0001u
#define KEY_READ 0x20019u
#define REG_NONE 0u
#define REG_SZ 1u
#define REG_EXPAND_SZ 2u
#define REG_BINARY 3u
#define REG_DWORD 4u
#define REG_MULTI_SZ 7u
#define REG_QWORD 11u

LSTATUS RegOpenKeyExW(HKEY key, LPCWSTR subKey, DWORD options, REGSAM access, HKEY* result);
LSTATUS RegQueryValueExW(HKEY key, LPCWSTR name, DWORD* reserved, DWORD* type, BYTE* data,
                         DWORD* size);
LSTATUS RegCloseKey(HKEY key);

#endif  // TAVRIN_TESTS_SIM_INCLUDE_WIN_REGISTRY_H_
