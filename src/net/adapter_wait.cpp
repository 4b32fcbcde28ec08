#include "src/net/adapter_wait.h"

#include "src/common/text.h"
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

bool IsWantedAdapter(const IP_ADAPTER_ADDRESSES& adapter, const std::wstring& name) {
  const AdapterNames names = NamesOf(adapter);
  const bool isWintun = ContainsNoCase(names.friendlyName, L"wintun") ||
                        ContainsNoCase(names.description, L"Wintun") ||
                        ContainsNoCase(names.description, L"tun2socks");
  const bool isNamed =
      ContainsNoCase(names.friendlyName, name) || ContainsNoCase(names.description, name);
  return isWintun && isNamed && adapter.OperStatus == IfOperStatusUp;
}

}  // namespace

bool WaitForTunAdapter(const std::wstring& name, std::wstring& alias, DWORD budget) {
  return PollFor(budget, [&] {
    const AdapterList adapters(AF_UNSPEC, 0);
    for (const auto* adapter = adapters.first(); adapter != nullptr; adapter = adapter->Next) {
      if (IsWantedAdapter(*adapter, name)) {
        alias = NamesOf(*adapter).friendlyName;
        return true;
      }
    }
    return false;
  });
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
