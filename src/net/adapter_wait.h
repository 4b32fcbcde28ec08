// Waiting for the adapter that tun2socks creates. Budgets are in milliseconds; one of 0 makes no
// look at all, one of 1 at most a single one.
#ifndef TAVRIN_SRC_NET_ADAPTER_WAIT_H_
#define TAVRIN_SRC_NET_ADAPTER_WAIT_H_

#include <windows.h>

#include <optional>
#include <string>

namespace vpn {

// The friendly name of this system's own adapter, whose names hold `name`, once it is up.
std::optional<std::wstring> WaitForTunAdapter(const std::wstring& name, DWORD budget);

// True once the adapter of exactly this friendly name has an IPv4 address, whichever it is.
bool WaitForAdapterIpv4(const std::wstring& alias, DWORD budget);

}  // namespace vpn

#endif  // TAVRIN_SRC_NET_ADAPTER_WAIT_H_
