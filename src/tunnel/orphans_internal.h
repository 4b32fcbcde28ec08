// A part of orphans.cpp, for its tests.
#ifndef TAVRIN_SRC_TUNNEL_ORPHANS_INTERNAL_H_
#define TAVRIN_SRC_TUNNEL_ORPHANS_INTERNAL_H_

#include <string>

namespace vpn {

// Ends every process whose image name begins with `name` and whose executable lies in or below
// `directory`, ignoring case; one of the same name elsewhere is never touched. True when at least
// one was found and told to end. Empty arguments match nothing.
bool KillProcessesUnder(const std::wstring& directory, const std::wstring& name);

}  // namespace vpn

#endif  // TAVRIN_SRC_TUNNEL_ORPHANS_INTERNAL_H_
