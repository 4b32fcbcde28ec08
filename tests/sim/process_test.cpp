#include "tests/sim/processes.h"

#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include "tests/sim/fixture.h"
#include "tests/sim/text.h"

#include <windows.h>
#include <tlhelp32.h>

namespace sim {
namespace {

using Texts = std::vector<std::string>;

class ProcessCalls : public MachineTest {
 protected:
  ProcessCalls() { machine.files.Put(L"C:\\run\\child.exe"); }

  // Starts C:\run\child.exe.
  PROCESS_INFORMATION Start(DWORD flags = 0) {
    STARTUPINFOW startup = {};
    PROCESS_INFORMATION information = {};
    std::wstring line = L"child";
    EXPECT_NE(CreateProcessW(L"C:\\run\\child.exe", line.data(), nullptr, nullptr, FALSE, flags,
                             nullptr, nullptr, &startup, &information),
              FALSE);
    return information;
  }
  void Close(const PROCESS_INFORMATION& information) {
    CloseHandle(information.hThread);
    CloseHandle(information.hProcess);
  }
};

TEST_F(ProcessCalls, ASuspendedProcessDoesNothingUntilItIsResumed) {
  machine.programs.On(L"child.exe", Script().Exits(7, 100));
  const PROCESS_INFORMATION child = Start(CREATE_SUSPENDED);
  Sleep(1000);
  EXPECT_EQ(WaitForSingleObject(child.hProcess, 0), 258u);
  EXPECT_EQ(ResumeThread(child.hThread), 1u);
  EXPECT_EQ(WaitForSingleObject(child.hProcess, 99), 258u);
  EXPECT_EQ(WaitForSingleObject(child.hProcess, 1), 0u);
  DWORD code = 0;
  GetExitCodeProcess(child.hProcess, &code);
  EXPECT_EQ(code, 7u);
  Close(child);
}

TEST_F(ProcessCalls, ASecondResumeStartsNothingAnew) {
  int starts = 0;
  machine.programs.On(L"child.exe", Script().Does(10, [&starts](Process&) { ++starts; }));
  const PROCESS_INFORMATION child = Start(CREATE_SUSPENDED);
  EXPECT_EQ(ResumeThread(child.hThread), 1u);
  EXPECT_EQ(ResumeThread(child.hThread), 0u);
  Sleep(100);
  EXPECT_EQ(starts, 1);
  Close(child);
}

TEST_F(ProcessCalls, ATimedWaitEndsWithTheEventAndNotLater) {
  machine.programs.On(L"child.exe", Script().Exits(0, 300));
  const PROCESS_INFORMATION child = Start();
  const ULONGLONG before = GetTickCount64();
  EXPECT_EQ(WaitForSingleObject(child.hProcess, 5000), 0u);
  EXPECT_EQ(GetTickCount64() - before, 300u);
  Close(child);
}

TEST_F(ProcessCalls, AnInfiniteWaitGoesToTheEndOfItsOwnProcess) {
  machine.programs.On(L"child.exe", Script().Exits(0, 60000));
  const PROCESS_INFORMATION child = Start();
  EXPECT_EQ(WaitForSingleObject(child.hProcess, INFINITE), 0u);
  Close(child);
}

TEST_F(ProcessCalls, AnInfiniteWaitBlocksUntilAnotherThreadActs) {
  const PROCESS_INFORMATION child = Start();
  std::thread other([&] { machine.processes.Exit(child.dwProcessId, 3); });
  EXPECT_EQ(WaitForSingleObject(child.hProcess, INFINITE), 0u);
  other.join();
  Close(child);
}

TEST_F(ProcessCalls, ThirtyTwoBitTicksWrap) {
  machine.clock.Set(0xFFFFFFF0);
  EXPECT_EQ(GetTickCount(), 0xFFFFFFF0u);
  Sleep(0x20);
  EXPECT_EQ(GetTickCount(), 0x10u);
  EXPECT_EQ(GetTickCount64(), 0x100000010u);
}

TEST_F(ProcessCalls, TheLastHandleOfAKillingJobEndsItsProcesses) {
  const HANDLE job = CreateJobObjectW(nullptr, nullptr);
  JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits = {};
  limits.BasicLimitInformation.LimitFlags = JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE;
  SetInformationJobObject(job, JobObjectExtendedLimitInformation, &limits, sizeof limits);
  const PROCESS_INFORMATION inside = Start();
  const PROCESS_INFORMATION outside = Start();
  EXPECT_NE(AssignProcessToJobObject(job, inside.hProcess), FALSE);
  CloseHandle(job);
  EXPECT_EQ(WaitForSingleObject(inside.hProcess, 0), 0u);
  EXPECT_EQ(WaitForSingleObject(outside.hProcess, 0), 258u);
  Close(inside);
  Close(outside);
}

TEST_F(ProcessCalls, ATerminatedProcessCantBeTerminatedAgain) {
  const PROCESS_INFORMATION child = Start();
  EXPECT_NE(TerminateProcess(child.hProcess, 1), FALSE);
  EXPECT_EQ(TerminateProcess(child.hProcess, 1), FALSE);
  EXPECT_EQ(GetLastError(), 5u);
  Close(child);
}

TEST_F(ProcessCalls, AChildMayTakeItsTimeToDie) {
  machine.programs.On(L"child.exe", Script().TakesToDie(250));
  const PROCESS_INFORMATION child = Start();
  TerminateProcess(child.hProcess, 0);
  EXPECT_EQ(WaitForSingleObject(child.hProcess, 200), 258u);
  EXPECT_EQ(WaitForSingleObject(child.hProcess, 50), 0u);
  Close(child);
}

TEST_F(ProcessCalls, AProgramWithoutADirectoryIsFoundInTheSystemDirectory) {
  STARTUPINFOW startup = {};
  PROCESS_INFORMATION information = {};
  std::wstring line = L"netsh interface ipv6 delete route ::/1 interface=\"tavrin\"";
  ASSERT_NE(CreateProcessW(nullptr, line.data(), nullptr, nullptr, FALSE, CREATE_NO_WINDOW, nullptr,
                           nullptr, &startup, &information),
            FALSE);
  EXPECT_EQ(machine.processes.Started()[0]->image, L"C:\\Windows\\System32\\netsh.exe");
  EXPECT_EQ(WaitForSingleObject(information.hProcess, 2500), 0u);
  DWORD code = 0;
  GetExitCodeProcess(information.hProcess, &code);
  EXPECT_EQ(code, 1u) << "there is no such interface";
  Close(information);
}

TEST_F(ProcessCalls, CreationFailsForMissingProgramsDirectoriesAndByScript) {
  const auto attempt = [](const wchar_t* program, const wchar_t* directory) {
    STARTUPINFOW startup = {};
    PROCESS_INFORMATION information = {};
    EXPECT_EQ(CreateProcessW(program, nullptr, nullptr, nullptr, FALSE, 0, nullptr, directory,
                             &startup, &information),
              FALSE);
    return GetLastError();
  };
  EXPECT_EQ(attempt(L"C:\\run\\none.exe", nullptr), 2u);
  EXPECT_EQ(attempt(L"C:\\run", nullptr), 5u);
  EXPECT_EQ(attempt(L"C:\\run\\child.exe", L"C:\\nowhere"), 267u);
  machine.programs.On(L"child.exe", Script().FailsToStart(193));
  EXPECT_EQ(attempt(L"C:\\run\\child.exe", nullptr), 193u);
}

TEST_F(ProcessCalls, TheSnapshotShowsWhatIsAliveWithItsImage) {
  const auto orphan = machine.processes.Seed(L"D:\\old\\xray.exe", 777);
  const HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0);
  PROCESSENTRY32W entry = {};
  entry.dwSize = sizeof entry;
  Texts names;
  for (BOOL more = Process32FirstW(snapshot, &entry); more;
       more = Process32NextW(snapshot, &entry)) {
    names.push_back(Narrow(entry.szExeFile));
  }
  EXPECT_EQ(GetLastError(), 18u);
  EXPECT_EQ(names, (Texts{"[System Process]", "System", "TavrinService.exe", "xray.exe"}));
  CloseHandle(snapshot);

