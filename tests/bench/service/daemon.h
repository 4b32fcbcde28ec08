// The service as it is used: a daemon without a console, installed in a sandbox of its own.
#ifndef TAVRIN_TESTS_BENCH_SERVICE_DAEMON_H_
#define TAVRIN_TESTS_BENCH_SERVICE_DAEMON_H_

#include <memory>
#include <string>

#include "tests/e2e/harness/machine.h"
#include "tests/e2e/harness/sandbox.h"
#include "tests/e2e/harness/service_process.h"

namespace bench {

// An installation with the local account of the tests, signed in.
class Installation {
 public:
  Installation();

  // Starts the service and gives it back at once; the caller waits for an answer.
  std::unique_ptr<e2e::ServiceProcess> StartDaemon() const;
  // Some other program in the same way. None has a console: Wine would start a program for it, for
  // which the service waits and an empty program does not.
  std::unique_ptr<e2e::ServiceProcess> StartFile(const std::wstring& path,
                                                 const std::wstring& arguments) const;
  // One of the build, "bench\\NAME.exe".
  std::unique_ptr<e2e::ServiceProcess> Start(const std::wstring& name,
                                             const std::wstring& arguments = L"") const;
  // By the operation; throws std::runtime_error when it does not end well.
  static void ShutDown(e2e::ServiceProcess& service);

  const e2e::Sandbox box;
  const e2e::Machine machine;
};

}  // namespace bench

#endif  // TAVRIN_TESTS_BENCH_SERVICE_DAEMON_H_
