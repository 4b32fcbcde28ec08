// Who runs the program, access lists of files, random bytes.
#ifndef TAVRIN_TESTS_SIM_INCLUDE_WIN_USER_H_
#define TAVRIN_TESTS_SIM_INCLUDE_WIN_USER_H_

#include <win/kernel.h>

#define TOKEN_QUERY 0x0008u
#define PROTECTED_DACL_SECURITY_INFORMATION 0x80000000u
#define BCRYPT_USE_SYSTEM_PREFERRED_RNG 0x00000002u

using PSID = void*;

struct SID_AND_ATTRIBUTES {
  PSID Sid;
  DWORD Attributes;
};
struct TOKEN_USER {
  SID_AND_ATTRIBUTES User;
};
enum TOKEN_INFORMATION_CLASS { TokenUser = 1 };

HANDLE GetCurrentProcess();
BOOL OpenProcessToken(HANDLE process, DWORD access, HANDLE* token);
BOOL GetTokenInformation(HANDLE token, TOKEN_INFORMATION_CLASS what, LPVOID data, DWORD size,
                         DWORD* needed);
BOOL ConvertSidToStringSidW(PSID sid, LPWSTR* text);
BOOL SetFileSecurityW(LPCWSTR name, DWORD information, PSECURITY_DESCRIPTOR descriptor);
NTSTATUS BCryptGenRandom(LPVOID algorithm, BYTE* bytes, ULONG count, ULONG flags);

#endif  // TAVRIN_TESTS_SIM_INCLUDE_WIN_USER_H_
