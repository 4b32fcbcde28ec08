#include "tests/bench/service/daemon.h"

#include <stdexcept>

#include "tests/bench/service/exchange.h"
#include "tests/e2e/harness/account.h"

namespace bench {

Installation::Installation() : machine(box.machine(), box.root()) {
  e2e::WriteText(box.runtime() + L"\\account.json", e2e::AccountText(e2e::Account()));
  e2e::WriteText(box.runtime() + L"\\session.json", e2e::SessionText(e2e::Account().email));
}

std::unique_ptr<e2e::ServiceProcess> Installation::StartDaemon() const {
  return StartFile(box.serviceExe(), L"--daemon --runtime \"" + box.runtime() + L"\"");
}

std::unique_ptr<e2e::ServiceProcess> Installation::Start(const std::wstring& name,
                                                         const std::wstring& arguments) const {
  const std::wstring path = box.service() + L"\\" + name + L".exe";
  if (!e2e::Exists(path)) e2e::CopyProgram(L"bench\\" + name + L".exe", path);
  return StartFile(path, arguments);
}

std::unique_ptr<e2e::ServiceProcess> Installation::StartFile(const std::wstring& path,
                                                             const std::wstring& arguments) const {
  const e2e::Environment environment = {{L"TAVRIN_TEST_MACHINE", box.machine()}};
  return std::make_unique<e2e::ServiceProcess>(
      path, arguments, environment, box.root() + L"\\output.txt", nullptr, DETACHED_PROCESS);
}

void Installation::ShutDown(e2e::ServiceProcess& service) {
  (void)Exchange(kServicePipe, R"({"op":"shutdown"})");
  if (service.WaitForExitCode() != 0) throw std::runtime_error("the service did not end well");
}

}  // namespace bench
