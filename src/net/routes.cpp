#include "src/net/routes.h"

#include "src/common/number_text.h"
#include "src/net/net_internal.h"

#include <algorithm>
#include <optional>

namespace vpn {
namespace {

bool IsSameRoute(const MIB_IPFORWARD_ROW2& row, const NET_LUID& luid, std::uint8_t prefixLength,
                 const IN_ADDR& destination) {
  return row.InterfaceLuid.Value == luid.Value &&
         row.DestinationPrefix.PrefixLength == prefixLength &&
         row.DestinationPrefix.Prefix.Ipv4.sin_addr.s_addr == destination.s_addr;
}

}  // namespace

Status BuildRouteRow(const std::wstring& alias, const std::wstring& destination,
                     std::uint8_t prefixLength, const std::wstring& nextHop, ULONG metric,
                     MIB_IPFORWARD_ROW2& row) {
  InitializeIpForwardEntry(&row);
  if (ConvertInterfaceAliasToLuid(alias.c_str(), &row.InterfaceLuid) != NO_ERROR) {
    return Status::failure(L"unknown interface " + alias);
  }
  const std::optional<IN_ADDR> destinationAddress = ParseIpv4(destination);
  const std::optional<IN_ADDR> nextHopAddress =
      destinationAddress ? ParseIpv4(nextHop) : std::nullopt;
  if (!nextHopAddress) {
    return Status::failure(L"invalid IPv4 route " + destination + L" via " + nextHop);
  }
  // The platform finds the interface by its LUID; the index is filled in for whoever reads the row.
  (void)ConvertInterfaceLuidToIndex(&row.InterfaceLuid, &row.InterfaceIndex);
  row.DestinationPrefix.Prefix.Ipv4.sin_family = AF_INET;
  row.DestinationPrefix.Prefix.Ipv4.sin_addr = *destinationAddress;
  row.DestinationPrefix.PrefixLength = prefixLength;
  row.NextHop.Ipv4.sin_family = AF_INET;
  row.NextHop.Ipv4.sin_addr = *nextHopAddress;
  row.ValidLifetime = kForever;
  row.PreferredLifetime = kForever;
  row.Metric = metric;
  row.Protocol = static_cast<NL_ROUTE_PROTOCOL>(MIB_IPPROTO_NETMGMT);
  return Status::success();
}

Status AddRoute(const std::wstring& alias, const std::wstring& destination,
                std::uint8_t prefixLength, const std::wstring& nextHop, ULONG metric) {
  MIB_IPFORWARD_ROW2 row = {};
  if (Status built = BuildRouteRow(alias, destination, prefixLength, nextHop, metric, row);
      !built) {
    return built;
  }
  const DWORD result = CreateIpForwardEntry2(&row);
  if (result != NO_ERROR && result != ERROR_OBJECT_ALREADY_EXISTS) {
    return Status::failure(L"CreateIpForwardEntry2 failed " + DecimalText(result) + L" for " +
                           destination);
  }
  return Status::success();
}

bool DeleteRoute(const std::wstring& alias, const std::wstring& destination,
                 std::uint8_t prefixLength, const std::wstring& nextHop) {
  MIB_IPFORWARD_ROW2 row = {};
  return BuildRouteRow(alias, destination, prefixLength, nextHop, 0, row) &&
         DeleteIpForwardEntry2(&row) == NO_ERROR;
}

bool RouteExists(const std::wstring& alias, const std::wstring& destination,
                 std::uint8_t prefixLength) {
  NET_LUID luid = {};
  if (ConvertInterfaceAliasToLuid(alias.c_str(), &luid) != NO_ERROR) {
    return false;
  }
  const std::optional<IN_ADDR> address = ParseIpv4(destination);
  UniqueMibTable<MIB_IPFORWARD_TABLE2> table;
  if (!address || GetIpForwardTable2(AF_INET, table.put()) != NO_ERROR || !table) {
    return false;
  }
  const MIB_IPFORWARD_ROW2* const rows = table.get()->Table;
  return std::any_of(rows, rows + table.get()->NumEntries, [&](const MIB_IPFORWARD_ROW2& row) {
    return IsSameRoute(row, luid, prefixLength, *address);
  });
}

}  // namespace vpn
