// The IPv4 route calls of the stand-in iphlpapi.dll.
#include <cstring>

#include "tests/standins/iphlpapi_call.h"

using netmodel::FormatIpv4;
using netmodel::Network;
using netmodel::Route;
using standins::Answer;
using standins::Ipv4Of;
using standins::NameOf;
using standins::Note;
using standins::SocketAddressOf;

namespace {

Route RouteOf(const MIB_IPFORWARD_ROW2& row) {
  Route route;
  route.luid = row.InterfaceLuid.Value;
  route.destination = Ipv4Of(row.DestinationPrefix.Prefix);
  route.prefixLength = row.DestinationPrefix.PrefixLength;
  route.nextHop = Ipv4Of(row.NextHop);
  route.metric = row.Metric;
  route.protocol = static_cast<std::uint32_t>(row.Protocol);
  route.validLifetime = row.ValidLifetime;
  route.preferredLifetime = row.PreferredLifetime;
  return route;
}

MIB_IPFORWARD_ROW2 RowOf(const Network& network, const Route& route) {
  MIB_IPFORWARD_ROW2 row{};
  row.InterfaceLuid.Value = route.luid;
  const netmodel::Adapter* adapter = network.FindByLuid(route.luid);
  row.InterfaceIndex = adapter != nullptr ? adapter->index : 0;
  row.DestinationPrefix.Prefix = SocketAddressOf(route.destination);
  row.DestinationPrefix.PrefixLength = route.prefixLength;
  row.NextHop = SocketAddressOf(route.nextHop);
  row.Metric = route.metric;
  row.Protocol = static_cast<NL_ROUTE_PROTOCOL>(route.protocol);
  row.ValidLifetime = route.validLifetime;
  row.PreferredLifetime = route.preferredLifetime;
  return row;
}

std::string DescribeKey(const Network& network, const MIB_IPFORWARD_ROW2& row) {
  return NameOf(network, row.InterfaceLuid.Value) + " index " + std::to_string(row.InterfaceIndex) +
         ", " + FormatIpv4(Ipv4Of(row.DestinationPrefix.Prefix)) + "/" +
         std::to_string(row.DestinationPrefix.PrefixLength) + " via " +
         FormatIpv4(Ipv4Of(row.NextHop));
}

std::string DescribeRow(const Network& network, const MIB_IPFORWARD_ROW2& row) {
  return DescribeKey(network, row) + ", metric " + std::to_string(row.Metric) + ", protocol " +
         std::to_string(static_cast<unsigned>(row.Protocol)) + ", valid " +
         std::to_string(row.ValidLifetime) + ", preferred " + std::to_string(row.PreferredLifetime);
}

// IPv6 routes are not the product's business, and a prefix beyond 32 bits is none.
bool IsIpv4Row(const MIB_IPFORWARD_ROW2& row) {
  return row.DestinationPrefix.Prefix.si_family == AF_INET && row.NextHop.si_family == AF_INET &&
         row.DestinationPrefix.PrefixLength <= 32;
}

std::uint32_t CopyTable(const Network& network, PMIB_IPFORWARD_TABLE2* table) {
  const std::size_t count = network.routes.size();
  const std::size_t size = sizeof(MIB_IPFORWARD_TABLE2) + count * sizeof(MIB_IPFORWARD_ROW2);
  void* memory = HeapAlloc(GetProcessHeap(), HEAP_ZERO_MEMORY, size);
  if (memory == nullptr) return ERROR_NOT_ENOUGH_MEMORY;
  *table = static_cast<PMIB_IPFORWARD_TABLE2>(memory);
  (*table)->NumEntries = static_cast<ULONG>(count);
  for (std::size_t i = 0; i < count; ++i) (*table)->Table[i] = RowOf(network, network.routes[i]);
  return NO_ERROR;
}

}  // namespace

extern "C" {

// The values that the platform leaves for the caller to replace are illegal ones.
void WINAPI InitializeIpForwardEntry(PMIB_IPFORWARD_ROW2 row) {
  Note("InitializeIpForwardEntry", "");
  *row = {};
  row->SitePrefixLength = 255;
  row->ValidLifetime = 0xFFFFFFFF;
  row->PreferredLifetime = 0xFFFFFFFF;
  row->Metric = 0xFFFFFFFF;
  std::memset(&row->Protocol, 0xFF, sizeof(row->Protocol));
  row->Loopback = TRUE;
  row->AutoconfigureAddress = TRUE;
  row->Publish = TRUE;
  row->Immortal = TRUE;
}

NETIO_STATUS WINAPI CreateIpForwardEntry2(const MIB_IPFORWARD_ROW2* row) {
  return Answer(
      "CreateIpForwardEntry2", [row](const Network& n) { return DescribeRow(n, *row); },
      [row](Network& n) -> std::uint32_t {
        return IsIpv4Row(*row) ? n.CreateRoute(RouteOf(*row)) : ERROR_INVALID_PARAMETER;
      });
}

NETIO_STATUS WINAPI DeleteIpForwardEntry2(const MIB_IPFORWARD_ROW2* row) {
  return Answer(
      "DeleteIpForwardEntry2", [row](const Network& n) { return DescribeKey(n, *row); },
      [row](Network& n) -> std::uint32_t {
        return IsIpv4Row(*row) ? n.DeleteRoute(RouteOf(*row)) : ERROR_INVALID_PARAMETER;
      });
}

NETIO_STATUS WINAPI GetIpForwardTable2(ADDRESS_FAMILY family, PMIB_IPFORWARD_TABLE2* table) {
  return Answer(
      "GetIpForwardTable2", [family](const Network&) { return "family " + std::to_string(family); },
      [family, table](Network& n) -> std::uint32_t {
        return family == AF_INET ? CopyTable(n, table) : ERROR_INVALID_PARAMETER;
      });
}

void WINAPI FreeMibTable(PVOID memory) {
  Note("FreeMibTable", "");
  HeapFree(GetProcessHeap(), 0, memory);
}

}  // extern "C"
