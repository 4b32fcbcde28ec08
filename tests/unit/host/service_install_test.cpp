#include "src/host/service_install.h"

#include "tests/unit/host/service_install_fixture.h"

namespace vpn {
namespace {

using unit::kCommandLine;
using unit::kName;

class InstallServiceTest : public unit::ServiceInstallTest {};

TEST_F(InstallServiceTest, NewServiceHasExactlyTheseSettings) {
  EXPECT_EQ(InstallService(), 0);
  const sim::ServiceRecord service = Installed();
  EXPECT_EQ(service.name, "TavrinService");
  EXPECT_EQ(service.displayName, "Tavrin连接服务");
  EXPECT_EQ(service.description, "Tavrin数据通道：Xray + tun2socks。界面通过命名管道连接。");
  EXPECT_EQ(service.binaryPath, kCommandLine);
  EXPECT_EQ(service.type, 16u);
  EXPECT_EQ(service.startType, 2u);
  EXPECT_EQ(service.errorControl, 1u);
  EXPECT_FALSE(service.hasOtherSettings);
  EXPECT_EQ(service.state, 4u);
}

TEST_F(InstallServiceTest, SuccessIsPrintedWithTheCommandLine) {
  EXPECT_EQ(InstallService(), 0);
  EXPECT_EQ(machine.console.Output(),
            "Installed and started TavrinService\n"
            "binPath \"C:\\App\\TavrinService.exe\" --runtime \"C:\\run\"\n");
  EXPECT_EQ(machine.console.Errors(), "");
}

TEST_F(InstallServiceTest, CallsOfAFirstInstallation) {
  EXPECT_EQ(InstallService(), 0);
  EXPECT_EQ(
      Sequence(),
      (std::vector<std::string>{
          "OpenSCManagerW null, null, 2",
          R"(OpenServiceW service manager, "TavrinService", 0x10024)",
          R"(CreateServiceW "TavrinService", "Tavrin连接服务", 0xF01FF, ""C:\App\TavrinService.exe" --runtime "C:\run"")",
          "ChangeServiceConfig2W service TavrinService, 1",
          "StartServiceW service TavrinService, 0", "CloseServiceHandle service TavrinService",
          "CloseServiceHandle service manager"}));
  EXPECT_EQ(Elapsed(), 0u);
}

TEST_F(InstallServiceTest, ExistingServiceIsStoppedDeletedAndReplaced) {
  PutService();
  EXPECT_EQ(InstallService(), 0);
  const std::vector<std::string> sequence = Sequence();
  ASSERT_EQ(sequence.size(), 12u);
  EXPECT_EQ(std::vector<std::string>(sequence.begin(), sequence.begin() + 7),
            (std::vector<std::string>{"OpenSCManagerW null, null, 2",
                                      R"(OpenServiceW service manager, "TavrinService", 0x10024)",
                                      "ControlService service TavrinService, 1",
                                      "QueryServiceStatus service TavrinService",
                                      "DeleteService service TavrinService",
                                      "CloseServiceHandle service TavrinService", "Sleep 400"}));
  EXPECT_EQ(Installed().displayName, "Tavrin连接服务");
  EXPECT_EQ(Installed().binaryPath, kCommandLine);
  EXPECT_EQ(Elapsed(), 400u);
}

TEST_F(InstallServiceTest, SecondInstallationReplacesAndStartsTheFirst) {
  EXPECT_EQ(InstallService(), 0);
  SetRuntimeDir(L"D:\\new");
  EXPECT_EQ(InstallService(), 0);
  EXPECT_EQ(Installed().binaryPath, R"("C:\App\TavrinService.exe" --runtime "D:\new")");
  EXPECT_EQ(Installed().state, 4u);
  EXPECT_EQ(machine.calls.Count("ControlService"), 1u);
  EXPECT_EQ(machine.calls.Count("DeleteService"), 1u);
}

TEST_F(InstallServiceTest, RuntimeDirIsFrozenUntestedAndUnescaped) {
  SetRuntimeDir(L"X:\\不存在\\a \"b\"\\");
  EXPECT_EQ(InstallService(), 0);
  EXPECT_EQ(Installed().binaryPath,
            "\"C:\\App\\TavrinService.exe\" --runtime \"X:\\不存在\\a \"b\"\\\"");
  EXPECT_EQ(machine.calls.Count("GetFileAttributesW"), 0u);
}

TEST_F(InstallServiceTest, OrdinaryUserIsToldOfTheAdministrator) {
  machine.services.administrator = false;
  EXPECT_EQ(InstallService(), 1);
  EXPECT_EQ(machine.console.Errors(), "OpenSCManager failed err=5 (need Administrator)\n");
  EXPECT_EQ(machine.console.Output(), "");
  EXPECT_FALSE(machine.services.Find(kName).has_value());
}

TEST_F(InstallServiceTest, FailedCreationIsPrintedAndLeavesNoService) {
  PutService();
  machine.faults.Fail("CreateServiceW", {.code = 1057});
  EXPECT_EQ(InstallService(), 1);
  EXPECT_EQ(machine.console.Errors(), "CreateService failed err=1057\n");
  EXPECT_EQ(machine.console.Output(), "");
  EXPECT_FALSE(machine.services.Find(kName).has_value());
}

TEST_F(InstallServiceTest, FailedStartIsPrintedAndTheServiceStaysInstalled) {
  machine.faults.Fail("StartServiceW", {.code = 1053});
  EXPECT_EQ(InstallService(), 1);
  EXPECT_EQ(machine.console.Errors(), "StartService failed err=1053\n");
  EXPECT_EQ(machine.console.Output(), "");
  EXPECT_EQ(Installed().binaryPath, kCommandLine);
}

TEST_F(InstallServiceTest, ServiceThatRunsAlreadyCountsAsStarted) {
  machine.faults.Fail("StartServiceW", {.code = 1056});
  EXPECT_EQ(InstallService(), 0);
  EXPECT_EQ(machine.console.Errors(), "");
  EXPECT_EQ(machine.console.Output().substr(0, 35), "Installed and started TavrinService");
}

TEST_F(InstallServiceTest, FailedDescriptionIsIgnored) {
  machine.faults.Fail("ChangeServiceConfig2W");
  EXPECT_EQ(InstallService(), 0);
  EXPECT_EQ(Installed().description, "");
}

TEST_F(InstallServiceTest, FailedStopAndQueryOfTheOldServiceAreIgnored) {
  PutService(SERVICE_STOPPED);
  machine.faults.Fail("ControlService");
  machine.faults.Fail("QueryServiceStatus");
  EXPECT_EQ(InstallService(), 0);
  EXPECT_EQ(Installed().binaryPath, kCommandLine);
}

TEST_F(InstallServiceTest, FailedDeletionIsIgnoredAndTheCreationTellsOfIt) {
  PutService();
  machine.faults.Fail("DeleteService");
  EXPECT_EQ(InstallService(), 1);
  EXPECT_EQ(machine.console.Errors(), "CreateService failed err=1073\n");
}

TEST_F(InstallServiceTest, ServiceThatHangsOnStopCostsTenSecondsAndIsDeletedRegardless) {
  PutServiceThatHangs();
  EXPECT_EQ(InstallService(), 1);
  EXPECT_EQ(machine.calls.Count("DeleteService"), 1u);
  EXPECT_EQ(Elapsed(), 10400u);
  // Its process is still there, so the name is not free yet.
  EXPECT_EQ(machine.console.Errors(), "CreateService failed err=1072\n");
}

TEST_F(InstallServiceTest, ModulePathThatIsUnknownIsFrozenAsEmpty) {
  machine.faults.Fail("GetModuleFileNameW");
  EXPECT_EQ(InstallService(), 0);
  EXPECT_EQ(Installed().binaryPath, R"("" --runtime "C:\run")");
}

TEST_F(InstallServiceTest, NothingIsWrittenToTheLog) {
  (void)InstallService();
  (void)UninstallService();
  EXPECT_EQ(machine.calls.Count("CreateFileW"), 0u);
}

}  // namespace
}  // namespace vpn
