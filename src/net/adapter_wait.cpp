#include "src/net/adapter_wait.h"

#include "src/net/adapter_kind.h"
#include "src/net/adapter_list.h"

namespace vpn {
namespace {

constexpr DWORD kPollInterval = 25;  // milliseconds

// Looks until `look` hits or the budget is over. The tick count has 32 bits and wraps after 49.7
// days; the unsigned difference does not mind.
template <class Look>
bool PollFor(DWORD budget, Look look) {
  const DWORD start = GetTickCount();
  while (GetTickCount() - start < budget) {
    if (look()) {
      return true;
    }
    Sleep(kPollInterval);
  }
  return false;
}

}  // namespace

std::optional<std::wstring> WaitForTunAdapter(const std::wstring& name, DWORD budget) {
  std::optional<std::wstring> alias;
  (void)PollFor(budget, [&] {
    const AdapterList adapters(AF_UNSPEC, 0);
    for (const auto* adapter = adapters.first(); adapter != nullptr; adapter = adapter->Next) {
      const AdapterNames names = NamesOf(*adapter);
      if (IsOwnTunnel(names, name) && adapter->OperStatus == IfOperStatusUp) {
        alias = names.friendlyName;
        break;
      }
    }
    return alias.has_value();
  });
  return alias;
}

bool WaitForAdapterIpv4(const std::wstring& alias, DWORD budget) {
  return PollFor(budget, [&] {
    const AdapterList adapters(AF_INET, GAA_FLAG_INCLUDE_PREFIX);
    for (const auto* adapter = adapters.first(); adapter != nullptr; adapter = adapter->Next) {
      if (HasFriendlyName(*adapter, alias) && adapter->FirstUnicastAddress != nullptr) {
        return true;
      }
    }
    return false;
  });
}

}  // namespace vpn
