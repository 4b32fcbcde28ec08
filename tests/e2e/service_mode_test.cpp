// The service under the service manager, as far as the command line and the control pipe show it.
#include "tests/e2e/harness/expect.h"
#include "tests/e2e/harness/service_test.h"
#include "tests/e2e/harness/waiting.h"
#include "tests/standins/text.h"

namespace e2e {
namespace {

bool IsInstalled() {
  const SC_HANDLE manager = OpenSCManagerW(nullptr, nullptr, SC_MANAGER_CONNECT);
  const SC_HANDLE service = OpenServiceW(manager, L"TavrinService", SERVICE_QUERY_STATUS);
  if (service != nullptr) CloseServiceHandle(service);
  if (manager != nullptr) CloseServiceHandle(manager);
  return service != nullptr;
}

// Needs an elevated caller, and a machine on which the product is not installed.
class ServiceMode : public ServiceTest {
 protected:
  void SetUp() override {
    ASSERT_FALSE(IsInstalled()) << "an installed service is in the way";
    Run(L"--install --uninstall --runtime \"" + box.runtime() + L"\"");
    installed_ = true;
  }
  void TearDown() override {
    if (installed_ && IsInstalled()) Run(L"--uninstall");
  }
  // Runs to its end, with exit code 0; gives what it printed.
  std::string Run(const std::wstring& arguments) {
    Launch(box.serviceExe(), arguments);
    EXPECT_EQ(service().WaitForExitCode(), 0U);
    return Output();
  }
  std::string Runtime() const { return standins::ToUtf8(box.runtime()); }

 private:
  bool installed_ = false;
};

TEST_F(ServiceMode, InstallGoesBeforeUninstallAndStartsTheService) {
  EXPECT_EQ(Output(), "Installed and started TavrinService\nbinPath \"" +
                          standins::ToUtf8(box.serviceExe()) + "\" --runtime \"" + Runtime() +
                          "\"\n");
  EXPECT_EQ(Ask(R"({"op":"status"})"), kDown);
  EXPECT_EQ(ServiceLog().at(0), "service running. runtime=" + Runtime());
}

TEST_F(ServiceMode, ShutdownLeavesTheServiceRunning) {
  EXPECT_EQ(Ask(R"({"op":"shutdown"})"), kDown);
  EXPECT_EQ(Ask(R"({"op":"status"})"), kDown);
}

TEST_F(ServiceMode, UninstallStopsTheServiceAndRemovesIt) {
  ASSERT_EQ(Ask(R"({"op":"status"})"), kDown);
  EXPECT_EQ(Run(L"--uninstall"), "Uninstalled TavrinService\n");
  WaitUntil("the service stops", [this] { return ServiceLog().back() == "service stopped"; });
  EXPECT_EQ(Run(L"--uninstall"), "Service not installed.\n");
}

}  // namespace
}  // namespace e2e
