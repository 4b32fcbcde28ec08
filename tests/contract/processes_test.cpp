// Processes, jobs, waits, the snapshot, time.
#include <cwctype>
#include <string>

#include "tests/contract/world.h"

#include <tlhelp32.h>

namespace contract {
namespace {

class Process : public ContractTest {
 protected:
  static PROCESS_INFORMATION Start(const std::wstring& behaviour, DWORD flags = 0) {
    std::wstring line = ChildLine(behaviour);
    STARTUPINFOW startup = {};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION child = {};
    EXPECT_NE(CreateProcessW(ProgramPath().c_str(), line.data(), nullptr, nullptr, FALSE,
                             flags | CREATE_NO_WINDOW, nullptr, nullptr, &startup, &child),
              FALSE);
    return child;
  }
  static DWORD StartError(const wchar_t* program, const wchar_t* line, const wchar_t* directory) {
    std::wstring text = line;
    STARTUPINFOW startup = {};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION child = {};
    const BOOL started = CreateProcessW(program, text.data(), nullptr, nullptr, FALSE, 0, nullptr,
                                        directory, &startup, &child);
    const DWORD error = GetLastError();
    EXPECT_EQ(started, FALSE);
    return error;
  }
  static DWORD ExitCode(HANDLE process) {
    DWORD code = 0;
    EXPECT_NE(GetExitCodeProcess(process, &code), FALSE);
    return code;
  }
  static void Close(const PROCESS_INFORMATION& child) {
    CloseHandle(child.hThread);
    CloseHandle(child.hProcess);
  }
};

TEST_F(Process, ItsEndIsSignalledWithItsExitCode) {
  const PROCESS_INFORMATION child = Start(L"exit 7");
  EXPECT_EQ(WaitForSingleObject(child.hProcess, 30000), WAIT_OBJECT_0);
  EXPECT_EQ(ExitCode(child.hProcess), 7u);
  EXPECT_EQ(WaitForSingleObject(child.hThread, 30000), WAIT_OBJECT_0);
  Close(child);
}

TEST_F(Process, ALivingOneTimesOutAndIsStillActive) {
  const PROCESS_INFORMATION child = Start(L"sleep");
  EXPECT_EQ(WaitForSingleObject(child.hProcess, 0), static_cast<DWORD>(WAIT_TIMEOUT));
  EXPECT_EQ(ExitCode(child.hProcess), 259u);
  EXPECT_NE(TerminateProcess(child.hProcess, 3), FALSE);
  EXPECT_EQ(WaitForSingleObject(child.hProcess, 30000), WAIT_OBJECT_0);
  EXPECT_EQ(ExitCode(child.hProcess), 3u);
  Close(child);
}

TEST_F(Process, ADeadOneCantBeTerminated) {
  const PROCESS_INFORMATION child = Start(L"exit 0");
  WaitForSingleObject(child.hProcess, 30000);
  // Wine calls it a success.
  const BOOL terminated = TerminateProcess(child.hProcess, 1);
  if (IsWine()) {
    EXPECT_NE(terminated, FALSE);
  } else {
    EXPECT_EQ(terminated, FALSE);
    EXPECT_EQ(GetLastError(), 5u);
  }
  Close(child);
}

TEST_F(Process, ASuspendedOneRunsWhenItIsResumed) {
  const PROCESS_INFORMATION child = Start(L"exit 7", CREATE_SUSPENDED);
  EXPECT_EQ(WaitForSingleObject(child.hProcess, 100), static_cast<DWORD>(WAIT_TIMEOUT));
  EXPECT_EQ(ResumeThread(child.hThread), 1u);
  EXPECT_EQ(WaitForSingleObject(child.hProcess, 30000), WAIT_OBJECT_0);
  Close(child);
}

TEST_F(Process, WhatIsMissingDecidesTheError) {
  EXPECT_EQ(StartError((world.directory() + L"\\none.exe").c_str(), L"x", nullptr), 2u);
  EXPECT_EQ(StartError(nullptr, L"tavrin-no-such-program argument", nullptr), 2u);
  EXPECT_EQ(StartError(ProgramPath().c_str(), L"x", (world.directory() + L"\\none").c_str()), 267u);
}

TEST_F(Process, TheLastHandleOfAKillingJobEndsIt) {
  const HANDLE job = CreateJobObjectW(nullptr, nullptr);
  JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits = {};
  limits.BasicLimitInformation.LimitFlags = JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE;
  EXPECT_NE(SetInformationJobObject(job, JobObjectExtendedLimitInformation, &limits, sizeof limits),
            FALSE);
  const PROCESS_INFORMATION child = Start(L"sleep", CREATE_SUSPENDED);
  EXPECT_NE(AssignProcessToJobObject(job, child.hProcess), FALSE);
  ResumeThread(child.hThread);
  EXPECT_EQ(WaitForSingleObject(child.hProcess, 0), static_cast<DWORD>(WAIT_TIMEOUT));
  CloseHandle(job);
  EXPECT_EQ(WaitForSingleObject(child.hProcess, 30000), WAIT_OBJECT_0);
  Close(child);
}

TEST_F(Process, AJobTakesNothingOfTheWrongSizeAndNoDeadProcess) {
  const HANDLE job = CreateJobObjectW(nullptr, nullptr);
  JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits = {};
  EXPECT_EQ(
      SetInformationJobObject(job, JobObjectExtendedLimitInformation, &limits, sizeof limits - 1),
      FALSE);
  EXPECT_EQ(GetLastError(), IsWine() ? 87u : 24u);  // Wine has one code for all bad arguments
  const PROCESS_INFORMATION child = Start(L"exit 0");
  WaitForSingleObject(child.hProcess, 30000);
  EXPECT_EQ(AssignProcessToJobObject(job, child.hProcess), FALSE);
  EXPECT_EQ(GetLastError(), 5u);
  Close(child);
  CloseHandle(job);
}

TEST_F(Process, AnIdThatNobodyHasGives87) {
  EXPECT_EQ(OpenProcess(SYNCHRONIZE, FALSE, 0x7FFFFFF0), nullptr);
  EXPECT_EQ(GetLastError(), 87u);
}

TEST_F(Process, AHandleGivesOnlyTheRightsThatWereAskedFor) {
  const PROCESS_INFORMATION child = Start(L"sleep");
  const HANDLE process = OpenProcess(PROCESS_QUERY_LIMITED_INFORMATION, FALSE, child.dwProcessId);
  ASSERT_NE(process, nullptr);
  EXPECT_EQ(WaitForSingleObject(process, 0), WAIT_FAILED);
  EXPECT_EQ(GetLastError(), 5u);
  EXPECT_EQ(TerminateProcess(process, 0), FALSE);
  EXPECT_EQ(GetLastError(), 5u);
  CloseHandle(process);
  TerminateProcess(child.hProcess, 0);
  Close(child);
}

TEST_F(Process, ItsImageIsToldInFullIfThereIsRoom) {
  const PROCESS_INFORMATION child = Start(L"sleep");
  wchar_t path[520] = {};
  DWORD size = 520;
  EXPECT_NE(QueryFullProcessImageNameW(child.hProcess, 0, path, &size), FALSE);
  EXPECT_EQ(size, std::wstring(path).size());
  EXPECT_EQ(std::wstring(path), ProgramPath());
  size = 4;
  EXPECT_EQ(QueryFullProcessImageNameW(child.hProcess, 0, path, &size), FALSE);
  EXPECT_EQ(GetLastError(), 122u);
  TerminateProcess(child.hProcess, 0);
  Close(child);
}

// How often the snapshot names a process with this id, and under which file name.
int FindInSnapshot(DWORD id, std::wstring* name) {
  const HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0);
  EXPECT_NE(snapshot, INVALID_HANDLE_VALUE);
  PROCESSENTRY32W entry = {};
  entry.dwSize = sizeof entry;
  int found = 0;
  BOOL more = Process32FirstW(snapshot, &entry);
  EXPECT_NE(more, FALSE);
  for (; more != FALSE; more = Process32NextW(snapshot, &entry)) {
    if (entry.th32ProcessID == id) {
      ++found;
      *name = entry.szExeFile;
    }
  }
  EXPECT_EQ(GetLastError(), 18u);
  CloseHandle(snapshot);
  return found;
}

TEST_F(Process, TheSnapshotNamesTheLivingWithTheirFileNames) {
  const PROCESS_INFORMATION child = Start(L"sleep");
  const std::wstring program = ProgramPath();
  std::wstring name;
  EXPECT_EQ(FindInSnapshot(child.dwProcessId, &name), 1);
  EXPECT_EQ(name, program.substr(program.find_last_of(L'\\') + 1));
  TerminateProcess(child.hProcess, 0);
  WaitForSingleObject(child.hProcess, 30000);
  Close(child);
  EXPECT_EQ(FindInSnapshot(child.dwProcessId, &name), 0);
}

TEST_F(Process, ASnapshotEntryOfTheWrongSizeGives24) {
  const HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0);
  PROCESSENTRY32W entry = {};
  entry.dwSize = 8;
  EXPECT_EQ(Process32FirstW(snapshot, &entry), FALSE);
  // Wine takes the entry for one of an older layout and says that there is too little room.
  EXPECT_EQ(GetLastError(), IsWine() ? 122u : 24u);
  CloseHandle(snapshot);
}

