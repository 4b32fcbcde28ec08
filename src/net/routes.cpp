#include "src/net/routes.h"

#include <algorithm>

#include "src/common/text.h"

namespace vpn {
namespace {

bool IsSameRoute(const MIB_IPFORWARD_ROW2& row, const NET_LUID& luid, std::uint8_t prefixLength,
                 const IN_ADDR& destination) {
  return row.InterfaceLuid.Value == luid.Value &&
         row.DestinationPrefix.PrefixLength == prefixLength &&
         row.DestinationPrefix.Prefix.Ipv4.sin_addr.s_addr == destination.s_addr;
}

}  // namespace

bool BuildRouteRow(const std::wstring& alias, const std::wstring& destination,
                   std::uint8_t prefixLength, const std::wstring& nextHop, ULONG metric,
                   MIB_IPFORWARD_ROW2& row, std::wstring& error) {
  InitializeIpForwardEntry(&row);
  if (ConvertInterfaceAliasToLuid(alias.c_str(), &row.InterfaceLuid) != NO_ERROR) {
    error = L"unknown interface " + alias;
    return false;
  }
  IN_ADDR destinationAddress = {};
  IN_ADDR nextHopAddress = {};
  if (!ParseIpv4(destination, destinationAddress) || !ParseIpv4(nextHop, nextHopAddress)) {
    error = L"invalid IPv4 route " + destination + L" via " + nextHop;
    return false;
  }
  (void)ConvertInterfaceLuidToIndex(&row.InterfaceLuid, &row.InterfaceIndex);  // the LUID counts
  row.DestinationPrefix.Prefix.Ipv4.sin_family = AF_INET;
  row.DestinationPrefix.Prefix.Ipv4.sin_addr = destinationAddress;
  row.DestinationPrefix.PrefixLength = prefixLength;
  row.NextHop.Ipv4.sin_family = AF_INET;
  row.NextHop.Ipv4.sin_addr = nextHopAddress;
  row.ValidLifetime = kForever;
  row.PreferredLifetime = kForever;
  row.Metric = metric;
  row.Protocol = static_cast<NL_ROUTE_PROTOCOL>(MIB_IPPROTO_NETMGMT);
  return true;
}

bool AddRoute(const std::wstring& alias, const std::wstring& destination, std::uint8_t prefixLength,
              const std::wstring& nextHop, ULONG metric, std::wstring& error) {
  MIB_IPFORWARD_ROW2 row = {};
  if (!BuildRouteRow(alias, destination, prefixLength, nextHop, metric, row, error)) {
    return false;
  }
  const DWORD result = CreateIpForwardEntry2(&row);
  if (result == NO_ERROR || result == ERROR_OBJECT_ALREADY_EXISTS) {
    return true;
  }
  error = L"CreateIpForwardEntry2 failed " + std::to_wstring(result) + L" for " + destination;
  return false;
}

bool DeleteRoute(const std::wstring& alias, const std::wstring& destination,
                 std::uint8_t prefixLength, const std::wstring& nextHop) {
  MIB_IPFORWARD_ROW2 row = {};
  std::wstring ignored;
  return BuildRouteRow(alias, destination, prefixLength, nextHop, 0, row, ignored) &&
         DeleteIpForwardEntry2(&row) == NO_ERROR;
}

bool RouteExists(const std::wstring& alias, const std::wstring& destination,
                 std::uint8_t prefixLength) {
  NET_LUID luid = {};
  IN_ADDR address = {};
  UniqueMibTable<MIB_IPFORWARD_TABLE2> table;
  if (ConvertInterfaceAliasToLuid(alias.c_str(), &luid) != NO_ERROR ||
      !ParseIpv4(destination, address) || GetIpForwardTable2(AF_INET, table.put()) != NO_ERROR ||
      !table) {
    return false;
  }
  const MIB_IPFORWARD_ROW2* const rows = table.get()->Table;
  return std::any_of(rows, rows + table.get()->NumEntries, [&](const MIB_IPFORWARD_ROW2& row) {
    return IsSameRoute(row, luid, prefixLength, address);
  });
}

bool IsIpv4Literal(const std::wstring& text) {
  return HasDottedQuadShape(std::wstring_view(text));
}

}  // namespace vpn
