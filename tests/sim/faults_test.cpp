#include "tests/sim/faults.h"

#include <string>
#include <vector>

#include "tests/sim/fixture.h"

#include <windows.h>

namespace sim {
namespace {

using Texts = std::vector<std::string>;

class FaultCalls : public MachineTest {
 protected:
  FaultCalls() { machine.files.Put(L"C:\\run\\child.exe"); }
};

bool HasJob() {
  const HANDLE job = CreateJobObjectW(nullptr, nullptr);
  if (job == nullptr) {
    return false;
  }
  CloseHandle(job);
  return true;
}

TEST_F(FaultCalls, TheNthCallOfAFunctionFailsOnceWithItsCode) {
  machine.faults.Fail("CreateJobObjectW", {.nth = 2, .code = 8});
  EXPECT_TRUE(HasJob());
  EXPECT_FALSE(HasJob());
  EXPECT_EQ(GetLastError(), 8u);
  EXPECT_TRUE(HasJob());
}

TEST_F(FaultCalls, OrFromThenOn) {
  machine.faults.FailAlways("CreateJobObjectW");
  EXPECT_FALSE(HasJob());
  EXPECT_FALSE(HasJob());
  EXPECT_EQ(GetLastError(), 1450u) << "the default of the table";
}

TEST_F(FaultCalls, TheKthFallibleCallOfAllFails) {
  machine.faults.FailAt(2);
  EXPECT_TRUE(HasJob());
  EXPECT_EQ(GetFileAttributesW(L"C:\\run"), 0xFFFFFFFFu);
  EXPECT_TRUE(HasJob());
  EXPECT_EQ(machine.faults.FallibleCount(), 3u) << "closing is not counted";
}

TEST_F(FaultCalls, SeveralCallsOfAllFail) {
  machine.faults.FailAt(1);
  machine.faults.FailAt(3);
  EXPECT_FALSE(HasJob());
  EXPECT_TRUE(HasJob());
  EXPECT_FALSE(HasJob());
  EXPECT_TRUE(HasJob());
}

TEST_F(FaultCalls, WhatWasChosenByCountCanBeGivenUp) {
  machine.faults.FailAt(2);
  machine.faults.FailFrom(3);
  machine.faults.Fail("DeleteFileW");
  machine.faults.FailNoMore();
  EXPECT_TRUE(HasJob());
  EXPECT_TRUE(HasJob());
  EXPECT_TRUE(HasJob());
  machine.files.Put(L"C:\\run\\a", "text");
  EXPECT_EQ(DeleteFileW(L"C:\\run\\a"), FALSE) << "chosen by its name";
}

TEST_F(FaultCalls, AFailedCallHasDoneNothing) {
  machine.files.Put(L"C:\\run\\a", "text");
  machine.faults.FailAlways("DeleteFileW");
  machine.faults.FailAlways("_wfsopen");
  EXPECT_EQ(DeleteFileW(L"C:\\run\\a"), FALSE);
  EXPECT_EQ(_wfsopen(L"C:\\run\\a", L"wb", _SH_DENYNO), nullptr);
  EXPECT_EQ(machine.files.Read(L"C:\\run\\a"), "text");
}

TEST_F(FaultCalls, HooksRunInFrontOfTheirCall) {
  Texts order;
  machine.faults.Before("CreateJobObjectW", 2, [&] { order.push_back("hook"); });
  machine.faults.BeforeCall(1, [&] { order.push_back("first"); });
  HasJob();
  order.push_back("between");
  HasJob();
  EXPECT_EQ(order, (Texts{"first", "between", "hook"}));
}

TEST_F(FaultCalls, ACallCanTakeItsTime) {
  machine.faults.Delay("CreateJobObjectW", 70);
  const ULONGLONG before = GetTickCount64();
  HasJob();
  EXPECT_EQ(GetTickCount64() - before, 70u);
}

// What a small product might do: a job that kills, a child in it, a file that stays open.
void RunSmallProduct() {
  const HANDLE job = CreateJobObjectW(nullptr, nullptr);
  JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits = {};
  limits.BasicLimitInformation.LimitFlags = JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE;
  SetInformationJobObject(job, JobObjectExtendedLimitInformation, &limits, sizeof limits);
  STARTUPINFOW startup = {};
  PROCESS_INFORMATION child = {};
  if (CreateProcessW(L"C:\\run\\child.exe", nullptr, nullptr, nullptr, FALSE, CREATE_SUSPENDED,
                     nullptr, nullptr, &startup, &child) == FALSE) {
    CloseHandle(job);
    return;
  }
  AssignProcessToJobObject(job, child.hProcess);
  ResumeThread(child.hThread);
  std::FILE* const file = _wfsopen(L"C:\\run\\log", L"ab", _SH_DENYNO);
  (void)GetFileAttributesW(L"C:\\run");
  std::fclose(file);
  CloseHandle(child.hThread);
  CloseHandle(child.hProcess);
  CloseHandle(job);
}

TEST_F(FaultCalls, AKilledProcessLosesItsHandlesAndItsJobTakesTheChild) {
  machine.faults.KillAt(7);  // with the file open
  const ProcessRun run = machine.RunProcess(RunSmallProduct);
  EXPECT_TRUE(run.killed);
  EXPECT_EQ(machine.processes.Alive(), Texts());
  EXPECT_EQ(machine.OpenHandles(), Texts());
  EXPECT_NE(DeleteFileW(L"C:\\run\\log"), FALSE) << "nobody has it open any more";
}

TEST_F(FaultCalls, AChildThatIsNotYetInTheJobSurvivesAsAnOrphan) {
  machine.faults.KillAt(4);
  EXPECT_TRUE(machine.RunProcess(RunSmallProduct).killed);
  EXPECT_EQ(machine.processes.Alive(), Texts{"child.exe"});
}

TEST_F(FaultCalls, AProcessCanBeKilledInFrontOfTheNthCallOfAFunction) {
  machine.faults.KillBefore("CreateJobObjectW", 2);
  EXPECT_FALSE(machine.RunProcess(HasJob).killed);
  EXPECT_TRUE(machine.RunProcess(HasJob).killed);
  EXPECT_FALSE(machine.RunProcess(HasJob).killed) << "once";
  EXPECT_EQ(machine.calls.Count("CreateJobObjectW"), 2u) << "the one in between was never made";
}

TEST_F(FaultCalls, AProcessCanBeKilledAtEveryCallAndTheNextOneRuns) {
  machine.RunProcess(RunSmallProduct);
  const std::uint64_t calls = machine.faults.FallibleCount();
  EXPECT_EQ(calls, 7u);
  for (std::uint64_t k = 1; k <= calls; ++k) {
    machine.faults.ResetCount();
    machine.faults.KillAt(k);
    EXPECT_TRUE(machine.RunProcess(RunSmallProduct).killed) << k;
    EXPECT_EQ(machine.OpenHandles(), Texts()) << k;
  }
  machine.faults.Clear();
  EXPECT_FALSE(machine.RunProcess(RunSmallProduct).killed);
}

TEST_F(FaultCalls, AKilledProcessTakesItsOtherThreadsAlong) {
  machine.faults.KillAt(2);
  const ProcessRun run = machine.RunProcess([] {
    const auto sleepForEver = [](void*) -> DWORD {
      for (;;) {
        Sleep(1);
      }
    };
    CreateThread(nullptr, 0, sleepForEver, nullptr, 0, nullptr);
    (void)GetFileAttributesW(L"C:\\run");
  });
  EXPECT_TRUE(run.killed);
  EXPECT_EQ(machine.WaitForThreads(), 0u);
}

TEST_F(FaultCalls, WhatAProcessLeavesOpenAtItsEndIsAViolation) {
  machine.RunProcess([] { (void)CreateJobObjectW(nullptr, nullptr); });
  EXPECT_EQ(machine.Violations(),
            Texts{"left open at the process's end: job from CreateJobObjectW"});
  machine.ForgetViolations();
}

TEST_F(FaultCalls, TheUseOfAClosedHandleIsAViolation) {
  const HANDLE job = CreateJobObjectW(nullptr, nullptr);
  CloseHandle(job);
  EXPECT_EQ(CloseHandle(job), FALSE);
  EXPECT_EQ(GetLastError(), 6u);
  EXPECT_EQ(WaitForSingleObject(nullptr, 0), 0xFFFFFFFFu);
  EXPECT_EQ(machine.Violations(),
            (Texts{"CloseHandle on a closed handle: job from CreateJobObjectW",
                   "WaitForSingleObject on a value that is no handle, 0x0"}));
  machine.ForgetViolations();
}

TEST_F(FaultCalls, TheLogTellsNameArgumentsAndOrder) {
  const HANDLE job = CreateJobObjectW(nullptr, L"name");
  machine.faults.Fail("GetFileAttributesW");
  (void)GetFileAttributesW(L"C:\\中");
  CloseHandle(job);
  EXPECT_EQ(machine.calls.Names(),
            (Texts{"CreateJobObjectW", "GetFileAttributesW", "CloseHandle"}));
  EXPECT_EQ(machine.calls.TextsOf("GetFileAttributesW"), Texts{"\"C:\\中\""});
  EXPECT_EQ(machine.calls.TextsOf("CloseHandle"), Texts{"job"});
  EXPECT_TRUE(machine.calls.All()[1].failed);
}

TEST_F(FaultCalls, TheLogTellsWhatAProcessAskedForLast) {
  (void)GetFileAttributesW(L"C:\\run");
  const ProcessRun other = machine.RunProcess([] { (void)GetFileAttributesW(L"C:\\other"); });
  const std::uint32_t self = machine.ThisProcess()->id;
  (void)GetFileAttributesW(L"C:\\run\\child.exe");
  EXPECT_EQ(machine.calls.LatestText("GetFileAttributesW", self), "\"C:\\run\\child.exe\"");
  EXPECT_EQ(machine.calls.LatestText("GetFileAttributesW", other.processId), "\"C:\\other\"");
  EXPECT_EQ(machine.calls.LatestText("DeleteFileW", self), "");
}

}  // namespace
}  // namespace sim
