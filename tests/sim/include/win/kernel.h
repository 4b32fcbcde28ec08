// Processes, jobs, threads, waits, time, environment and text conversion.
#ifndef TAVRIN_TESTS_SIM_INCLUDE_WIN_KERNEL_H_
#define TAVRIN_TESTS_SIM_INCLUDE_WIN_KERNEL_H_

#include <win/base.h>

struct SECURITY_ATTRIBUTES {
  DWORD nLength;
  LPVOID lpSecurityDescriptor;
  BOOL bInheritHandle;
};
using PSECURITY_ATTRIBUTES = SECURITY_ATTRIBUTES*;
using LPSECURITY_ATTRIBUTES = SECURITY_ATTRIBUTES*;
using PSECURITY_DESCRIPTOR = void*;
static_assert(sizeof(SECURITY_ATTRIBUTES) == 24);

#define WAIT_OBJECT_0 0u
#define WAIT_ABANDONED 0x80u
#define WAIT_FAILED 0xFFFFFFFFu
#define STILL_ACTIVE 259u

#define CREATE_SUSPENDED 0x00000004u
#define DETACHED_PROCESS 0x00000008u
#define CREATE_NEW_CONSOLE 0x00000010u
#define CREATE_UNICODE_ENVIRONMENT 0x00000400u
#define CREATE_NO_WINDOW 0x08000000u
#define STARTF_USESHOWWINDOW 0x00000001u
#define STARTF_USESTDHANDLES 0x00000100u
#define SW_HIDE 0

#define PROCESS_TERMINATE 0x0001u
#define PROCESS_QUERY_INFORMATION 0x0400u
#define PROCESS_QUERY_LIMITED_INFORMATION 0x1000u
#define PROCESS_ALL_ACCESS 0x1FFFFFu

struct STARTUPINFOW {
  DWORD cb;
  LPWSTR lpReserved;
  LPWSTR lpDesktop;
  LPWSTR lpTitle;
  DWORD dwX;
  DWORD dwY;
  DWORD dwXSize;
  DWORD dwYSize;
  DWORD dwXCountChars;
  DWORD dwYCountChars;
  DWORD dwFillAttribute;
  DWORD dwFlags;
  WORD wShowWindow;
  WORD cbReserved2;
  LPBYTE lpReserved2;
  HANDLE hStdInput;
  HANDLE hStdOutput;
  HANDLE hStdError;
};
using LPSTARTUPINFOW = STARTUPINFOW*;
static_assert(sizeof(STARTUPINFOW) == 104);

struct PROCESS_INFORMATION {
  HANDLE hProcess;
  HANDLE hThread;
  DWORD dwProcessId;
  DWORD dwThreadId;
};
using LPPROCESS_INFORMATION = PROCESS_INFORMATION*;

enum JOBOBJECTINFOCLASS {
  JobObjectBasicLimitInformation = 2,
  JobObjectExtendedLimitInformation = 9,
};

#define JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE 0x00002000u

struct JOBOBJECT_BASIC_LIMIT_INFORMATION {
  LARGE_INTEGER PerProcessUserTimeLimit;
  LARGE_INTEGER PerJobUserTimeLimit;
  DWORD LimitFlags;
  SIZE_T MinimumWorkingSetSize;
  SIZE_T MaximumWorkingSetSize;
  DWORD ActiveProcessLimit;
  ULONG_PTR Affinity;
  DWORD PriorityClass;
  DWORD SchedulingClass;
};

struct IO_COUNTERS {
  ULONGLONG ReadOperationCount;
  ULONGLONG WriteOperationCount;
  ULONGLONG OtherOperationCount;
  ULONGLONG ReadTransferCount;
  ULONGLONG WriteTransferCount;
  ULONGLONG OtherTransferCount;
};

