#include "src/net/physical_route.h"

#include <algorithm>
#include <array>

#include "src/common/text.h"
#include "src/net/ip_helper.h"

namespace vpn {
namespace {

constexpr const wchar_t* kVirtualWords[] = {L"VMware",     L"Loopback", L"wintun",   L"xray",
                                            L"VirtualBox", L"Hyper-V",  L"vEthernet"};

constexpr ULONG kNoMetric = 0xFFFFFFFF;

// A default route with a next hop; a tunnel's on-link default has none.
bool IsGatewayRoute(const MIB_IPFORWARD_ROW2& row) {
  return row.DestinationPrefix.PrefixLength == 0 && row.NextHop.Ipv4.sin_addr.s_addr != 0;
}

// False when the platform can't name the interface.
bool LookupAlias(const NET_LUID& luid, std::wstring& alias) {
  std::array<wchar_t, NDIS_IF_MAX_STRING_SIZE + 1> name{};
  if (ConvertInterfaceLuidToAlias(&luid, name.data(), name.size()) != NO_ERROR) {
    return false;
  }
  alias = name.data();
  return true;
}

PhysicalRoute MakeRoute(const MIB_IPFORWARD_ROW2& row, const std::wstring& alias) {
  PhysicalRoute route;
  route.interfaceAlias = alias;
  route.gateway = FormatIpv4(row.NextHop.Ipv4.sin_addr);
  NET_IFINDEX index = 0;
  if (ConvertInterfaceLuidToIndex(&row.InterfaceLuid, &index) == NO_ERROR) {
    route.interfaceIndex = index;
  }
  return route;
}

}  // namespace

bool FindPhysicalRoute(PhysicalRoute& route, std::wstring& error) {
  UniqueMibTable<MIB_IPFORWARD_TABLE2> table;
  if (GetIpForwardTable2(AF_INET, table.put()) != NO_ERROR || !table) {
    error = L"GetIpForwardTable2 failed";
    return false;
  }
  ULONG bestMetric = kNoMetric;
  PhysicalRoute best;
  for (ULONG i = 0; i < table.get()->NumEntries; ++i) {
    const MIB_IPFORWARD_ROW2& row = table.get()->Table[i];
    if (!IsGatewayRoute(row)) {
      continue;
    }
    std::wstring alias;
    if (!LookupAlias(row.InterfaceLuid, alias) || IsVirtualInterfaceAlias(alias) ||
        row.Metric >= bestMetric) {
      continue;
    }
    bestMetric = row.Metric;
    best = MakeRoute(row, alias);
  }
  if (bestMetric == kNoMetric) {
    error = L"no physical default gateway";
    return false;
  }
  route = best;
  return true;
}

bool IsVirtualInterfaceAlias(const std::wstring& alias) {
  return std::any_of(std::begin(kVirtualWords), std::end(kVirtualWords),
                     [&](const wchar_t* word) { return ContainsNoCase(alias, word); });
}

}  // namespace vpn
