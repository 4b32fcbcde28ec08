// The process snapshot.
#ifndef TAVRIN_TESTS_SIM_INCLUDE_WIN_TOOLHELP_H_
#define TAVRIN_TESTS_SIM_INCLUDE_WIN_TOOLHELP_H_

#include <win/base.h>

#define TH32CS_SNAPPROCESS 0x00000002u

struct PROCESSENTRY32W {
  DWORD dwSize;
  DWORD cntUsage;
  DWORD th32ProcessID;
  ULONG_PTR th32DefaultHeapID;
  DWORD th32ModuleID;
  DWORD cntThreads;
  DWORD th32ParentProcessID;
  LONG pcPriClassBase;
  DWORD dwFlags;
  WCHAR szExeFile[MAX_PATH];
};

HANDLE CreateToolhelp32Snapshot(DWORD flags, DWORD processId);
BOOL Process32FirstW(HANDLE snapshot, PROCESSENTRY32W* entry);
BOOL Process32NextW(HANDLE snapshot, PROCESSENTRY32W* entry);

#endif  // TAVRIN_TESTS_SIM_INCLUDE_WIN_TOOLHELP_H_
