// Waiting for the adapter that tun2socks creates. Budgets are in milliseconds; one of 0 makes no
// look at all, one of 1 at most a single one.
#ifndef TAVRIN_SRC_NET_ADAPTER_WAIT_H_
#define TAVRIN_SRC_NET_ADAPTER_WAIT_H_

#include <windows.h>

#include <string>

namespace vpn {

// True once a Wintun adapter with `name` in its friendly name or description is up; `alias` is then
// its friendly name.
bool WaitForTunAdapter(const std::wstring& name, std::wstring& alias, DWORD budget);

// True once the adapter of exactly this friendly name has an IPv4 address, whichever it is.
bool WaitForAdapterIpv4(const std::wstring& alias, DWORD budget);

}  // namespace vpn

#endif  // TAVRIN_SRC_NET_ADAPTER_WAIT_H_
