// The command line.
#ifndef TAVRIN_SRC_HOST_OPTIONS_H_
#define TAVRIN_SRC_HOST_OPTIONS_H_

#include <cstdint>
#include <optional>
#include <string>

namespace vpn {

struct Options {
  bool console = false;
  bool daemon = false;
  bool install = false;
  bool uninstall = false;
  std::optional<std::wstring> runtimeDir;  // set when --runtime was given with a value
  std::uint32_t ownerPid = 0;
};

// Each option is compared as a whole argument, case-sensitive; anything unknown, and a value option
// with nothing behind it, is ignored. Values are taken whatever they look like; the last one wins.
Options ParseOptions(int argc, const wchar_t* const* argv);

}  // namespace vpn

#endif  // TAVRIN_SRC_HOST_OPTIONS_H_
