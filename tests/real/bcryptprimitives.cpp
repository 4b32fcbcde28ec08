// Stand-in for bcryptprimitives.dll, which Go's runtime needs at its start and Wine 8 does not
// have.
#include <windows.h>

#include <ntsecapi.h>

extern "C" __declspec(dllexport) BOOL WINAPI ProcessPrng(PBYTE data, SIZE_T length) {
  return RtlGenRandom(data, static_cast<ULONG>(length));
}
