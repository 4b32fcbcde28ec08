#include "src/tunnel/child_process.h"

#include "tests/unit/net/net_fixture.h"
#include "tests/unit/status.h"

namespace unit {
namespace {

class ChildProcesses : public ProductTest {
 protected:
  ChildProcesses() {
    machine.files.Put(L"C:\\run\\child.exe");
    machine.files.currentDirectory = L"C:\\run";
    machine.files.PutDirectory(L"C:\\run\\work");
  }

  bool Spawn(HANDLE jobHandle = nullptr, const wchar_t* directory = L"C:\\run\\work") {
    return Succeeds(vpn::SpawnChild(jobHandle, L"C:\\run\\child.exe",
                                    L"\"C:\\run\\child.exe\" -c \"x y\"", directory, spawned),
                    error);
  }
  vpn::KernelHandle KillingJob() {
    vpn::KernelHandle job(CreateJobObjectW(nullptr, nullptr));
    JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits = {};
    limits.BasicLimitInformation.LimitFlags = JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE;
    EXPECT_NE(SetInformationJobObject(job.get(), JobObjectExtendedLimitInformation, &limits,
                                      sizeof limits),
              FALSE);
    machine.calls.Clear();
    return job;
  }
  void TearDown() override {
    for (const auto& child : machine.processes.Started()) {
      machine.processes.Exit(child->id, 0);
    }
    spawned = {};
    ProductTest::TearDown();
  }

