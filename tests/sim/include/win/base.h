// The basic types, macros and error codes of the Windows headers, for the simulated machine.
// Values are the platform's own. One wchar_t holds one UTF-16 unit.
#ifndef TAVRIN_TESTS_SIM_INCLUDE_WIN_BASE_H_
#define TAVRIN_TESTS_SIM_INCLUDE_WIN_BASE_H_

#include <cstddef>
#include <cstdint>

using BYTE = std::uint8_t;
using UCHAR = std::uint8_t;
using CHAR = char;
using WCHAR = wchar_t;
using SHORT = std::int16_t;
using USHORT = std::uint16_t;
using WORD = std::uint16_t;
using INT = int;
using UINT = unsigned int;
using LONG = std::int32_t;
using ULONG = std::uint32_t;
using DWORD = std::uint32_t;
using INT8 = std::int8_t;
using UINT8 = std::uint8_t;
using UINT16 = std::uint16_t;
using INT32 = std::int32_t;
using UINT32 = std::uint32_t;
using DWORD32 = std::uint32_t;
using ULONG32 = std::uint32_t;
using LONGLONG = long long;
using ULONGLONG = unsigned long long;
using INT64 = long long;
using UINT64 = unsigned long long;
using LONG64 = long long;
using ULONG64 = unsigned long long;
using DWORD64 = unsigned long long;
using DWORDLONG = unsigned long long;
using SIZE_T = std::size_t;
using INT_PTR = std::intptr_t;
using UINT_PTR = std::uintptr_t;
using LONG_PTR = std::intptr_t;
using ULONG_PTR = std::uintptr_t;
using DWORD_PTR = std::uintptr_t;
using BOOL = int;
using BOOLEAN = std::uint8_t;
using LSTATUS = LONG;
using NTSTATUS = LONG;
using HRESULT = LONG;
using errno_t = int;

using PVOID = void*;
using LPVOID = void*;
using LPCVOID = const void*;
using PBYTE = BYTE*;
using LPBYTE = BYTE*;
using PCHAR = char*;
using PSTR = char*;
using LPSTR = char*;
using PCSTR = const char*;
using LPCSTR = const char*;
using LPCCH = const char*;
using LPCH = char*;
using PWCHAR = wchar_t*;
using PWSTR = wchar_t*;
using LPWSTR = wchar_t*;
using LPWCH = wchar_t*;
using PCWSTR = const wchar_t*;
using LPCWSTR = const wchar_t*;
using LPCWCH = const wchar_t*;
using LPBOOL = BOOL*;
using PBOOL = BOOL*;
using PDWORD = DWORD*;
using LPDWORD = DWORD*;
using PULONG = ULONG*;
using LPLONG = LONG*;
using PLONG = LONG*;

using HANDLE = void*;
using PHANDLE = HANDLE*;
using HLOCAL = HANDLE;
using HMODULE = struct HINSTANCE__*;
using HINSTANCE = struct HINSTANCE__*;

#define VOID void
#define CONST const
#define TRUE 1
#define FALSE 0
#define WINAPI
#define APIENTRY
#define CALLBACK
#define NTAPI
#define WSAAPI
#define __cdecl
#define __stdcall
#define MAX_PATH 260
#define ANY_SIZE 1
#define ANYSIZE_ARRAY 1
#define INFINITE 0xFFFFFFFFu
#define INVALID_HANDLE_VALUE (reinterpret_cast<HANDLE>(static_cast<LONG_PTR>(-1)))
#define ARRAYSIZE(array) (sizeof(array) / sizeof((array)[0]))
#define UNREFERENCED_PARAMETER(p) static_cast<void>(p)
#define MAKEWORD(low, high) static_cast<WORD>(((low)&0xff) | (((high)&0xff) << 8))

union LARGE_INTEGER {
  struct {
    DWORD LowPart;
    LONG HighPart;
  } u;
  LONGLONG QuadPart;
};

struct GUID {
  std::uint32_t Data1;
  std::uint16_t Data2;
  std::uint16_t Data3;
  std::uint8_t Data4[8];
};

struct FILETIME {
  DWORD dwLowDateTime;
  DWORD dwHighDateTime;
};

struct SYSTEMTIME {
  WORD wYear;
  WORD wMonth;
  WORD wDayOfWeek;
  WORD wDay;
  WORD wHour;
  WORD wMinute;
  WORD wSecond;
  WORD wMilliseconds;
};
using LPSYSTEMTIME = SYSTEMTIME*;

#define CP_ACP 0
#define CP_UTF8 65001
#define MB_ERR_INVALID_CHARS 0x00000008
#define WC_ERR_INVALID_CHARS 0x00000080

// Access rights that several kinds of object share.
#define DELETE 0x00010000u
#define READ_CONTROL 0x00020000u
#define WRITE_DAC 0x00040000u
#define WRITE_OWNER 0x00080000u
#define SYNCHRONIZE 0x00100000u
#define STANDARD_RIGHTS_REQUIRED 0x000F0000u
#define GENERIC_READ 0x80000000u
#define GENERIC_WRITE 0x40000000u
#define GENERIC_EXECUTE 0x20000000u
#define GENERIC_ALL 0x10000000u

#include <win/errors.h>

#endif  // TAVRIN_TESTS_SIM_INCLUDE_WIN_BASE_H_
