#include "src/net/netsh.h"

#include "src/net/command.h"

namespace vpn {
namespace {

constexpr DWORD kNetshBudget = 2500;  // milliseconds

void RunNetshIpv6(const std::wstring& command, const std::wstring& alias,
                  const std::wstring& rest) {
  if (!alias.empty()) {
    (void)RunCommand(L"netsh interface ipv6 " + command + L"\"" + alias + L"\"" + rest,
                     kNetshBudget);
  }
}

}  // namespace

void NetshResetDns(const std::wstring& alias) {
  (void)RunCommand(L"netsh interface ipv4 set dnsservers name=\"" + alias + L"\" source=dhcp",
                   kNetshBudget);
}

void NetshSetRouterDiscovery(const std::wstring& alias, bool enabled) {
  RunNetshIpv6(L"set interface ", alias,
               enabled ? L" routerdiscovery=enabled store=active"
                       : L" routerdiscovery=disabled store=active");
}

void NetshDisableIpv6(const std::wstring& alias) {
  RunNetshIpv6(L"set interface ", alias, L" admin=disabled store=active");
}

void NetshDeleteIpv6Route(const std::wstring& prefix, const std::wstring& alias) {
  RunNetshIpv6(L"delete route " + prefix + L" interface=", alias, L"");
}

void NetshDeleteIpv6SplitRoutes(const std::wstring& alias) {
  NetshDeleteIpv6Route(L"::/1", alias);
  NetshDeleteIpv6Route(L"8000::/1", alias);
}

}  // namespace vpn
