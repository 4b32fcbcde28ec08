#include "tests/standins/tun2socks_options.h"

#include <map>
#include <set>

#include "tests/standins/text.h"

namespace standins {

std::optional<Tun2socksOptions> ReadTun2socksOptions(int argc, wchar_t** argv) {
  static const std::set<std::string> withValue = {"--loglevel",   "--device",     "--mtu",
                                                  "--tcp-sndbuf", "--tcp-rcvbuf", "--proxy"};
  std::map<std::string, std::string> values;
  for (int i = 1; i < argc; ++i) {
    const std::string flag = ToUtf8(argv[i]);
    if (flag == "--tcp-auto-tuning") continue;
    if (!withValue.contains(flag) || i + 1 == argc) return std::nullopt;
    values[flag] = ToUtf8(argv[++i]);
  }
  return Tun2socksOptions{values["--device"], values["--proxy"]};
}

}  // namespace standins
