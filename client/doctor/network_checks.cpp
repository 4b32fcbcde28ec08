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
#include "src/net/adapters.h"
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

// What a run of the service may have left on the physical interface.
struct Leftovers {
  std::vector<std::wstring> pins;  // addresses with a route of their own to the gateway
  bool isDiscoveryOff = false;
};

// False when the platform does not tell.
bool FindPins(const PhysicalRoute& route, const NET_LUID& luid, std::vector<std::wstring>& pins) {
  UniqueMibTable<MIB_IPFORWARD_TABLE2> table;
  if (GetIpForwardTable2(AF_INET, table.put()) != NO_ERROR || !table) {
    return false;
  }
  for (ULONG at = 0; at < table.get()->NumEntries; ++at) {
    const MIB_IPFORWARD_ROW2& row = table.get()->Table[at];
    if (row.InterfaceLuid.Value == luid.Value &&
        row.DestinationPrefix.PrefixLength == kHostRoutePrefix && row.Metric == kHostRouteMetric &&
        FormatIpv4(row.NextHop.Ipv4.sin_addr) == route.gateway) {
      pins.push_back(FormatIpv4(row.DestinationPrefix.Prefix.Ipv4.sin_addr));
    }
  }
  return true;
}

// False when the platform does not tell. An interface without IPv6 has nothing to switch off.
bool ReadRouterDiscovery(const NET_LUID& luid, bool& isOff) {
  MIB_IPINTERFACE_ROW row = {};
  InitializeIpInterfaceEntry(&row);
  row.Family = AF_INET6;
  row.InterfaceLuid = luid;
  const DWORD error = GetIpInterfaceEntry(&row);
  isOff = error == NO_ERROR && row.RouterDiscoveryBehavior == RouterDiscoveryDisabled;
  return error == NO_ERROR || error == ERROR_NOT_FOUND;
}

std::wstring Describe(const PhysicalRoute& route, const Leftovers& found) {
  std::wstring text;
  if (found.isDiscoveryOff) {
    text = L"IPv6 router discovery is off on " + route.interfaceAlias;
  }
  if (!found.pins.empty()) {
    text += (text.empty() ? L"" : L"; ") +
            CountText(found.pins.size(), L"route of its own to ", L"routes of their own to ");
    for (size_t at = 0; at < found.pins.size(); ++at) {
      text += (at == 0 ? L"" : L", ") + found.pins[at];
    }
  }
  return text;
}

std::wstring CureByHand(const PhysicalRoute& route, const Leftovers& found) {
  std::wstring cure;
  if (found.isDiscoveryOff) {
    cure = L"netsh interface ipv6 set interface \"" + route.interfaceAlias +
           L"\" routerdiscovery=enabled store=active";
  }
  if (!found.pins.empty()) {
    cure += (cure.empty() ? L"route delete " : L", route delete ") + found.pins.front();
  }
  return cure;
}

Finding TellLeftovers(const PhysicalRoute& route, const Leftovers& found, bool isStateKnown) {
  const std::wstring text = Describe(route, found);
  if (text.empty()) {
    return Good(L"none");
  }
  if (!isStateKnown) {
    return Remark(text +
                      L"; whether a tunnel that is up needs this can't be told while the "
                      L"service does not answer",
                  kAskAgain);
  }
  return Remark(text, L"connect and disconnect once, or by hand: " + CureByHand(route, found));
}

// True with no settings at all, as before the first start of a browser.
bool CanReadProxy(HKEY user) {
  UniqueHandle<RegistryKeyTraits> settings;
  const LSTATUS error = RegOpenKeyExW(user, kProxySettingsKey, 0, KEY_QUERY_VALUE, settings.put());
  return error == ERROR_SUCCESS || error == ERROR_FILE_NOT_FOUND;
}

}  // namespace

Finding CheckPhysicalRoute(const Patient& /*patient*/) {
  PhysicalRoute route;
  const Status status = FindPhysicalRoute(route);
  return status ? Good(route.interfaceAlias + L" via " + route.gateway)
                : Problem(status.text(), WhatToDo(status.text()));
}

Finding CheckAdapters(const Patient& /*patient*/) {
  // The service takes a list that can't be read for an empty one, and goes on.
  if (AdapterList(AF_UNSPEC, 0).first() == nullptr) {
    return Remark(L"the adapters can't be read", L"restart Windows");
  }
  return FromStatus(CheckForeignAdapters(), L"none is up");
}

Finding CheckUsersProxy(const Patient& /*patient*/) {
  if (!CanReadProxy(HKEY_CURRENT_USER)) {
    return Remark(L"your Internet settings can't be read", L"sign in to Windows again");
  }
  const Status status = CheckSystemProxy(HKEY_CURRENT_USER);
  // It stops a connect only where the service runs as this user, in a console.
  return status ? Good(L"off") : Remark(status.text(), WhatToDo(status.text()));
}

Finding CheckServicesProxy(const Patient& /*patient*/) {
  UniqueHandle<RegistryKeyTraits> localSystem;
  const LSTATUS error =
      RegOpenKeyExW(HKEY_USERS, L"S-1-5-18", 0, KEY_QUERY_VALUE, localSystem.put());
  if (error != ERROR_SUCCESS || !CanReadProxy(localSystem.get())) {
    return Remark(L"the settings of the service's account can't be read",
                  L"run this with administrator's rights");
  }
  return FromStatus(CheckSystemProxy(localSystem.get()), L"off");
}

Finding CheckPort(const Patient& patient) {
  const bool isFree = static_cast<bool>(CheckSocksPort());
  if (patient.isUp()) {
    return isFree ? Problem(L"free, though the tunnel is up: Xray does not listen",
                            L"disconnect, then connect again")
                  : Good(L"held by the tunnel that is up");
  }
  if (isFree) {
    return Good(L"free");
  }
  const std::wstring holder = HolderOfPort(kSocksPort);
  if (!patient.isStateKnown()) {
    return Remark(
        L"taken by " + holder +
            L"; whether that is a tunnel's can't be told while the service does not answer",
        kAskAgain);
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
  Leftovers found;
  if (!FindPins(route, luid, found.pins)) {
    return Remark(L"the routes can't be read", L"restart Windows");
  }
  if (!ReadRouterDiscovery(luid, found.isDiscoveryOff)) {
    return Remark(L"the IPv6 settings of " + route.interfaceAlias + L" can't be read",
                  L"restart Windows");
  }
  return TellLeftovers(route, found, patient.isStateKnown());
}

}  // namespace vpn
