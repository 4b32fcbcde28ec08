// What only the tests call beside this room's own files.
#ifndef TAVRIN_SRC_TUNNEL_TUNNEL_INTERNAL_H_
#define TAVRIN_SRC_TUNNEL_TUNNEL_INTERNAL_H_

#include <optional>
#include <string>

namespace vpn {

// orphans.cpp

// Ends every process whose image name begins with `name` and whose executable lies in or below
// `directory`, ignoring case; one of the same name elsewhere is never touched. True when at least
// one was found and told to end. Empty arguments match nothing.
bool KillProcessesUnder(const std::wstring& directory, const std::wstring& name);

// preflight.cpp

// Friendly name of an adapter that is up and belongs to another tunnel. One with `ownName` in its
// friendly name is this system's own.
std::optional<std::wstring> FindConflictingAdapter(const std::wstring& ownName);

}  // namespace vpn

#endif  // TAVRIN_SRC_TUNNEL_TUNNEL_INTERNAL_H_
