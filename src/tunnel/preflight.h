// Refusals of a start beside another VPN or proxy client. Nothing is changed here; what can't be
// read counts as no conflict.
#ifndef TAVRIN_SRC_TUNNEL_PREFLIGHT_H_
#define TAVRIN_SRC_TUNNEL_PREFLIGHT_H_

#include <string>

namespace vpn {

// All checks in their order: another tunnel's adapter, the system proxy, the SOCKS port. True at
// the first that hits, with the user's text in `error`.
bool HasConflict(std::wstring& error);

// True when an adapter that is up belongs to another tunnel, with its friendly name in `found`. An
// adapter with `ownName` in its friendly name is this system's own.
bool FindConflictingAdapter(const std::wstring& ownName, std::wstring& found);

// True when the system proxy is switched on, with the user's text in `error`.
bool CheckSystemProxy(std::wstring& error);

}  // namespace vpn

#endif  // TAVRIN_SRC_TUNNEL_PREFLIGHT_H_
