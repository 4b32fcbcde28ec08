#include "src/net/adapters.h"

#include <algorithm>

#include "src/common/text.h"

namespace vpn {
namespace {

constexpr const wchar_t* kVirtualWords[] = {L"VMware",     L"Loopback", L"wintun",   L"xray",
                                            L"VirtualBox", L"Hyper-V",  L"vEthernet"};

// The platform's own tunnels, which carry no other program's traffic, and its loopback.
constexpr const wchar_t* kSystemWords[] = {L"Teredo", L"ISATAP", L"6to4", L"Loopback", L"IP-HTTPS"};

constexpr const wchar_t* kTunnelWords[] = {L"wintun",      L"sing-tun",  L"singbox", L"tun2socks",
                                           L"TAP-Windows", L"WireGuard", L"OpenVPN", L"Clash",
                                           L"Tailscale",   L"ZeroTier"};

template <size_t Count>
bool HoldsAny(const std::wstring& text, const wchar_t* const (&words)[Count]) {
  return std::any_of(std::begin(words), std::end(words),
                     [&](const wchar_t* word) { return ContainsNoCase(text, word); });
}

template <size_t Count>
bool HoldAny(const AdapterNames& names, const wchar_t* const (&words)[Count]) {
  return HoldsAny(names.description, words) || HoldsAny(names.friendlyName, words);
}

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

AdapterList::AdapterList(ULONG family, ULONG flags) {
  ULONG size = 0;
  (void)GetAdaptersAddresses(family, flags, nullptr, nullptr, &size);  // fails; tells the size
  if (size == 0) {
    return;
  }
  buffer_.resize(size);
  auto* const list = reinterpret_cast<IP_ADAPTER_ADDRESSES*>(buffer_.data());
  if (GetAdaptersAddresses(family, flags, nullptr, list, &size) == NO_ERROR) {
    first_ = list;
  }
}

AdapterNames NamesOf(const IP_ADAPTER_ADDRESSES& adapter) {
  return {adapter.FriendlyName == nullptr ? L"" : adapter.FriendlyName,
          adapter.Description == nullptr ? L"" : adapter.Description};
}

bool HasFriendlyName(const IP_ADAPTER_ADDRESSES& adapter, const std::wstring& alias) {
  return adapter.FriendlyName != nullptr && alias == adapter.FriendlyName;
}

bool IsVirtualInterfaceAlias(const std::wstring& alias) {
  return HoldsAny(alias, kVirtualWords);
}

bool IsForeignTunnel(const AdapterNames& names, const std::wstring& ownName) {
  return !HoldAny(names, kSystemWords) &&
         (HoldAny(names, kTunnelWords) || ContainsNoCase(names.description, L"Tunnel")) &&
         !ContainsNoCase(names.friendlyName, ownName);
}

bool IsOwnTunnel(const AdapterNames& names, const std::wstring& ownName) {
  const bool isWintun = ContainsNoCase(names.friendlyName, L"wintun") ||
                        ContainsNoCase(names.description, L"Wintun") ||
                        ContainsNoCase(names.description, L"tun2socks");
  return isWintun && (ContainsNoCase(names.friendlyName, ownName) ||
                      ContainsNoCase(names.description, ownName));
}

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
