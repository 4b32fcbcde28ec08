// Refusals of a start beside another VPN or proxy client. Nothing is changed here; what can't be
// read counts as no conflict.
#ifndef TAVRIN_SRC_TUNNEL_PREFLIGHT_H_
#define TAVRIN_SRC_TUNNEL_PREFLIGHT_H_

#include <windows.h>

#include "src/common/status.h"

namespace vpn {

// All checks in their order: another tunnel's adapter, the system proxy, the SOCKS port. Fails at
// the first that hits.
Status CheckConflicts();

// Each of them alone. `user` is the root of the user's registry, HKEY_CURRENT_USER or another's.
Status CheckForeignAdapters();
Status CheckSystemProxy(HKEY user);
inline constexpr wchar_t kProxySettingsKey[] =
    L"Software\\Microsoft\\Windows\\CurrentVersion\\Internet Settings";  // below `user`
Status CheckSocksPort();

}  // namespace vpn

#endif  // TAVRIN_SRC_TUNNEL_PREFLIGHT_H_
