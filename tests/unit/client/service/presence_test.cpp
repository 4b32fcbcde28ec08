#include "client/service/presence.h"

#include "src/host/run_modes.h"
#include "tests/unit/client/client_test.h"

namespace vpn {
namespace {

class PresenceTest : public unit::ClientTest {
 protected:
  void InstallService(std::uint32_t state) {
    machine.services.Install(
        {.name = "TavrinService",
         .binaryPath = R"("D:\Tavrin\TavrinService.exe" --runtime "D:\Tavrin files\runtime")",
         .state = state});
  }
};

TEST_F(PresenceTest, TheInstalledServiceIsFoundByTheServicesOwnName) {
  machine.services.Install({.name = "TavrinService", .state = SERVICE_RUNNING});
  ASSERT_STREQ(kServiceName, L"TavrinService");
  const InstalledService service = FindInstalledService();
  EXPECT_TRUE(service.isInstalled);
  EXPECT_TRUE(service.isReadable);
  EXPECT_EQ(service.state, SERVICE_RUNNING);
}

TEST_F(PresenceTest, APlainUserMayAskToo) {
  InstallService(SERVICE_STOPPED);
  machine.services.administrator = false;
  const InstalledService service = FindInstalledService();
  EXPECT_TRUE(service.isInstalled);
  EXPECT_EQ(service.commandLine,
            L"\"D:\\Tavrin\\TavrinService.exe\" --runtime \"D:\\Tavrin files\\runtime\"");
}

TEST_F(PresenceTest, NoServiceIsToldApartFromNoAnswer) {
  EXPECT_FALSE(FindInstalledService().isInstalled);
  EXPECT_TRUE(FindInstalledService().isReadable);
  machine.faults.Fail("OpenServiceW", {.nth = 1, .code = ERROR_ACCESS_DENIED});
  EXPECT_FALSE(FindInstalledService().isReadable);
  machine.faults.Fail("OpenSCManagerW", {.nth = 1, .code = ERROR_ACCESS_DENIED});
  EXPECT_FALSE(FindInstalledService().isReadable);
}

TEST_F(PresenceTest, AliveIsWhatRunsOrStarts) {
  EXPECT_FALSE(IsServiceAlive());
  InstallService(SERVICE_STOPPED);
  EXPECT_FALSE(IsServiceAlive());
  machine.processes.Seed(L"D:\\Tavrin\\tavrinservice.EXE");
  EXPECT_TRUE(IsServiceAlive());
}

TEST_F(PresenceTest, ThePlaceIsThatOfTheInstalledService) {
  InstallService(SERVICE_STOPPED);
  const ServicePlace place = FindServicePlace(L"");
  EXPECT_EQ(place.directory, L"D:\\Tavrin");
  EXPECT_EQ(place.runtimeDir, L"D:\\Tavrin files\\runtime");
}

TEST_F(PresenceTest, ARunningProcessSaysWhereTheTraceIs) {
  InstallService(SERVICE_STOPPED);
  machine.processes.Seed(L"E:\\elsewhere\\TavrinService.exe");
  EXPECT_EQ(FindServicePlace(L"").directory, L"E:\\elsewhere");
  EXPECT_EQ(FindServiceDirectory(), L"E:\\elsewhere");
}

TEST_F(PresenceTest, AProcessThatTellsNoPathTellsNoPlace) {
  InstallService(SERVICE_RUNNING);
  machine.processes.Seed(L"E:\\elsewhere\\TavrinService.exe");
  machine.processes.Seed(L"D:\\Tavrin\\TavrinService.exe", 4711)->openError = ERROR_ACCESS_DENIED;
  EXPECT_EQ(FindServicePlace(L"").directory, L"E:\\elsewhere");
  machine.processes.Find(4711)->openError = 0;
  machine.processes.Find(4711)->nameError = ERROR_ACCESS_DENIED;
  EXPECT_EQ(FindServicePlace(L"").directory, L"E:\\elsewhere");
}

TEST_F(PresenceTest, WithOnlyAProcessThatTellsNoPathTheInstalledPlaceCounts) {
  InstallService(SERVICE_RUNNING);
  machine.processes.Seed(L"E:\\x\\TavrinService.exe")->openError = ERROR_ACCESS_DENIED;
  EXPECT_EQ(FindServicePlace(L"").directory, L"D:\\Tavrin");
  EXPECT_EQ(FindServiceDirectory(), L"D:\\Tavrin");
}

TEST_F(PresenceTest, WithoutAServiceThePlaceIsBesideTheClient) {
  const ServicePlace place = FindServicePlace(L"");
  EXPECT_EQ(place.directory, L"C:\\Program Files\\Tavrin");
  EXPECT_EQ(place.runtimeDir, L"C:\\Program Files\\Tavrin\\runtime");
}

TEST_F(PresenceTest, TheUsersChoiceOfTheRuntimeDirectoryCounts) {
  InstallService(SERVICE_RUNNING);
  EXPECT_EQ(FindServicePlace(L"F:\\mine").runtimeDir, L"F:\\mine");
}

TEST_F(PresenceTest, CommandLinesAreReadWithAndWithoutQuotes) {
  EXPECT_EQ(RuntimeOfCommandLine(L"C:\\T\\TavrinService.exe --runtime C:\\run"), L"C:\\run");
  EXPECT_EQ(RuntimeOfCommandLine(L"C:\\T\\TavrinService.exe"), L"");
  EXPECT_EQ(ProgramOfCommandLine(L"C:\\T\\TavrinService.exe --daemon"),
            L"C:\\T\\TavrinService.exe");
  EXPECT_EQ(ProgramOfCommandLine(L"\"C:\\a b\\x.exe\" --daemon"), L"C:\\a b\\x.exe");
  EXPECT_EQ(ProgramOfCommandLine(L""), L"");
}

TEST_F(PresenceTest, ProcessesTellTheirAge) {
  machine.processes.Seed(L"C:\\run\\xray\\xray.exe", 4711);
  machine.clock.Advance(8'040'000);
  const std::vector<RunningProcess> found = FindProcessesUnder(L"C:\\RUN\\xray", L"XRAY.exe");
  ASSERT_EQ(found.size(), 1u);
  EXPECT_EQ(found[0].id, 4711u);
  EXPECT_EQ(found[0].runsFor, 8040u);
}

TEST_F(PresenceTest, ProcessesElsewhereAreNotUnderADirectory) {
  machine.processes.Seed(L"C:\\other\\xray.exe");
  EXPECT_TRUE(FindProcessesUnder(L"C:\\run\\xray", L"xray.exe").empty());
  EXPECT_EQ(FindProcesses(L"xray.exe").size(), 1u);
}

TEST_F(PresenceTest, AProcessThatMayNotBeOpenedIsListedAllTheSame) {
  machine.processes.Seed(L"C:\\run\\xray\\xray.exe", 4711)->openError = ERROR_ACCESS_DENIED;
  const std::vector<RunningProcess> found = FindProcesses(L"xray.exe");
  ASSERT_EQ(found.size(), 1u);
  EXPECT_EQ(found[0].id, 4711u);
  EXPECT_EQ(found[0].image, L"");
}

TEST_F(PresenceTest, WithoutASnapshotNothingRuns) {
  machine.faults.Fail("CreateToolhelp32Snapshot", {.nth = 1});
  machine.processes.Seed(L"C:\\run\\xray\\xray.exe");
  EXPECT_TRUE(FindProcesses(L"xray.exe").empty());
  EXPECT_TRUE(CanListProcesses());
  machine.faults.Fail("CreateToolhelp32Snapshot", {.nth = 1});
  EXPECT_FALSE(CanListProcesses());
}

TEST_F(PresenceTest, VersionsComeFromTheExecutable) {
  machine.files.Put(L"C:\\t.exe");
  EXPECT_EQ(FileVersion(L"C:\\t.exe"), L"");
  machine.files.SetVersion(L"C:\\t.exe", "12.34.56");
  EXPECT_EQ(FileVersion(L"C:\\t.exe"), L"12.34.56");
  EXPECT_EQ(FileVersion(L"C:\\missing.exe"), L"");
  machine.faults.Fail("GetFileVersionInfoW", {.nth = 1});
  EXPECT_EQ(FileVersion(L"C:\\t.exe"), L"");
}

}  // namespace
}  // namespace vpn
