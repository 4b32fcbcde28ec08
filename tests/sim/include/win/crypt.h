// Text to bytes, of the Crypto API.
#ifndef TAVRIN_TESTS_SIM_INCLUDE_WIN_CRYPT_H_
#define TAVRIN_TESTS_SIM_INCLUDE_WIN_CRYPT_H_

#include <win/base.h>

#define CRYPT_STRING_BASE64 0x00000001u

BOOL CryptStringToBinaryA(LPCSTR text, DWORD length, DWORD flags, BYTE* binary, DWORD* size,
                          DWORD* skipped, DWORD* usedFlags);

#endif  // TAVRIN_TESTS_SIM_INCLUDE_WIN_CRYPT_H_
