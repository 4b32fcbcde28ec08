// The fixture of the tests that install the service. They need an elevated caller, and a machine
// on which the product is not installed.
#ifndef TAVRIN_TESTS_E2E_HARNESS_INSTALLED_SERVICE_TEST_H_
#define TAVRIN_TESTS_E2E_HARNESS_INSTALLED_SERVICE_TEST_H_

#include <string>

#include "tests/e2e/harness/service_test.h"
#include "tests/e2e/harness/windows_service.h"

namespace e2e {

class InstalledServiceTest : public ServiceTest {
 protected:
  using ServiceTest::ServiceTest;
  // What the test has installed is removed, and its process is gone, when this returns.
  void TearDown() override;

  // Runs the service's executable to its end; gives the exit code.
  DWORD Run(const std::wstring& arguments);
  DWORD RunCopy(const std::wstring& executable, const std::wstring& arguments);
  // `--install --runtime <runtime>`, which has to succeed.
  void Install();
  // The service manager's processes do not inherit this test's environment.
  void NameMachineFor(const std::wstring& serviceDirectory) const;
};

}  // namespace e2e

#endif  // TAVRIN_TESTS_E2E_HARNESS_INSTALLED_SERVICE_TEST_H_
