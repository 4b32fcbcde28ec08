#include "src/tunnel/preflight.h"

#include <windows.h>

#include <algorithm>
#include <array>

#include "src/common/socks_port.h"
#include "src/common/text.h"
#include "src/common/unique_handle.h"
#include "src/net/adapter_list.h"
#include "src/tunnel/port_probe.h"
#include "src/tunnel/tunnel_config.h"

namespace vpn {
namespace {

constexpr const wchar_t* kIgnoredAdapters[] = {L"Teredo", L"ISATAP", L"6to4", L"Loopback",
                                               L"IP-HTTPS"};
constexpr const wchar_t* kTunnelAdapters[] = {
    L"wintun",    L"sing-tun", L"singbox", L"tun2socks", L"TAP-Windows",
    L"WireGuard", L"OpenVPN",  L"Clash",   L"Tailscale", L"ZeroTier"};

constexpr DWORD kSingleAttempt = 1;  // milliseconds

template <size_t Count>
bool AnyWordIn(const wchar_t* const (&words)[Count], const AdapterNames& names) {
  return std::any_of(std::begin(words), std::end(words), [&](const wchar_t* word) {
    return ContainsNoCase(names.description, word) || ContainsNoCase(names.friendlyName, word);
  });
}

bool IsTunnelAdapter(const AdapterNames& names) {
  return !AnyWordIn(kIgnoredAdapters, names) &&
         (AnyWordIn(kTunnelAdapters, names) || ContainsNoCase(names.description, L"Tunnel"));
}

struct RegistryKeyTraits {
  using Type = HKEY;
  static Type Empty() { return nullptr; }
  static bool IsValid(Type value) { return value != nullptr; }
  static void Close(Type value) { (void)RegCloseKey(value); }
};
using RegistryKey = UniqueHandle<RegistryKeyTraits>;

bool IsProxyEnabled(HKEY settings) {
  DWORD value = 0;
  DWORD type = 0;
  DWORD size = sizeof(value);
  return RegQueryValueExW(settings, L"ProxyEnable", nullptr, &type, reinterpret_cast<BYTE*>(&value),
                          &size) == ERROR_SUCCESS &&
         type == REG_DWORD && value != 0;
}

// Up to the first zero character; empty when the value can't be read or does not fit.
std::wstring ProxyServer(HKEY settings) {
  std::array<wchar_t, 257> server{};  // the last unit stays zero, whatever the registry holds
  DWORD size = 256 * sizeof(wchar_t);
  if (RegQueryValueExW(settings, L"ProxyServer", nullptr, nullptr,
                       reinterpret_cast<BYTE*>(server.data()), &size) != ERROR_SUCCESS) {
    return {};
  }
  return server.data();
}

bool CheckAdapters(std::wstring& error) {
  std::wstring found;
  if (!FindConflictingAdapter(kAdapterName, found)) {
    return false;
  }
  error = L"检测到其他 VPN 正在使用网络（" + found +
          L"）。请先退出 v2rayN / Clash 等客户端的 TUN 模式，再连接。";
  return true;
}

bool CheckSocksPort(std::wstring& error) {
  if (!WaitForLocalPort(kSocksPort, kSingleAttempt, nullptr)) {
    return false;
  }
  error = L"本机端口 " + std::to_wstring(kSocksPort) +
          L" 已被其他程序占用，无法建立隧道。请退出其他代理客户端后重试。";
  return true;
}

}  // namespace

bool HasConflict(std::wstring& error) {
  return CheckAdapters(error) || CheckSystemProxy(error) || CheckSocksPort(error);
}

bool FindConflictingAdapter(const std::wstring& ownName, std::wstring& found) {
  found.clear();
  const AdapterList adapters(AF_UNSPEC, 0);
  for (const auto* adapter = adapters.first(); adapter != nullptr; adapter = adapter->Next) {
    if (adapter->OperStatus != IfOperStatusUp) {
      continue;
    }
    const AdapterNames names = NamesOf(*adapter);
    if (IsTunnelAdapter(names) && !ContainsNoCase(names.friendlyName, ownName)) {
      found = names.friendlyName;
      return true;
    }
  }
  return false;
}

bool CheckSystemProxy(std::wstring& error) {
  RegistryKey settings;
  if (RegOpenKeyExW(HKEY_CURRENT_USER,
                    L"Software\\Microsoft\\Windows\\CurrentVersion\\Internet Settings", 0,
                    KEY_QUERY_VALUE, settings.put()) != ERROR_SUCCESS ||
      !IsProxyEnabled(settings.get())) {
    return false;
  }
  const std::wstring server = ProxyServer(settings.get());
  error = L"系统代理正在开启（" + (server.empty() ? L"未知" : server) +
          L"）。请先关闭 v2rayN / Clash 等客户端的系统代理，再连接。";
  return true;
}

}  // namespace vpn
