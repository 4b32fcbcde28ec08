// The machine's adapters: their list, what their names tell of them, and waiting for ours.
#ifndef TAVRIN_SRC_NET_ADAPTERS_H_
#define TAVRIN_SRC_NET_ADAPTERS_H_

#include "src/net/ip_helper.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace vpn {

// The adapters of one moment, in the platform's list order.
class AdapterList {
 public:
  // `family` and `flags` as GetAdaptersAddresses takes them. One call for the size, one for the
  // list; a list that has outgrown the buffer in between counts as unreadable.
  AdapterList(ULONG family, ULONG flags);

  // Null when there is no adapter or the list can't be read. Valid as long as this object.
  const IP_ADAPTER_ADDRESSES* first() const { return first_; }

 private:
  std::vector<std::byte> buffer_;
  const IP_ADAPTER_ADDRESSES* first_ = nullptr;
};

struct AdapterNames {
  std::wstring friendlyName;  // empty for null, both
  std::wstring description;
};
AdapterNames NamesOf(const IP_ADAPTER_ADDRESSES& adapter);

// Exact, case included; a null name equals nothing.
bool HasFriendlyName(const IP_ADAPTER_ADDRESSES& adapter, const std::wstring& alias);

// The three questions below are answered by words in the names, in any case of their letters.

// No physical interface. By the alias alone.
bool IsVirtualInterfaceAlias(const std::wstring& alias);

// A tunnel of another program: one whose friendly name does not hold `ownName`.
bool IsForeignTunnel(const AdapterNames& names, const std::wstring& ownName);

// The adapter that tun2socks creates: a Wintun adapter with `ownName` in either name.
bool IsOwnTunnel(const AdapterNames& names, const std::wstring& ownName);

// Waiting for the adapter that tun2socks creates. Budgets are in milliseconds; one of 0 makes no
// look at all, one of 1 at most a single one.

// The friendly name of this system's own adapter, whose names hold `name`, once it is up.
std::optional<std::wstring> WaitForTunAdapter(const std::wstring& name, DWORD budget);

// True once the adapter of exactly this friendly name has an IPv4 address, whichever it is.
bool WaitForAdapterIpv4(const std::wstring& alias, DWORD budget);

}  // namespace vpn

#endif  // TAVRIN_SRC_NET_ADAPTERS_H_
