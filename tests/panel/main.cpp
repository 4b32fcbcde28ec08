// test_panel [SECONDS]: a living panel on the loopback interface. Prints its ports as assignments
// that a shell can read, one for each line, and then "ready". Ends when its standard input does,
// and after 600 seconds or the number given, whatever happens.
#include <poll.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>

#include "tests/panel/admin.h"

namespace panel {
namespace {

using Clock = std::chrono::steady_clock;

// False when the time was over first.
bool AwaitEndOfInput(Clock::time_point deadline) {
  while (Clock::now() < deadline) {
    const auto left =
        std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
    pollfd input = {STDIN_FILENO, POLLIN, 0};
    char byte = 0;
    if (poll(&input, 1, static_cast<int>(left.count()) + 1) > 0 &&
        read(STDIN_FILENO, &byte, 1) <= 0) {
      return true;
    }
  }
  return false;
}

int Run(int seconds) {
  const Clock::time_point deadline = Clock::now() + std::chrono::seconds(seconds);
  Panel panel;
  TlsSettings tls;
  Listener http([&] { return std::make_unique<PanelServer>("http", panel, nullptr); });
  Listener https([&] { return std::make_unique<PanelServer>("https", panel, &tls); });
  const ClosedPort closed;
  const DeafPort deaf;
  Listener admin([&] { return MakeAdminServer(panel, {http, https, tls}); });
  const std::pair<const char*, int> ports[] = {{"HTTP", http.port()},
                                               {"HTTPS", https.port()},
                                               {"CLOSED", closed.port()},
                                               {"DEAF", deaf.port()},
                                               {"ADMIN", admin.port()}};
  for (const auto& [name, port] : ports) std::printf("TAVRIN_TEST_PANEL_%s=%d\n", name, port);
  (void)std::puts("ready");
  (void)std::fflush(stdout);
  if (AwaitEndOfInput(deadline)) return 0;
  (void)std::fputs("test_panel: the time is over\n", stderr);
  return 1;
}

}  // namespace
}  // namespace panel

int main(int argc, char** argv) {
  (void)std::signal(SIGPIPE, SIG_IGN);
  try {
    return panel::Run(argc > 1 ? std::atoi(argv[1]) : 600);
  } catch (const std::exception& failure) {
    (void)std::fprintf(stderr, "test_panel: %s\n", failure.what());
    return 1;
  }
}
