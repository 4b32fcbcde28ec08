// Discovery of the runtime directory: the one in which the Xray program can be found.
#ifndef TAVRIN_SRC_RUNTIME_RUNTIME_DIR_H_
#define TAVRIN_SRC_RUNTIME_RUNTIME_DIR_H_

#include <string>

namespace vpn {

// The first hit of: the environment variable TAVRIN_RUNTIME (as written), "runtime" beside the
// executable, the executable's own directory, the developer's layout. With no hit, the full path of
// "runtime" beside the executable, existing or not. Never empty, never fails.
std::wstring FindRuntimeDir();

}  // namespace vpn

#endif  // TAVRIN_SRC_RUNTIME_RUNTIME_DIR_H_
