// The other two functions of service_install.h.
#include "src/host/service_install.h"

#include "src/host/host_internal.h"
#include "tests/unit/host/service_install_fixture.h"

namespace vpn {
namespace {

using unit::kName;

class UninstallServiceTest : public unit::ServiceInstallTest {};
class StopServiceAndWaitTest : public unit::ServiceInstallTest {
 protected:
  DWORD Stop() {
    const SC_HANDLE manager = OpenSCManagerW(nullptr, nullptr, SC_MANAGER_CONNECT);
    const SC_HANDLE service =
        OpenServiceW(manager, L"TavrinService", SERVICE_STOP | SERVICE_QUERY_STATUS);
    const DWORD result = StopServiceAndWait(service);
    (void)CloseServiceHandle(service);
    (void)CloseServiceHandle(manager);
    return result;
  }
};

TEST_F(UninstallServiceTest, MissingServiceIsPrintedAndNoFailure) {
  EXPECT_EQ(UninstallService(), 0);
  EXPECT_EQ(machine.console.Output(), "Service not installed.\n");
  EXPECT_EQ(Sequence(),
            (std::vector<std::string>{"OpenSCManagerW null, null, 1",
                                      R"(OpenServiceW service manager, "TavrinService", 0x10024)",
                                      "CloseServiceHandle service manager"}));
}

TEST_F(UninstallServiceTest, ServiceThatCannotBeOpenedCountsAsMissing) {
  PutService();
  machine.services.administrator = false;
  EXPECT_EQ(UninstallService(), 0);
  EXPECT_EQ(machine.console.Output(), "Service not installed.\n");
  EXPECT_EQ(machine.console.Errors(), "");
}

TEST_F(UninstallServiceTest, ServiceIsStoppedAndDeleted) {
  PutService();
  EXPECT_EQ(UninstallService(), 0);
  EXPECT_FALSE(machine.services.Find(kName).has_value());
  EXPECT_EQ(machine.console.Output(), "Uninstalled TavrinService\n");
  EXPECT_EQ(Sequence(),
            (std::vector<std::string>{
                "OpenSCManagerW null, null, 1",
                R"(OpenServiceW service manager, "TavrinService", 0x10024)",
                "ControlService service TavrinService, 1",
                "QueryServiceStatus service TavrinService", "DeleteService service TavrinService",
                "CloseServiceHandle service TavrinService", "CloseServiceHandle service manager"}));
}

TEST_F(UninstallServiceTest, ServiceThatHangsOnStopIsDeletedAfterTenSeconds) {
  PutServiceThatHangs();
  EXPECT_EQ(UninstallService(), 0);
  EXPECT_EQ(Elapsed(), 10000u);
  EXPECT_TRUE(Installed().markedForDelete);
  EXPECT_EQ(machine.console.Output(), "Uninstalled TavrinService\n");
}

TEST_F(UninstallServiceTest, RefusedManagerIsPrintedWithTheAdministrator) {
  machine.faults.Fail("OpenSCManagerW", {.code = 1722});
  EXPECT_EQ(UninstallService(), 1);
  EXPECT_EQ(machine.console.Errors(), "OpenSCManager failed err=1722 (need Administrator)\n");
  EXPECT_EQ(machine.console.Output(), "");
}

TEST_F(UninstallServiceTest, FailedDeletionIsPrinted) {
  PutService();
  machine.faults.Fail("DeleteService", {.code = 1072});
  EXPECT_EQ(UninstallService(), 1);
  EXPECT_EQ(machine.console.Errors(), "DeleteService failed err=1072\n");
  EXPECT_EQ(machine.console.Output(), "");
}

TEST_F(UninstallServiceTest, FailedStopIsIgnored) {
  PutService();
  machine.faults.Fail("ControlService");
  machine.faults.Fail("QueryServiceStatus");
  EXPECT_EQ(UninstallService(), 0);
  EXPECT_EQ(machine.console.Output(), "Uninstalled TavrinService\n");
}

TEST_F(StopServiceAndWaitTest, StoppedServiceIsAskedOnceAndGivesZero) {
  PutService(SERVICE_STOPPED);
  EXPECT_EQ(Stop(), 0u);
  EXPECT_EQ(machine.calls.Count("QueryServiceStatus"), 1u);
  EXPECT_EQ(Elapsed(), 0u);
}

TEST_F(StopServiceAndWaitTest, LooksEvery250Milliseconds) {
  PutServiceThatStopsIn(600);
  EXPECT_EQ(Stop(), 0u);
  EXPECT_EQ(machine.calls.TextsOf("Sleep"), (std::vector<std::string>{"250", "250", "250"}));
}

TEST_F(StopServiceAndWaitTest, LastLookIsTheFortieth) {
  PutServiceThatStopsIn(9750);
  EXPECT_EQ(Stop(), 0u);
  EXPECT_EQ(machine.calls.Count("QueryServiceStatus"), 40u);
  EXPECT_EQ(Elapsed(), 9750u);
}

TEST_F(StopServiceAndWaitTest, OneMillisecondLaterIsTooLate) {
  PutServiceThatStopsIn(9751);
  EXPECT_EQ(Stop(), 1460u);
  EXPECT_EQ(machine.calls.Count("QueryServiceStatus"), 40u);
  EXPECT_EQ(machine.calls.Count("Sleep"), 40u);
  EXPECT_EQ(Elapsed(), 10000u);
}

TEST_F(StopServiceAndWaitTest, FailedQueryGivesItsCodeAtOnce) {
  PutServiceThatHangs();
  machine.faults.Fail("QueryServiceStatus", {.nth = 3, .code = 6});
  EXPECT_EQ(Stop(), 6u);
  EXPECT_EQ(Elapsed(), 500u);
}

TEST_F(StopServiceAndWaitTest, RefusedStopIsNotLookedAt) {
  PutServiceThatStopsIn(0);
  machine.faults.Fail("ControlService", {.code = 1061});
  EXPECT_EQ(Stop(), 1460u);
  EXPECT_EQ(Elapsed(), 10000u);
}

}  // namespace
}  // namespace vpn
