#include "src/net/netsh.h"

#include "src/net/command.h"

namespace vpn {
namespace {

constexpr DWORD kNetshBudget = 2500;  // milliseconds

void RunNetsh(const std::wstring& arguments) {
  (void)RunCommand(L"netsh " + arguments, kNetshBudget);  // best effort
}

}  // namespace

void NetshResetDns(const std::wstring& alias) {
  RunNetsh(L"interface ipv4 set dnsservers name=\"" + alias + L"\" source=dhcp");
}

void NetshSetRouterDiscovery(const std::wstring& alias, bool enabled) {
  RunNetsh(L"interface ipv6 set interface \"" + alias + L"\" routerdiscovery=" +
           (enabled ? L"enabled" : L"disabled") + L" store=active");
}

void NetshDisableIpv6(const std::wstring& alias) {
  RunNetsh(L"interface ipv6 set interface \"" + alias + L"\" admin=disabled store=active");
}

void NetshDeleteIpv6Route(const std::wstring& prefix, const std::wstring& alias) {
  RunNetsh(L"interface ipv6 delete route " + prefix + L" interface=\"" + alias + L"\"");
}

void NetshDeleteIpv6SplitRoutes(const std::wstring& alias) {
  NetshDeleteIpv6Route(L"::/1", alias);
  NetshDeleteIpv6Route(L"8000::/1", alias);
}

}  // namespace vpn
