#include "tests/e2e/harness/installed_service_test.h"

#include "tests/e2e/harness/waiting.h"
#include "tests/standins/shared_machine.h"
#include "tests/standins/text.h"

namespace e2e {

void InstalledServiceTest::TearDown() {
  if (!IsServiceInstalled()) return;
  HANDLE process = nullptr;
  if (WindowsService service; service.Status().dwProcessId != 0) process = service.OpenProcess();
  EXPECT_EQ(Run(L"--uninstall"), 0U);
  if (process == nullptr) return;
  if (WaitForSingleObject(process, kPatience) != WAIT_OBJECT_0) {
    ADD_FAILURE() << "the service's process did not end";
    TerminateProcess(process, 99);
  }
  CloseHandle(process);
}

DWORD InstalledServiceTest::Run(const std::wstring& arguments) {
  return RunCopy(box.serviceExe(), arguments);
}

DWORD InstalledServiceTest::RunCopy(const std::wstring& executable, const std::wstring& arguments) {
  Launch(executable, arguments);
  return service().WaitForExitCode();
}

void InstalledServiceTest::Install() {
  ASSERT_FALSE(IsServiceInstalled()) << "an installed service is in the way";
  NameMachineFor(box.service());
  ASSERT_EQ(Run(L"--install --runtime \"" + box.runtime() + L"\""), 0U) << Errors();
}

void InstalledServiceTest::NameMachineFor(const std::wstring& serviceDirectory) const {
  WriteText(serviceDirectory + L"\\" + standins::kMachineFile, standins::ToUtf8(box.machine()));
}

}  // namespace e2e
