// The pipe server, on the test's own thread or behind it, and its clients.
#ifndef TAVRIN_TESTS_UNIT_CONTROL_PIPE_SERVER_FIXTURE_H_
#define TAVRIN_TESTS_UNIT_CONTROL_PIPE_SERVER_FIXTURE_H_

#include <windows.h>

#include <set>
#include <string>
#include <string_view>

#include "src/control/pipe_server.h"
#include "tests/sim/pipe_client.h"
#include "tests/unit/background_server.h"
#include "tests/unit/control/control_fixture.h"

namespace unit {

inline constexpr char kStatus[] = R"({"op":"status"})";
inline constexpr char kConnect[] = R"({"op":"connect"})";

class PipeServer : public ControlTest {
 protected:
  // The server on the test's own thread, stopped in front of its first wait.
  void ServeUntilFirstWait() {
    machine.faults.Before("ConnectNamedPipe", 1, [] { vpn::WakeControlPipe(); });
    vpn::ServeControlPipe();
  }
  static int Serve() {
    vpn::ServeControlPipe();
    return 0;
  }
  std::string Exchange(std::string_view request) {
    return sim::PipeClient::Exchange(machine, request).value_or("no reply");
  }
  void StopAndExpectEnd(BackgroundServer& server) {
    vpn::WakeControlPipe();
    EXPECT_TRUE(server.Ends());
  }
};

}  // namespace unit

#endif  // TAVRIN_TESTS_UNIT_CONTROL_PIPE_SERVER_FIXTURE_H_
