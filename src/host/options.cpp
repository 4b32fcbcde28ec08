#include "src/host/options.h"

#include <windows.h>

#include <cstdlib>
#include <string_view>
#include <utility>

namespace vpn {
namespace {

// An empty value changes no directory, but it counts as given and so prevents the discovery.
void TakeRuntimeDir(std::wstring value, Options& options) {
  if (!options.runtimeDir || !value.empty()) {
    options.runtimeDir = std::move(value);
  }
}

}  // namespace

Options ParseOptions(int argc, const wchar_t* const* argv) {
  Options options;
  for (int i = 1; i < argc; ++i) {
    const std::wstring_view argument = argv[i];
    const bool hasValue = i + 1 < argc;
    if (argument == L"--console") {
      options.console = true;
    } else if (argument == L"--daemon") {
      options.daemon = true;
    } else if (argument == L"--install") {
      options.install = true;
    } else if (argument == L"--uninstall") {
      options.uninstall = true;
    } else if (argument == L"--runtime" && hasValue) {
      TakeRuntimeDir(argv[++i], options);
    } else if (argument == L"--owner-pid" && hasValue) {
      options.ownerPid = static_cast<std::uint32_t>(_wtoi(argv[++i]));
    }
  }
  return options;
}

}  // namespace vpn