using Time = ContractTest;

TEST_F(Time, TheShortTickIsTheLowHalfOfTheLongOne) {
  const ULONGLONG before = GetTickCount64();
  const DWORD tick = GetTickCount();
  const ULONGLONG after = GetTickCount64();
  EXPECT_LE(static_cast<DWORD>(tick - static_cast<DWORD>(before & 0xFFFFFFFF)), after - before);
}

// Measured by the performance counter: the tick may lag behind by any amount on a busy machine
// (Wine's server moves it on), so that its difference over a sleep can be too small.
TEST_F(Time, ASleepTakesAtLeastItsTimeLessOneTick) {
  LARGE_INTEGER frequency = {};
  LARGE_INTEGER before = {};
  LARGE_INTEGER after = {};
  QueryPerformanceFrequency(&frequency);
  QueryPerformanceCounter(&before);
  Sleep(60);
  QueryPerformanceCounter(&after);
  EXPECT_GE((after.QuadPart - before.QuadPart) * 1000 / frequency.QuadPart, 44);
}

TEST_F(Time, TheTickMovesOn) {
  const ULONGLONG before = GetTickCount64();
  for (int i = 0; i < 10'000 && GetTickCount64() == before; ++i) Sleep(1);
  EXPECT_GT(GetTickCount64(), before);
}

TEST_F(Time, AThreadCanBeWaitedFor) {
  const HANDLE thread = CreateThread(
      nullptr, 0, [](void*) -> DWORD { return 0; }, nullptr, 0, nullptr);
  ASSERT_NE(thread, nullptr);
  EXPECT_EQ(WaitForSingleObject(thread, INFINITE), WAIT_OBJECT_0);
  CloseHandle(thread);
}

using Dispatcher = ContractTest;

BOOL Serve() {
  std::wstring name = L"TavrinContract";
  const SERVICE_TABLE_ENTRYW table[] = {{name.data(), [](DWORD, LPWSTR*) {}}, {nullptr, nullptr}};
  return StartServiceCtrlDispatcherW(table);
}

TEST_F(Dispatcher, AProgramThatWasStartedByHandGets1063) {
  EXPECT_EQ(Serve(), FALSE);
  EXPECT_EQ(GetLastError(), 1063u);
}

}  // namespace
}  // namespace contract
