// A bare HTTP client on sockets. It must share nothing with what is tested, WinHTTP included.
#ifndef TAVRIN_TESTS_E2E_PANEL_HARNESS_RAW_HTTP_H_
#define TAVRIN_TESTS_E2E_PANEL_HARNESS_RAW_HTTP_H_

#include <cstdint>
#include <string>

namespace e2e {

struct RawAnswer {
  int status = 0;
  std::string head;  // the status line and the headers
  std::string body;
};

// One request to the loopback interface on a connection of its own. `headers` are whole lines, each
// with its CR LF. Throws std::runtime_error when no answer comes.
RawAnswer RawExchange(std::uint16_t port, const std::string& method, const std::string& target,
                      const std::string& headers, const std::string& body);

}  // namespace e2e

#endif  // TAVRIN_TESTS_E2E_PANEL_HARNESS_RAW_HTTP_H_
