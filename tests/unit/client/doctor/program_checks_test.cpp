#include "client/doctor/captured_run.h"
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

TEST_F(ProgramChecksTest, EachFileIsMissed) {
  for (const wchar_t* name : {L"xray\\geoip.dat", L"xray\\geosite.dat", L"tun2socks\\wintun.dll"}) {
    machine.files.Remove(InRuntime(name));
    ExpectProblem(CheckPrograms(patient), InRuntime(name) + L" is not there, or empty",
                  L"put the file there");
    machine.files.Put(InRuntime(name), "data");
  }
  machine.files.Remove(InRuntime(L"tun2socks\\tun2socks-windows-amd64.exe"));
  ExpectProblem(CheckPrograms(patient), InRuntime(L"tun2socks") + L" holds no tun2socks*.exe",
                L"put the file there");
  machine.files.Put(InRuntime(L"tun2socks\\tun2socks-windows-amd64.exe"));
  machine.files.Remove(InRuntime(L"xray\\xray.exe"));
  ExpectProblem(CheckPrograms(patient), InRuntime(L"xray\\xray.exe") + L" is not there",
                L"put the file there");
}

TEST_F(ProgramChecksTest, AnEmptyGeoFileIsAsGoodAsNone) {
  machine.files.Put(InRuntime(L"xray\\geoip.dat"), "");
  EXPECT_EQ(CheckPrograms(patient).text,
            InRuntime(L"xray\\geoip.dat") + L" is not there, or empty");
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

TEST_F(ProgramChecksTest, AProgramThatSaysNothingOfItself) {
  machine.programs.On(L"tun2socks*.exe", sim::Script().Prints("usage\n").Exits(2, 9));
  EXPECT_EQ(CheckPrograms(patient).text,
            InRuntime(L"tun2socks\\tun2socks-windows-amd64.exe") + L" does not run");
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
  ExpectGood(CheckConfiguration(patient), L"none generated yet");
  machine.files.Put(InRuntime(L"session.json.xray.json"), "{}");
  ExpectGood(CheckConfiguration(patient), L"Xray accepts the last one");
  EXPECT_EQ(
      machine.processes.StartedCommandLines(),
      std::vector<std::string>{R"("C:\Program Files\Tavrin\runtime\xray\xray.exe" run -test -c )"
                               R"("C:\Program Files\Tavrin\runtime\session.json.xray.json")"});
}

TEST_F(ProgramChecksTest, AConfigurationThatXrayRefuses) {
  machine.files.Put(InRuntime(L"session.json.xray.json"), "{");
  machine.programs.On(
      L"xray.exe",
      sim::Script().Prints("Xray 26.3.27\nFailed to start: main: bad value\r\n").Exits(23, 9));
  ExpectProblem(
      CheckConfiguration(patient), L"Xray refuses the last one: Failed to start: main: bad value",
      L"choose another node, or sign in again; the node's settings are damaged, or a geo file is "
      L"too old");
}

TEST_F(ProgramChecksTest, AConfigurationThatCantBeChecked) {
  machine.files.Put(InRuntime(L"session.json.xray.json"), "{}");
  machine.files.SetLocked(InRuntime(L"session.json.xray.json"), true);
  ExpectRemark(CheckConfiguration(patient),
               InRuntime(L"session.json.xray.json") + L" can't be read",
               L"run this with administrator's rights");
  machine.files.SetLocked(InRuntime(L"session.json.xray.json"), false);
  machine.programs.On(L"xray.exe", sim::Idle());
  EXPECT_EQ(CheckConfiguration(patient).text, InRuntime(L"xray\\xray.exe") + L" does not end");
  machine.files.Remove(InRuntime(L"xray\\xray.exe"));
  ExpectRemark(CheckConfiguration(patient), L"can't be checked without Xray",
               L"put xray.exe there");
}

TEST_F(ProgramChecksTest, ARunThatCantBePreparedHasNotStarted) {
  machine.faults.Fail("CreatePipe", {.nth = 1});
  EXPECT_FALSE(RunCaptured(L"xray.exe version", unit::kRuntime, 100).hasStarted);
  machine.faults.Fail("SetHandleInformation", {.nth = 1});
  EXPECT_FALSE(RunCaptured(L"xray.exe version", unit::kRuntime, 100).hasStarted);
}

TEST_F(ProgramChecksTest, OutputBeyondItsLimitIsDropped) {
  machine.programs.On(L"xray.exe", sim::Script().Prints(std::string(70'000, 'x')).Exits(3, 9));
  const CapturedRun run =
      RunCaptured(L"\"" + InRuntime(L"xray\\xray.exe") + L"\"", unit::kRuntime, 100);
  EXPECT_TRUE(run.hasEnded);
  EXPECT_EQ(run.exitCode, 3u);
  EXPECT_EQ(run.output.size(), 65'536u);
}

TEST_F(ProgramChecksTest, VersionsAreFoundInWhatProgramsSay) {
  EXPECT_EQ(VersionIn("Xray 26.3.27 (Xray, Penetrates Everything.) 1234 (go1.26)"), L"26.3.27");
  EXPECT_EQ(VersionIn("tun2socks-2.6.0\n"), L"2.6.0");
  EXPECT_EQ(VersionIn("build 7, version 1.2."), L"1.2");
  EXPECT_EQ(VersionIn("42"), L"");
  EXPECT_EQ(VersionIn(""), L"");
}

}  // namespace
}  // namespace vpn
