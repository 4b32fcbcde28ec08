#include "src/net/physical_route.h"

#include <array>
#include <optional>

#include "src/net/adapters.h"
#include "src/net/ip_helper.h"

namespace vpn {
namespace {

constexpr ULONG kNoMetric = 0xFFFFFFFF;

// A default route with a next hop; a tunnel's on-link default has none.
bool IsGatewayRoute(const MIB_IPFORWARD_ROW2& row) {
  return row.DestinationPrefix.PrefixLength == 0 && row.NextHop.Ipv4.sin_addr.s_addr != 0;
}

// Nothing when the platform can't name the interface.
std::optional<std::wstring> LookupAlias(const NET_LUID& luid) {
  std::array<wchar_t, NDIS_IF_MAX_STRING_SIZE + 1> name{};
  if (ConvertInterfaceLuidToAlias(&luid, name.data(), name.size()) != NO_ERROR) {
    return std::nullopt;
  }
  return name.data();
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

Status FindPhysicalRoute(PhysicalRoute& route) {
  UniqueMibTable<MIB_IPFORWARD_TABLE2> table;
  if (GetIpForwardTable2(AF_INET, table.put()) != NO_ERROR || !table) {
    return Status::failure(L"GetIpForwardTable2 failed");
  }
  const MIB_IPFORWARD_ROW2* best = nullptr;
  std::wstring bestAlias;
  for (ULONG i = 0; i < table.get()->NumEntries; ++i) {
    const MIB_IPFORWARD_ROW2& row = table.get()->Table[i];
    // The platform is asked for a name only where that can decide.
    if (row.Metric >= (best == nullptr ? kNoMetric : best->Metric) || !IsGatewayRoute(row)) {
      continue;
    }
    const std::optional<std::wstring> alias = LookupAlias(row.InterfaceLuid);
    if (alias && !IsVirtualInterfaceAlias(*alias)) {
      best = &row;
      bestAlias = *alias;
    }
  }
  if (best == nullptr) {
    return Status::failure(L"no physical default gateway");
  }
  route = MakeRoute(*best, bestAlias);
  return Status::success();
}

}  // namespace vpn
