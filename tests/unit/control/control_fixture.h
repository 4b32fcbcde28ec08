// A signed-in runtime directory, and a count of how often the account was really fetched.
#ifndef TAVRIN_TESTS_UNIT_CONTROL_CONTROL_FIXTURE_H_
#define TAVRIN_TESTS_UNIT_CONTROL_CONTROL_FIXTURE_H_

#include <algorithm>
#include <string>
#include <vector>

#include "src/runtime/process_state.h"
#include "tests/unit/product_state.h"
#include "tests/unit/runtime_files.h"

namespace unit {

inline constexpr char kOkIdle[] = R"({"ok":true,"running":false,"error":""})";
inline constexpr char kOkRunning[] = R"({"ok":true,"running":true,"error":""})";

class ControlTest : public ProductTest {
 protected:
  ControlTest() {
    PutRuntime(machine);
    vpn::SetRuntimeDir(kRuntimeDir);
  }

  // A fetch of the local backend opens account.json once.
  std::ptrdiff_t Fetches() {
    const std::vector<std::string> opened = machine.calls.TextsOf("_wfsopen");
    return std::count(opened.begin(), opened.end(), R"("C:\run\account.json", "rb", 64)");
  }
  // Calls of a function whose arguments begin like this: the log is written with the same functions
  // as the pipe.
  std::ptrdiff_t CallsWith(const std::string& name, const std::string& beginning) {
    const std::vector<std::string> texts = machine.calls.TextsOf(name);
    return std::count_if(texts.begin(), texts.end(),
                         [&](const std::string& text) { return text.starts_with(beginning); });
  }
  std::ptrdiff_t PipeWrites() { return CallsWith("WriteFile", "pipe"); }
  std::ptrdiff_t PipeConnections() { return CallsWith("CreateFileW", R"("\\.\pipe\)"); }
  std::string Log() { return machine.files.Read(L"C:\\run\\tavrin-service.log").value_or(""); }
  std::string GeneratedConfig() {
    return machine.files.Read(L"C:\\run\\session.json.xray.json").value_or("");
  }
  bool HasRoute(const std::string& destination, std::uint8_t prefixLength) {
    std::uint32_t address = 0;
    EXPECT_TRUE(netmodel::ParseIpv4(destination, &address));
    const auto lock = machine.Lock();
    return std::any_of(machine.network.routes.begin(), machine.network.routes.end(),
                       [&](const netmodel::Route& route) {
                         return route.destination == address && route.prefixLength == prefixLength;
                       });
  }
  std::vector<std::string> Alive() { return machine.processes.Alive(); }
};

inline const std::vector<std::string>& BothChildren() {
  static const std::vector<std::string> names = {"xray.exe", "tun2socks-windows-amd64.exe"};
  return names;
}

}  // namespace unit

#endif  // TAVRIN_TESTS_UNIT_CONTROL_CONTROL_FIXTURE_H_
