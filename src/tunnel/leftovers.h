// Undoing the TUN side of a tunnel, for the manager that remembers it and for a run that crashed.
#ifndef TAVRIN_SRC_TUNNEL_LEFTOVERS_H_
#define TAVRIN_SRC_TUNNEL_LEFTOVERS_H_

#include <string>

namespace vpn {

// After a crash, when no manager remembers anything: restores router discovery on the physical
// interface and undoes what an adapter that is still there carries. An empty alias skips the first.
void CleanupLeftoverNetwork(const std::wstring& tunAddress, const std::wstring& physicalAlias);

// Takes both split routes and the name server off the TUN interface. It may be gone already.
void ClearTunIpv4(const std::wstring& tunAlias, const std::wstring& tunAddress);

}  // namespace vpn

#endif  // TAVRIN_SRC_TUNNEL_LEFTOVERS_H_
