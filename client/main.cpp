#include <cstdlib>
#include <string>
#include <vector>

#include "client/commands/commands.h"

extern "C" int wmain(int argc, wchar_t** argv) {
  return vpn::RunClient(std::vector<std::wstring>(argv + (argc > 0 ? 1 : 0), argv + argc));
}

// libstdc++'s own prints the type of an exception that nobody caught, for which it brings its
// demangler and 45 KiB along. Nothing here ends by one.
namespace __gnu_cxx {
// NOLINTNEXTLINE(readability-identifier-naming): the library's name
void __verbose_terminate_handler() {
  std::abort();
}
}  // namespace __gnu_cxx
