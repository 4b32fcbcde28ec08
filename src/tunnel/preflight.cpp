#include "src/tunnel/preflight.h"

#include <windows.h>

#include <array>

#include "src/common/deployment.h"
#include "src/common/number_text.h"
#include "src/common/unique_handle.h"
#include "src/net/adapters.h"
#include "src/tunnel/port_probe.h"
#include "src/tunnel/tunnel_config.h"
#include "src/tunnel/tunnel_internal.h"

namespace vpn {
namespace {

constexpr DWORD kSingleAttempt = 1;  // milliseconds

struct RegistryKeyTraits : NullIsEmpty<HKEY> {
  static void close(HKEY value) { (void)RegCloseKey(value); }
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

}  // namespace

Status CheckConflicts() {
  return CheckForeignAdapters()
      .andThen([] { return CheckSystemProxy(HKEY_CURRENT_USER); })
      .andThen(CheckSocksPort);
}

Status CheckForeignAdapters() {
  const std::optional<std::wstring> found = FindConflictingAdapter(kAdapterName);
  if (!found) {
    return Status::success();
  }
  return Status::failure(L"检测到其他 VPN 正在使用网络（" + *found +
                         L"）。请先退出 v2rayN / Clash 等客户端的 TUN 模式，再连接。");
}

Status CheckSocksPort() {
  if (!WaitForLocalPort(kSocksPort, kSingleAttempt, nullptr)) {
    return Status::success();
  }
  return Status::failure(L"本机端口 " + DecimalText(kSocksPort) +
                         L" 已被其他程序占用，无法建立隧道。请退出其他代理客户端后重试。");
}

std::optional<std::wstring> FindConflictingAdapter(const std::wstring& ownName) {
  const AdapterList adapters(AF_UNSPEC, 0);
  for (const auto* adapter = adapters.first(); adapter != nullptr; adapter = adapter->Next) {
    const AdapterNames names = NamesOf(*adapter);
    if (adapter->OperStatus == IfOperStatusUp && IsForeignTunnel(names, ownName)) {
      return names.friendlyName;
    }
  }
  return std::nullopt;
}

Status CheckSystemProxy(HKEY user) {
  RegistryKey settings;
  if (RegOpenKeyExW(user, kProxySettingsKey, 0, KEY_QUERY_VALUE, settings.put()) != ERROR_SUCCESS ||
      !IsProxyEnabled(settings.get())) {
    return Status::success();
  }
  const std::wstring server = ProxyServer(settings.get());
  return Status::failure(L"系统代理正在开启（" + (server.empty() ? L"未知" : server) +
                         L"）。请先关闭 v2rayN / Clash 等客户端的系统代理，再连接。");
}

}  // namespace vpn
