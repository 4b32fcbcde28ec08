// A service manager with or without the service, and what was asked of it.
#ifndef TAVRIN_TESTS_UNIT_HOST_SERVICE_INSTALL_FIXTURE_H_
#define TAVRIN_TESTS_UNIT_HOST_SERVICE_INSTALL_FIXTURE_H_

#include <windows.h>

#include <set>
#include <string>
#include <vector>

#include "src/runtime/console_text.h"
#include "src/runtime/process_state.h"
#include "tests/unit/product_state.h"

namespace unit {

inline constexpr char kName[] = "TavrinService";
inline constexpr char kCommandLine[] = R"("C:\App\TavrinService.exe" --runtime "C:\run")";

inline const std::set<std::string> kServiceCalls = {
    "OpenSCManagerW",        "OpenServiceW",  "CreateServiceW", "DeleteService",
    "CloseServiceHandle",    "StartServiceW", "ControlService", "QueryServiceStatus",
    "ChangeServiceConfig2W", "Sleep"};

class ServiceInstallTest : public ProductTest {
 protected:
  ServiceInstallTest() {
    machine.modulePath = L"C:\\App\\TavrinService.exe";
    vpn::SetRuntimeDir(L"C:\\run");
    vpn::UseUtf8Console();
  }

  void PutService(std::uint32_t state = SERVICE_RUNNING) {
    sim::ServiceRecord record;
    record.name = kName;
    record.displayName = "old";
    record.binaryPath = "old.exe";
    record.state = state;
    machine.services.Install(record);
  }
  void PutServiceThatStopsIn(std::uint64_t milliseconds) {
    sim::ServiceRecord record;
    record.name = kName;
    record.state = SERVICE_RUNNING;
    record.stopTakes = milliseconds;
    machine.services.Install(record);
  }
  void PutServiceThatHangs() {
    sim::ServiceRecord record;
    record.name = kName;
    record.state = SERVICE_RUNNING;
    record.hangsOnStop = true;
    machine.services.Install(record);
  }
  sim::ServiceRecord Installed() { return machine.services.Find(kName).value(); }
  std::vector<std::string> Sequence() { return machine.calls.Sequence(kServiceCalls); }
  std::uint64_t Elapsed() { return machine.clock.Now() - start_; }

 private:
  const std::uint64_t start_ = machine.clock.Now();
};

}  // namespace unit

#endif  // TAVRIN_TESTS_UNIT_HOST_SERVICE_INSTALL_FIXTURE_H_