struct JOBOBJECT_EXTENDED_LIMIT_INFORMATION {
  JOBOBJECT_BASIC_LIMIT_INFORMATION BasicLimitInformation;
  IO_COUNTERS IoInfo;
  SIZE_T ProcessMemoryLimit;
  SIZE_T JobMemoryLimit;
  SIZE_T PeakProcessMemoryUsed;
  SIZE_T PeakJobMemoryUsed;
};
static_assert(sizeof(JOBOBJECT_EXTENDED_LIMIT_INFORMATION) == 144);

using LPTHREAD_START_ROUTINE = DWORD (*)(LPVOID);
using PTHREAD_START_ROUTINE = LPTHREAD_START_ROUTINE;

struct OSVERSIONINFOW {
  DWORD dwOSVersionInfoSize;
  DWORD dwMajorVersion;
  DWORD dwMinorVersion;
  DWORD dwBuildNumber;
  DWORD dwPlatformId;
  WCHAR szCSDVersion[128];
};
#define HANDLE_FLAG_INHERIT 0x00000001u

BOOL GetVersionExW(OSVERSIONINFOW* version);
BOOL CreatePipe(HANDLE* reading, HANDLE* writing, SECURITY_ATTRIBUTES* attributes, DWORD size);
BOOL SetHandleInformation(HANDLE object, DWORD mask, DWORD flags);
DWORD GetLastError();
void SetLastError(DWORD code);
BOOL CloseHandle(HANDLE object);
void Sleep(DWORD milliseconds);
DWORD WaitForSingleObject(HANDLE object, DWORD milliseconds);
DWORD GetTickCount();
ULONGLONG GetTickCount64();
BOOL QueryPerformanceCounter(LARGE_INTEGER* counter);
BOOL QueryPerformanceFrequency(LARGE_INTEGER* frequency);
void GetSystemTime(SYSTEMTIME* systemTime);

HANDLE CreateThread(SECURITY_ATTRIBUTES* attributes, SIZE_T stackSize, LPTHREAD_START_ROUTINE start,
                    LPVOID parameter, DWORD flags, DWORD* threadId);
BOOL CreateProcessW(LPCWSTR applicationName, LPWSTR commandLine,
                    SECURITY_ATTRIBUTES* processAttributes, SECURITY_ATTRIBUTES* threadAttributes,
                    BOOL inheritHandles, DWORD flags, LPVOID environment, LPCWSTR currentDirectory,
                    STARTUPINFOW* startupInfo, PROCESS_INFORMATION* information);
DWORD ResumeThread(HANDLE thread);
BOOL TerminateProcess(HANDLE process, UINT exitCode);
[[noreturn]] void ExitProcess(UINT exitCode);
HANDLE OpenProcess(DWORD access, BOOL inheritHandle, DWORD processId);
BOOL GetExitCodeProcess(HANDLE process, DWORD* exitCode);
BOOL QueryFullProcessImageNameW(HANDLE process, DWORD flags, LPWSTR name, DWORD* size);
DWORD GetCurrentProcessId();

HANDLE CreateJobObjectW(SECURITY_ATTRIBUTES* attributes, LPCWSTR name);
BOOL SetInformationJobObject(HANDLE job, JOBOBJECTINFOCLASS informationClass, LPVOID information,
                             DWORD length);
BOOL AssignProcessToJobObject(HANDLE job, HANDLE process);

DWORD GetModuleFileNameW(HMODULE module, LPWSTR name, DWORD size);
DWORD GetEnvironmentVariableW(LPCWSTR name, LPWSTR buffer, DWORD size);
HLOCAL LocalFree(HLOCAL memory);

int MultiByteToWideChar(UINT codePage, DWORD flags, LPCCH bytes, int byteCount, LPWSTR text,
                        int unitCount);
int WideCharToMultiByte(UINT codePage, DWORD flags, LPCWCH text, int unitCount, LPSTR bytes,
                        int byteCount, LPCCH defaultChar, LPBOOL usedDefaultChar);

#endif  // TAVRIN_TESTS_SIM_INCLUDE_WIN_KERNEL_H_
