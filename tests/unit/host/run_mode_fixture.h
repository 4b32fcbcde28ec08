// What the tests of the run modes share.
#ifndef TAVRIN_TESTS_UNIT_HOST_RUN_MODE_FIXTURE_H_
#define TAVRIN_TESTS_UNIT_HOST_RUN_MODE_FIXTURE_H_

#include <functional>
#include <string>

#include "src/runtime/process_state.h"
#include "tests/unit/background_server.h"
#include "tests/unit/product_state.h"
#include "tests/unit/runtime_files.h"

namespace unit {

inline constexpr char kOkIdle[] = R"({"ok":true,"running":false,"error":""})";
inline constexpr char kOkRunning[] = R"({"ok":true,"running":true,"error":""})";
inline constexpr char kConnect[] = R"({"op":"connect"})";
inline constexpr char kShutdown[] = R"({"op":"shutdown"})";

class RunModeTest : public ProductTest {
 protected:
  RunModeTest() {
    machine.files.PutDirectory(L"C:\\run");
    vpn::SetRuntimeDir(L"C:\\run");
  }
  std::string Log() { return machine.files.Read(L"C:\\run\\tavrin-service.log").value_or(""); }
  // Runs in front of the server's first wait for a client.
  void AtFirstWait(std::function<void()> action) {
    machine.faults.Before("ConnectNamedPipe", 1, std::move(action));
  }
  std::string Exchange(const char* request) {
    return sim::PipeClient::Exchange(machine, request).value_or("no reply");
  }
};

}  // namespace unit

#endif  // TAVRIN_TESTS_UNIT_HOST_RUN_MODE_FIXTURE_H_
