#include "tests/unit/client/doctor/doctor_test.h"

namespace vpn {
namespace {

class ProgramChecksTest : public unit::DoctorTest {};

TEST_F(ProgramChecksTest, AllThereWithTheirVersions) {
  ExpectGood(CheckPrograms(patient), L"Xray 26.3.27, tun2socks 2.6.0, wintun.dll");
  EXPECT_EQ(machine.processes.StartedCommandLines(),
            (std::vector<std::string>{
                R"("C:\Program Files\Tavrin\runtime\xray\xray.exe" version)",
                R"("C:\Program Files\Tavrin\runtime\tun2socks\tun2socks-windows-amd64.exe" )"
                "--version"}));
}

TEST_F(ProgramChecksTest, AnOldTun2socksRefusesTheOptions) {
  machine.programs.On(L"tun2socks*.exe", sim::Script().Prints("tun2socks-2.5.2\n").Exits(0, 9));
  ExpectProblem(CheckPrograms(patient), L"Xray 26.3.27, tun2socks 2.5.2, wintun.dll",
                L"put tun2socks 2.6.0 or newer there: older ones refuse the options");
  machine.programs.On(L"tun2socks*.exe", sim::Script().Prints("tun2socks-3.0.0\n").Exits(0, 9));
  EXPECT_EQ(static_cast<int>(CheckPrograms(patient).verdict), static_cast<int>(Verdict::kGood));
}

TEST_F(ProgramChecksTest, AProgramThatDoesNotRun) {
  machine.programs.On(L"xray.exe", sim::Script().FailsToStart(ERROR_ACCESS_DENIED));
  ExpectProblem(CheckPrograms(patient), InRuntime(L"xray\\xray.exe") + L" does not run",
                L"put a working file there; a virus scanner may hold it");
}

TEST_F(ProgramChecksTest, AProgramThatFailsIsNotGoodForItsVersion) {
  machine.programs.On(L"xray.exe", sim::Script().Prints("Xray 26.3.27\n").Exits(1, 9));
  ExpectProblem(CheckPrograms(patient),
                InRuntime(L"xray\\xray.exe") + L" version fails with the code 1",
                L"put a working file there; a virus scanner may hold it");
  machine.programs.On(L"xray.exe", CheckingXray());
  machine.programs.On(L"tun2socks*.exe",
                      sim::Script().Prints("tun2socks-2.6.0\n").Exits(0xC0000135, 9));
  ExpectProblem(CheckPrograms(patient),
                InRuntime(L"tun2socks\\tun2socks-windows-amd64.exe") +
                    L" --version fails with the code 3221225781",
                L"put a working file there; a virus scanner may hold it");
}

TEST_F(ProgramChecksTest, AProgramWhoseCodeIsNotToldIsNotGood) {
  machine.faults.Fail("GetExitCodeProcess", {.nth = 1});
  EXPECT_EQ(CheckPrograms(patient).text,
            InRuntime(L"xray\\xray.exe") + L" version fails with the code 4294967295");
}

TEST_F(ProgramChecksTest, AProgramThatSaysNothingOfItself) {
  machine.programs.On(L"tun2socks*.exe", sim::Script().Prints("usage\n").Exits(0, 9));
  ExpectProblem(
      CheckPrograms(patient),
      InRuntime(L"tun2socks\\tun2socks-windows-amd64.exe") + L" does not tell its version",
      L"put a working file there; a virus scanner may hold it");
}

TEST_F(ProgramChecksTest, ADirectoryThatCantBeListedIsNoGreenMark) {
  machine.faults.Fail("FindFirstFileW", {.nth = 1, .code = ERROR_ACCESS_DENIED});
  ExpectRemark(CheckPrograms(patient), InRuntime(L"tun2socks") + L" can't be read",
               L"run this with administrator's rights; if it stays so, another program holds the "
               L"file, or the disk is damaged");
}

TEST_F(ProgramChecksTest, AProgramThatHangsIsEnded) {
  machine.programs.On(L"xray.exe", sim::Idle());
  const std::uint64_t start = machine.clock.Now();
  ExpectProblem(CheckPrograms(patient), InRuntime(L"xray\\xray.exe") + L" does not end",
                L"put a working file there; a virus scanner may hold it");
  EXPECT_EQ(machine.clock.Now() - start, 5000u);
  EXPECT_EQ(machine.processes.Alive(), std::vector<std::string>());
}

TEST_F(ProgramChecksTest, TheConfigurationOfTheLastConnect) {
  machine.files.Put(InRuntime(L"session.json.xray.json"), "{}");
  ExpectGood(CheckConfiguration(patient), L"Xray accepts the last one");
  EXPECT_EQ(machine.processes.StartedCommandLines(),
            std::vector<std::string>{
                R"("C:\Program Files\Tavrin\runtime\xray\xray.exe" run -test -c stdin:)"});
}

TEST_F(ProgramChecksTest, TheCheckOfTheConfigurationOpensNoLog) {
  machine.files.Put(InRuntime(L"session.json.xray.json"),
                    R"({ "log": { "error": "C:\\run\\xray-error.log" }, "id": "x" })");
  machine.files.Put(InRuntime(L"xray-error.log"), "as it was");
  ExpectGood(CheckConfiguration(patient), L"Xray accepts the last one");
  EXPECT_EQ(machine.files.Read(InRuntime(L"xray-error.log")), "as it was");
  EXPECT_EQ(machine.processes.Started().back()->input->bytes,
            R"({ "log": { "error": "" }, "id": "x" })");
}

TEST_F(ProgramChecksTest, AConfigurationThatXrayRefuses) {
  machine.files.Put(InRuntime(L"session.json.xray.json"), R"({"id":"6f2c9d4e-key"})");
  machine.programs.On(
      L"xray.exe",
      sim::Script().Prints("Xray 26.3.27\nFailed to start: bad 6f2c9d4e-key\r\n").Exits(23, 9));
  ExpectProblem(CheckConfiguration(patient), L"Xray refuses the last one: Failed to start: bad ***",
                L"choose another node, or sign in again; the node's settings are damaged, or a geo "
                L"file is too old");
}

TEST_F(ProgramChecksTest, AConfigurationThatCantBeChecked) {
  machine.files.Put(InRuntime(L"session.json.xray.json"), "{}");
  machine.programs.On(L"xray.exe", sim::Idle());
  ExpectProblem(CheckConfiguration(patient), InRuntime(L"xray\\xray.exe") + L" does not end",
                L"put a working file there; a virus scanner may hold it");
  machine.programs.On(L"xray.exe", sim::Script().FailsToStart(ERROR_ACCESS_DENIED));
  EXPECT_EQ(CheckConfiguration(patient).text, InRuntime(L"xray\\xray.exe") + L" does not run");
  machine.files.Remove(InRuntime(L"xray\\xray.exe"));
  ExpectRemark(CheckConfiguration(patient), L"can't be checked without Xray",
               L"put xray.exe there");
}

TEST_F(ProgramChecksTest, AConfigurationThatIsGoneWhenItIsReadIsNoGreenMark) {
  machine.files.Put(InRuntime(L"session.json.xray.json"), "{}");
  machine.faults.Fail("_wfsopen", {.nth = 2});
  EXPECT_EQ(CheckConfiguration(patient).text,
            InRuntime(L"session.json.xray.json") + L" can't be read");
}

}  // namespace
}  // namespace vpn
