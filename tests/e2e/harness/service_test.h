// The fixture of all end-to-end tests: an installation in a sandbox with a signed-in local account,
// its simulated machine, and the service, started in console mode when a test asks for it.
#ifndef TAVRIN_TESTS_E2E_HARNESS_SERVICE_TEST_H_
#define TAVRIN_TESTS_E2E_HARNESS_SERVICE_TEST_H_

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "tests/e2e/harness/account.h"
#include "tests/e2e/harness/machine.h"
#include "tests/e2e/harness/pipe_client.h"
#include "tests/e2e/harness/sandbox.h"
#include "tests/e2e/harness/service_process.h"

namespace e2e {

// Replies, byte for byte.
inline constexpr char kUp[] = R"({"ok":true,"running":true,"error":""})";
inline constexpr char kDown[] = R"({"ok":true,"running":false,"error":""})";
// A refusal, whose text holds nothing that would be escaped.
std::string Refusal(const std::string& text, bool running = false);

class ServiceTest : public ::testing::Test {
 protected:
  explicit ServiceTest(const std::wstring& runtimeName = L"runtime");
  ~ServiceTest() override;

  void WriteAccount(const Account& account) const;
  // `--console --runtime <runtime>`. Does not wait: a client waits for the pipe anyway.
  void StartService(const Environment& environment = {});
  // Any other command line, of any copy of the service.
  void Launch(const std::wstring& executable, const std::wstring& arguments,
              const Environment& environment = {});
  // By the operation; expects exit code 0.
  void ShutDown();
  ServiceProcess& service() { return *service_; }
  // What the last process started has printed on either stream, without carriage returns.
  std::string Output() const;
  std::string Errors() const;
  std::vector<std::string> ServiceLog() const { return ReadLines(box.serviceLog()); }
  // The labels of the trace, one for each line, and checks the form of the lines.
  std::vector<std::string> TraceLabels() const;

  Sandbox box;
  Machine machine;

 private:
  // A file for each process: an ended one's may still be held open for a moment.
  std::wstring OutputPath() const;

  std::unique_ptr<ServiceProcess> service_;
  int launches_ = 0;
};

// Waits for the end of a process and closes the handle; a null handle counts as ended.
void ExpectEnds(HANDLE process);

}  // namespace e2e

#endif  // TAVRIN_TESTS_E2E_HARNESS_SERVICE_TEST_H_