  const HANDLE process =
      OpenProcess(PROCESS_TERMINATE | PROCESS_QUERY_LIMITED_INFORMATION, FALSE, 777);
  wchar_t path[520] = {};
  DWORD size = 520;
  EXPECT_NE(QueryFullProcessImageNameW(process, 0, path, &size), FALSE);
  EXPECT_EQ(std::wstring(path), L"D:\\old\\xray.exe");
  EXPECT_EQ(WaitForSingleObject(process, 0), 0xFFFFFFFFu) << "it was not opened for waiting";
  TerminateProcess(process, 0);
  CloseHandle(process);
  EXPECT_EQ(OpenProcess(PROCESS_TERMINATE, FALSE, 777), nullptr);
  EXPECT_EQ(GetLastError(), 87u);
}

TEST_F(ProcessCalls, AnAdapterLivesWithTheProcessThatBroughtIt) {
  AdapterPlan plan = TavrinAdapter();
  plan.vanishesAfter = 100;
  machine.programs.On(L"child.exe", Script().BringsAdapter(plan));
  const size_t before = machine.network.adapters.size();
  const PROCESS_INFORMATION child = Start();
  Sleep(600);
  ASSERT_EQ(machine.network.adapters.size(), before + 1);
  EXPECT_EQ(machine.network.adapters.back().friendlyName, "本地连接* 3");
  Sleep(100);
  EXPECT_EQ(machine.network.adapters.back().friendlyName, "tavrin");
  EXPECT_EQ(machine.network.adapters.back().operStatus, netmodel::kOperStatusDown);
  Sleep(200);
  EXPECT_EQ(machine.network.adapters.back().operStatus, netmodel::kOperStatusUp);
  TerminateProcess(child.hProcess, 0);
  EXPECT_EQ(machine.network.adapters.size(), before + 1);
  Sleep(100);
  EXPECT_EQ(machine.network.adapters.size(), before);
  Close(child);
}

TEST_F(ProcessCalls, AListenerEndsWithItsProcessAndATakenPortEndsTheChild) {
  machine.programs.On(L"child.exe", Script().Listens(17593, 10));
  const PROCESS_INFORMATION first = Start();
  Sleep(10);
  EXPECT_TRUE(machine.listeners.IsListening(17593));
  const PROCESS_INFORMATION second = Start();
  EXPECT_EQ(WaitForSingleObject(second.hProcess, 100), 0u);
  DWORD code = 0;
  GetExitCodeProcess(second.hProcess, &code);
  EXPECT_EQ(code, 0xFFFFFFFFu);
  TerminateProcess(first.hProcess, 0);
  EXPECT_FALSE(machine.listeners.IsListening(17593));
  Close(first);
  Close(second);
}

std::atomic<int> threadsRun{0};

TEST_F(ProcessCalls, ACreatedThreadRunsAndCanBeWaitedFor) {
  threadsRun = 0;
  const HANDLE thread = CreateThread(
      nullptr, 0, [](void*) -> DWORD { return static_cast<DWORD>(++threadsRun); }, nullptr, 0,
      nullptr);
  EXPECT_EQ(WaitForSingleObject(thread, INFINITE), 0u);
  EXPECT_EQ(threadsRun.load(), 1);
  CloseHandle(thread);
}

TEST_F(ProcessCalls, TheUtcDateMovesWithTheClock) {
  machine.clock.SetDate(2025, 12, 31, 23, 59, 59);
  SYSTEMTIME now = {};
  Sleep(1500);
  GetSystemTime(&now);
  EXPECT_EQ(now.wYear, 2026);
  EXPECT_EQ(now.wMonth, 1);
  EXPECT_EQ(now.wDay, 1);
  EXPECT_EQ(now.wMilliseconds, 500);
  EXPECT_EQ(now.wDayOfWeek, 4);
}

}  // namespace
}  // namespace sim
