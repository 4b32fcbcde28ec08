// What the stand-in for Xray reads from its configuration file, as strictly as the real one does
// where it matters: JSON proper, and the values that make the real one refuse to start.
#ifndef TAVRIN_TESTS_STANDINS_XRAY_CONFIG_H_
#define TAVRIN_TESTS_STANDINS_XRAY_CONFIG_H_

#include <cstdint>
#include <string>

namespace standins {

struct XrayConfig {
  std::string errorLog;  // UTF-8 path; empty: none
  std::string listen;    // dotted IPv4
  std::uint16_t port = 0;
};

// Throws std::exception with the reason.
XrayConfig ReadXrayConfig(const std::string& text);

}  // namespace standins

#endif  // TAVRIN_TESTS_STANDINS_XRAY_CONFIG_H_
