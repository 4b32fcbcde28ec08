// The machine's network as the service will find it.
#include "src/net/ip_helper.h"

#include <algorithm>

#include "client/advice/advice.h"
#include "client/doctor/checks.h"
#include "client/doctor/port_holder.h"
#include "client/text/amounts.h"
#include "client/text/display_width.h"
#include "src/common/deployment.h"
#include "src/common/unique_handle.h"
#include "src/net/physical_route.h"
#include "src/tunnel/preflight.h"
#include "src/tunnel/tunnel_config.h"

namespace vpn {
namespace {

struct RegistryKeyTraits : NullIsEmpty<HKEY> {
  static void close(HKEY value) { (void)RegCloseKey(value); }
};

// A refusal of the service as a finding, in its own words.
Finding FromStatus(const Status& status, const wchar_t* good) {
  return status ? Good(good) : Problem(status.text(), WhatToDo(status.text()));
}

// Addresses with a route of their own to the gateway of the physical side, as the service pins
// them.
std::vector<std::wstring> FindPins(const PhysicalRoute& route, const NET_LUID& luid) {
  std::vector<std::wstring> pins;
  UniqueMibTable<MIB_IPFORWARD_TABLE2> table;
  if (GetIpForwardTable2(AF_INET, table.put()) != NO_ERROR || !table) {
    return pins;
  }
  for (ULONG at = 0; at < table.get()->NumEntries; ++at) {
    const MIB_IPFORWARD_ROW2& row = table.get()->Table[at];
    if (row.InterfaceLuid.Value == luid.Value &&
        row.DestinationPrefix.PrefixLength == kHostRoutePrefix && row.Metric == kHostRouteMetric &&
        FormatIpv4(row.NextHop.Ipv4.sin_addr) == route.gateway) {
      pins.push_back(FormatIpv4(row.DestinationPrefix.Prefix.Ipv4.sin_addr));
    }
  }
  return pins;
}

bool IsRouterDiscoveryOff(const NET_LUID& luid) {
  MIB_IPINTERFACE_ROW row = {};
  InitializeIpInterfaceEntry(&row);
  row.Family = AF_INET6;
  row.InterfaceLuid = luid;
  return GetIpInterfaceEntry(&row) == NO_ERROR &&
         row.RouterDiscoveryBehavior == RouterDiscoveryDisabled;
}

Finding TellLeftovers(const PhysicalRoute& route, const std::vector<std::wstring>& pins,
                      bool isDiscoveryOff) {
  if (pins.empty() && !isDiscoveryOff) {
    return Good(L"none");
  }
  std::wstring text;
  std::wstring byHand;
  if (isDiscoveryOff) {
    text = L"IPv6 router discovery is off on " + route.interfaceAlias;
    byHand = L"netsh interface ipv6 set interface \"" + route.interfaceAlias +
             L"\" routerdiscovery=enabled store=active";
  }
  if (!pins.empty()) {
    text += (text.empty() ? L"" : L"; ") +
            CountText(pins.size(), L"route of its own to ", L"routes of their own to ");
    for (size_t at = 0; at < pins.size(); ++at) {
      text += (at == 0 ? L"" : L", ") + pins[at];
    }
    byHand += (byHand.empty() ? L"route delete " : L", route delete ") + pins.front();
  }
  return Remark(text, L"connect and disconnect once, or by hand: " + byHand);
}

}  // namespace

Finding CheckPhysicalRoute(const Patient& /*patient*/) {
  PhysicalRoute route;
  const Status status = FindPhysicalRoute(route);
  return status ? Good(route.interfaceAlias + L" via " + route.gateway)
                : Problem(status.text(), WhatToDo(status.text()));
}

Finding CheckAdapters(const Patient& /*patient*/) {
  return FromStatus(CheckForeignAdapters(), L"none is up");
}

Finding CheckUsersProxy(const Patient& /*patient*/) {
  const Status status = CheckSystemProxy(HKEY_CURRENT_USER);
  // It stops a connect only where the service runs as this user, in a console.
  return status ? Good(L"off") : Remark(status.text(), WhatToDo(status.text()));
}

Finding CheckServicesProxy(const Patient& /*patient*/) {
  UniqueHandle<RegistryKeyTraits> localSystem;
  const LSTATUS error =
      RegOpenKeyExW(HKEY_USERS, L"S-1-5-18", 0, KEY_QUERY_VALUE, localSystem.put());
  if (error != ERROR_SUCCESS) {
    return Remark(L"the settings of the service's account can't be read",
                  L"run this with administrator's rights");
  }
  return FromStatus(CheckSystemProxy(localSystem.get()), L"off");
}

Finding CheckPort(const Patient& patient) {
  const std::wstring holder = HolderOfPort(kSocksPort);
  if (patient.isUp()) {
    return Good(L"held by the tunnel that is up");
  }
  if (CheckSocksPort()) {
    return Good(L"free");
  }
  return Problem(L"taken by " + holder, L"end that program, then connect again");
}

Finding CheckLeftovers(const Patient& patient) {
  if (patient.isUp()) {
    return Good(L"none to look for while a tunnel is up");
  }
  PhysicalRoute route;
  NET_LUID luid = {};
  if (!FindPhysicalRoute(route) ||
      ConvertInterfaceAliasToLuid(route.interfaceAlias.c_str(), &luid) != NO_ERROR) {
    return Remark(L"can't be looked for without a physical route", L"connect to a network first");
  }
  return TellLeftovers(route, FindPins(route, luid), IsRouterDiscoveryOff(luid));
}

}  // namespace vpn
