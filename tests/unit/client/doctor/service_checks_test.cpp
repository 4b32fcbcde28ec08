#include "tests/unit/client/doctor/doctor_test.h"

namespace vpn {
namespace {

class ServiceChecksTest : public unit::DoctorTest {};

TEST_F(ServiceChecksTest, WindowsIsNewEnough) {
  ExpectGood(CheckWindows(patient), L"version 10.0, build 19045");
}

TEST_F(ServiceChecksTest, WindowsIsTooOld) {
  machine.windowsBuild = 18363;
  ExpectProblem(CheckWindows(patient), L"version 10.0, build 18363",
                L"update Windows to version 10 2004 (build 19041) or newer");
  machine.windowsBuild = 7601;
  EXPECT_EQ(CheckWindows(patient).text, L"version 6.1, build 7601");
}

TEST_F(ServiceChecksTest, AVersionThatCantBeReadIsNoGreenMark) {
  machine.faults.Fail("GetVersionExW", {.nth = 1});
  ExpectRemark(CheckWindows(patient), L"the version can't be read",
               L"use Windows 10 2004 or newer");
}

TEST_F(ServiceChecksTest, AServiceThatAnswers) {
  machine.services.Install({.name = "TavrinService", .state = SERVICE_RUNNING});
  unit::ScriptedService service(machine);
  service.RepliesAfter(15, unit::kDownReply);
  ExpectGood(CheckService(ExaminePatient(L"")),
             L"running as a Windows service, answers in 20 ms, "
             L"C:\\Program Files\\Tavrin\\runtime");
}

TEST_F(ServiceChecksTest, AServiceInAConsole) {
  unit::ScriptedService service(machine);
  service.RepliesAfter(15, unit::kDownReply);
  ExpectGood(CheckService(ExaminePatient(L"D:\\run")),
             L"running in a console or as a daemon, answers in 20 ms, D:\\run");
}

TEST_F(ServiceChecksTest, ABusyServiceIsARemark) {
  machine.pipes.AddForeign(L"\\\\.\\pipe\\TavrinService");
  ExpectRemark(CheckService(ExaminePatient(L"")), L"busy with another client",
               L"wait until its connect is over, then try again");
}

constexpr wchar_t kRestart[] =
    L"try again in a minute; if it stays so, restart the service, or end the process "
    L"TavrinService.exe";

TEST_F(ServiceChecksTest, AServiceWithoutAPipeIsNotCalledBusy) {
  machine.processes.Seed(L"C:\\Program Files\\Tavrin\\TavrinService.exe");
  ExpectProblem(CheckService(ExaminePatient(L"")),
                L"running without a pipe: it starts, or it hangs", kRestart);
}

TEST_F(ServiceChecksTest, ASilentServiceIsNotCalledBusy) {
  unit::ScriptedService service(machine);
  ExpectProblem(CheckService(ExaminePatient(L"")), L"takes a request and does not answer",
                kRestart);
}

TEST_F(ServiceChecksTest, HalfAReplyIsAProblem) {
  unit::ScriptedService service(machine);
  service.SendsBytesAfter(15, std::string("\x10\0\0\0{\"ok\"", 9));
  ExpectProblem(CheckService(ExaminePatient(L"")), L"its reply broke off in the middle", kRestart);
}

TEST_F(ServiceChecksTest, OnlyAReplyOrASureAbsenceTellsTheState) {
  EXPECT_TRUE(ExaminePatient(L"").isStateKnown());
  machine.faults.Fail("OpenSCManagerW", {.nth = 1, .onwards = true, .code = ERROR_ACCESS_DENIED});
  EXPECT_FALSE(ExaminePatient(L"").isStateKnown());
  machine.faults.Clear();
  machine.faults.Fail("CreateToolhelp32Snapshot", {.nth = 1, .onwards = true});
  EXPECT_FALSE(ExaminePatient(L"").isStateKnown());
  machine.faults.Clear();
  unit::ScriptedService service(machine);
  service.IsBusyFor(10'000);
  EXPECT_FALSE(ExaminePatient(L"").isStateKnown());
  machine.clock.Advance(10'000);
  service.RepliesAfter(15, unit::kDownReply);
  EXPECT_TRUE(ExaminePatient(L"").isStateKnown());
}

TEST_F(ServiceChecksTest, APipeThatMayNotBeOpened) {
  machine.faults.Fail("CreateFileW", {.nth = 1, .code = ERROR_ACCESS_DENIED});
  ExpectProblem(CheckService(ExaminePatient(L"")), L"its pipe may not be opened by this user",
                L"sign in to Windows with an account of this machine");
}

TEST_F(ServiceChecksTest, SomebodyElseOnThePipe) {
  unit::ScriptedService service(machine);
  service.RepliesAfter(15, "hello");
  ExpectProblem(CheckService(ExaminePatient(L"")),
                L"something answers on its pipe that is not the service",
                L"end the program that holds the pipe TavrinService, or restart the service");
}

TEST_F(ServiceChecksTest, NotRunning) {
  ExpectProblem(CheckService(ExaminePatient(L"")), L"not installed and not running",
                L"run TavrinService.exe --install with administrator's rights");
  machine.services.Install({.name = "TavrinService"});
  ExpectProblem(CheckService(ExaminePatient(L"")), L"installed, but not running",
                L"run \"sc start TavrinService\" with administrator's rights");
}

TEST_F(ServiceChecksTest, AServiceManagerThatTellsNothing) {
  patient.installed.isReadable = false;
  ExpectProblem(CheckService(patient),
                L"not running, and the service manager tells nothing about it",
                L"run this with administrator's rights");
}

}  // namespace
}  // namespace vpn
