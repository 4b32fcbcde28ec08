// What an adapter is, judged by the words in its names, in any case of their letters: virtual, some
// tunnel's, or this system's own.
#ifndef TAVRIN_SRC_NET_ADAPTER_KIND_H_
#define TAVRIN_SRC_NET_ADAPTER_KIND_H_

#include <string>

#include "src/net/adapter_list.h"

namespace vpn {

// No physical interface. By the alias alone.
bool IsVirtualInterfaceAlias(const std::wstring& alias);

// A tunnel of another program: one whose friendly name does not hold `ownName`.
bool IsForeignTunnel(const AdapterNames& names, const std::wstring& ownName);

// The adapter that tun2socks creates: a Wintun adapter with `ownName` in either name.
bool IsOwnTunnel(const AdapterNames& names, const std::wstring& ownName);

}  // namespace vpn

#endif  // TAVRIN_SRC_NET_ADAPTER_KIND_H_