  vpn::HiddenProcess spawned;
  vpn::KernelHandle& process = spawned.process;
  vpn::KernelHandle& thread = spawned.thread;
  std::wstring error = L"as before";
};

TEST(QuotedArguments, AQuoteStandsBeforeAndBehindAndNothingIsEscaped) {
  EXPECT_EQ(vpn::QuoteArgument(L"C:\\Program Files\\x.exe"), L"\"C:\\Program Files\\x.exe\"");
  EXPECT_EQ(vpn::QuoteArgument(L""), L"\"\"");
  EXPECT_EQ(vpn::QuoteArgument(L"a\"b"), L"\"a\"b\"");
  EXPECT_EQ(vpn::QuoteArgument(L"C:\\dir\\"), L"\"C:\\dir\\\"");
}

// FindFileByPattern

TEST_F(ChildProcesses, TheFirstFileThatTheDirectoryListsIsFound) {
  machine.files.Put(L"C:\\run\\t\\readme.txt");
  machine.files.Put(L"C:\\run\\t\\tun2socks-windows-amd64.exe");
  machine.files.Put(L"C:\\run\\t\\tun2socks-a.exe");
  EXPECT_EQ(vpn::FindFileByPattern(L"C:\\run\\t", L"tun2socks*.exe"),
            L"C:\\run\\t\\tun2socks-windows-amd64.exe");
  EXPECT_EQ(machine.calls.Sequence({"FindFirstFileW", "FindClose"}),
            (Texts{"FindFirstFileW \"C:\\run\\t\\tun2socks*.exe\"", "FindClose find handle"}));
}

TEST_F(ChildProcesses, TheFoundPathKeepsTheDirectorysSpelling) {
  machine.files.Put(L"C:\\run\\t\\TUN2SOCKS.EXE");
  EXPECT_EQ(vpn::FindFileByPattern(L"c:/RUN/t", L"tun2socks*.exe"), L"c:/RUN/t\\TUN2SOCKS.EXE");
}

TEST_F(ChildProcesses, WhatTheEntryIsIsNotLookedAt) {
  machine.files.PutDirectory(L"C:\\run\\t\\tun2socks-folder.exe");
  EXPECT_EQ(vpn::FindFileByPattern(L"C:\\run\\t", L"tun2socks*.exe"),
            L"C:\\run\\t\\tun2socks-folder.exe");
}

TEST_F(ChildProcesses, WithoutAMatchThePathIsEmptyAndNothingIsClosed) {
  machine.files.Put(L"C:\\run\\t\\mytun2socks.exe");
  EXPECT_EQ(vpn::FindFileByPattern(L"C:\\run\\t", L"tun2socks*.exe"), L"");
  EXPECT_EQ(vpn::FindFileByPattern(L"C:\\nowhere", L"tun2socks*.exe"), L"");
  EXPECT_EQ(machine.calls.Count("FindClose"), 0u);
}

// SpawnChild

TEST_F(ChildProcesses, AChildIsMadeSuspendedAssignedAndThenResumed) {
  const vpn::KernelHandle job = KillingJob();
  ASSERT_TRUE(Spawn(job.get()));
  EXPECT_EQ(machine.calls.Names(),
            (Texts{"CreateProcessW", "AssignProcessToJobObject", "ResumeThread"}));
  EXPECT_EQ(machine.calls.TextsOf("CreateProcessW"),
            Texts{"\"C:\\run\\child.exe\", \"\"C:\\run\\child.exe\" -c \"x y\"\", own, 0x8000004, "
                  "\"C:\\run\\work\", 1, 0"});
  EXPECT_EQ(machine.calls.TextsOf("AssignProcessToJobObject"), Texts{"job, process child.exe"});
  EXPECT_EQ(machine.calls.TextsOf("ResumeThread"), Texts{"thread of child.exe"});
  EXPECT_EQ(error, L"as before");
  EXPECT_FALSE(machine.processes.Started().at(0)->suspended);
  EXPECT_EQ(machine.processes.Started().at(0)->directory, L"C:\\run\\work");
}

TEST_F(ChildProcesses, NotOneInstructionRunsOutsideTheJob) {
  bool ran = false;
  machine.programs.On(L"child.exe", sim::Script().Does(0, [&](sim::Process&) { ran = true; }));
  machine.faults.Before("AssignProcessToJobObject", 1, [&] {
    machine.clock.Advance(1000);
    EXPECT_FALSE(ran);
  });
  machine.faults.Before("ResumeThread", 1, [&] {
    machine.clock.Advance(1000);
    EXPECT_FALSE(ran);
    EXPECT_FALSE(machine.processes.Started().at(0)->job.expired());
  });
  const vpn::KernelHandle job = KillingJob();
  ASSERT_TRUE(Spawn(job.get()));
  machine.clock.Advance(1);
  EXPECT_TRUE(ran);
}

TEST_F(ChildProcesses, BothHandlesAreHandedOutAndStayOpen) {
  ASSERT_TRUE(Spawn());
  EXPECT_EQ(machine.OpenHandles(), (Texts{"process child.exe from CreateProcessW",
                                          "thread of child.exe from CreateProcessW"}));
  EXPECT_TRUE(vpn::IsProcessRunning(process.get()));
  EXPECT_TRUE(thread);
}

TEST_F(ChildProcesses, TheClosingOfTheJobEndsTheChild) {
  vpn::KernelHandle job = KillingJob();
  ASSERT_TRUE(Spawn(job.get()));
  job.reset();
  EXPECT_FALSE(vpn::IsProcessRunning(process.get()));
}

TEST_F(ChildProcesses, WithoutAJobTheChildRunsOutsideAnyWithNoError) {
  ASSERT_TRUE(Spawn(nullptr));
  EXPECT_EQ(machine.calls.Names(), (Texts{"CreateProcessW", "ResumeThread"}));
  EXPECT_TRUE(machine.processes.Started().at(0)->job.expired());
  EXPECT_EQ(error, L"as before");
}

TEST_F(ChildProcesses, AnEmptyWorkingDirectoryIsTheServicesOwn) {
  ASSERT_TRUE(Spawn(nullptr, L""));
  EXPECT_EQ(machine.processes.Started().at(0)->directory, L"C:\\run");
  EXPECT_EQ(machine.calls.TextsOf("CreateProcessW"),
            Texts{"\"C:\\run\\child.exe\", \"\"C:\\run\\child.exe\" -c \"x y\"\", own, 0x8000004, "
                  "null, 1, 0"});
}

TEST_F(ChildProcesses, AChildThatCantBeCreatedGivesThePlatformsCode) {
  machine.programs.OnNext(L"child.exe", sim::Script().FailsToStart(193));
  EXPECT_FALSE(Spawn());
  EXPECT_EQ(error, L"CreateProcess failed err=193");
  machine.programs.OnNext(L"child.exe", sim::Script().FailsToStart(0xC0000142));
  EXPECT_FALSE(Spawn());
  EXPECT_EQ(error, L"CreateProcess failed err=3221225794");
  EXPECT_FALSE(Spawn(nullptr, L"C:\\run\\no such directory"));
  EXPECT_EQ(error, L"CreateProcess failed err=267");
  EXPECT_FALSE(process);
  EXPECT_FALSE(thread);
}

TEST_F(ChildProcesses, AChildThatItsJobRefusesIsKilledAgainAndItsHandlesAreClosed) {
  const vpn::KernelHandle job = KillingJob();
  machine.faults.Fail("AssignProcessToJobObject");
  EXPECT_FALSE(Spawn(job.get()));
  EXPECT_EQ(error, L"AssignProcessToJobObject failed");
  EXPECT_EQ(machine.processes.Alive(), Texts());
  EXPECT_EQ(machine.processes.Started().at(0)->exitCode, 1u);
  EXPECT_EQ(machine.calls.Sequence({"ResumeThread", "TerminateProcess", "CloseHandle"}),
            (Texts{"TerminateProcess process child.exe, 1", "CloseHandle thread of child.exe",
                   "CloseHandle process child.exe"}));
}

TEST_F(ChildProcesses, AFailureLeavesTheOutputsUntouched) {
  ASSERT_TRUE(Spawn());
  const HANDLE oldProcess = process.get();
  const HANDLE oldThread = thread.get();
  const vpn::KernelHandle job = KillingJob();
  machine.faults.Fail("AssignProcessToJobObject");
  EXPECT_FALSE(Spawn(job.get()));
  machine.faults.Fail("CreateProcessW");
  EXPECT_FALSE(Spawn(job.get()));
  EXPECT_EQ(process.get(), oldProcess);
  EXPECT_EQ(thread.get(), oldThread);
}

TEST_F(ChildProcesses, AChildThatStaysSuspendedIsNoFailureYet) {
  machine.faults.Fail("ResumeThread");
  EXPECT_TRUE(Spawn());
  EXPECT_EQ(error, L"as before");
  EXPECT_TRUE(machine.processes.Started().at(0)->suspended);
}

// IsProcessRunning

TEST_F(ChildProcesses, NullIsNotRunningAndNobodyIsAsked) {
  EXPECT_FALSE(vpn::IsProcessRunning(nullptr));
  EXPECT_EQ(machine.calls.Names(), Texts());
}

TEST_F(ChildProcesses, AProcessRunsUntilItEnds) {
  machine.programs.On(L"child.exe", sim::Script().Exits(0, 100));
  ASSERT_TRUE(Spawn());
  machine.calls.Clear();
  machine.clock.Advance(99);
  EXPECT_TRUE(vpn::IsProcessRunning(process.get()));
  machine.clock.Advance(1);
  EXPECT_FALSE(vpn::IsProcessRunning(process.get()));
  EXPECT_EQ(machine.calls.TextsOf("WaitForSingleObject"), Texts(2, "process child.exe, 0"));
}

TEST_F(ChildProcesses, AProcessThatCantBeWaitedForCountsAsEnded) {
  ASSERT_TRUE(Spawn());
  machine.faults.Fail("WaitForSingleObject");
  EXPECT_FALSE(vpn::IsProcessRunning(process.get()));
}

}  // namespace
}  // namespace unit
