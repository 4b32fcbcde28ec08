// Parts of preflight.cpp, for its tests.
#ifndef TAVRIN_SRC_TUNNEL_PREFLIGHT_INTERNAL_H_
#define TAVRIN_SRC_TUNNEL_PREFLIGHT_INTERNAL_H_

#include <optional>
#include <string>

#include "src/common/status.h"

namespace vpn {

// Friendly name of an adapter that is up and belongs to another tunnel. One with `ownName` in its
// friendly name is this system's own.
std::optional<std::wstring> FindConflictingAdapter(const std::wstring& ownName);

// Fails when the system proxy is switched on.
Status CheckSystemProxy();

}  // namespace vpn

#endif  // TAVRIN_SRC_TUNNEL_PREFLIGHT_INTERNAL_H_
