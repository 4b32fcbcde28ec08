#include "src/net/adapter_kind.h"

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

}  // namespace

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

}  // namespace vpn
