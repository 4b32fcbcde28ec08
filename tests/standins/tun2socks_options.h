// The command line of tun2socks, as its flag parser takes it.
#ifndef TAVRIN_TESTS_STANDINS_TUN2SOCKS_OPTIONS_H_
#define TAVRIN_TESTS_STANDINS_TUN2SOCKS_OPTIONS_H_

#include <optional>
#include <string>

namespace standins {

struct Tun2socksOptions {
  std::string device;
  std::string proxy;
};

// Empty for a flag that it does not know, a missing value or a word without a flag.
std::optional<Tun2socksOptions> ReadTun2socksOptions(int argc, wchar_t** argv);

}  // namespace standins

#endif  // TAVRIN_TESTS_STANDINS_TUN2SOCKS_OPTIONS_H_
