// IP Helper: the IPv4 routing table.
#include "tests/sim/ip_rows.h"

#include <iphlpapi.h>
#include <netioapi.h>
#include <winsock2.h>

using netmodel::Route;
using sim::Call;

namespace {

MIB_IPFORWARD_ROW2 RowOf(const netmodel::Network& network, const Route& route) {
  MIB_IPFORWARD_ROW2 row = {};
  const netmodel::Adapter* const adapter = network.FindByLuid(route.luid);
  row.InterfaceLuid.Value = route.luid;
  row.InterfaceIndex = adapter == nullptr ? 0 : adapter->index;
  sim::PutAddress(row.DestinationPrefix.Prefix, route.destination);
  row.DestinationPrefix.PrefixLength = route.prefixLength;
  sim::PutAddress(row.NextHop, route.nextHop);
  row.ValidLifetime = route.validLifetime;
  row.PreferredLifetime = route.preferredLifetime;
  row.Metric = route.metric;
  row.Protocol = static_cast<NL_ROUTE_PROTOCOL>(route.protocol);
  return row;
}

// False for a row that names no IPv4 route.
bool RouteOf(const MIB_IPFORWARD_ROW2& row, Route* route) {
  route->luid = row.InterfaceLuid.Value;
  route->prefixLength = row.DestinationPrefix.PrefixLength;
  route->metric = row.Metric;
  route->protocol = static_cast<std::uint32_t>(row.Protocol);
  route->validLifetime = row.ValidLifetime;
  route->preferredLifetime = row.PreferredLifetime;
  return sim::TakeAddress(row.DestinationPrefix.Prefix, &route->destination) &&
         sim::TakeAddress(row.NextHop, &route->nextHop) && route->prefixLength <= 32;
}

// `"以太网" 203.0.113.10/32 via 192.168.1.1`, with ` metric 1` for a creation.
sim::Arg Readable(const MIB_IPFORWARD_ROW2& row, bool withMetric) {
  Route route;
  (void)RouteOf(row, &route);
  const auto machine = sim::Machine::Current();
  const auto lock = machine ? machine->Lock() : sim::MachineLock();
  std::string text = machine ? sim::AliasOf(machine->network, route.luid) : "";
  text += ' ' + netmodel::FormatIpv4(route.destination) + '/' + std::to_string(route.prefixLength) +
          " via " + netmodel::FormatIpv4(route.nextHop);
  return text + (withMetric ? " metric " + std::to_string(route.metric) : "");
}

}  // namespace

void InitializeIpForwardEntry(MIB_IPFORWARD_ROW2* row) {
  Call call("InitializeIpForwardEntry");
  *row = {};
  row->SitePrefixLength = 255;
  row->ValidLifetime = 0xFFFFFFFF;
  row->PreferredLifetime = 0xFFFFFFFF;
  row->Metric = 0xFFFFFFFF;
  row->Protocol = MIB_IPPROTO_NETMGMT;
  row->Loopback = TRUE;
  row->AutoconfigureAddress = TRUE;
  row->Publish = TRUE;
  row->Immortal = TRUE;
}

NETIO_STATUS GetIpForwardTable2(ADDRESS_FAMILY family, MIB_IPFORWARD_TABLE2** table) {
  Call call("GetIpForwardTable2", {static_cast<int>(family)});
  if (call.failed()) {
    return call.code();
  }
  *table = nullptr;
  if (call->ipHelper.nullTables) {
    return NO_ERROR;
  }
  std::vector<MIB_IPFORWARD_ROW2> rows;
  for (const Route& route : call->network.routes) {
    if (family == AF_INET || family == AF_UNSPEC) {
      rows.push_back(RowOf(call->network, route));
    }
  }
  sim::HandOutTable(call, rows, table);
  return NO_ERROR;
}

NETIO_STATUS CreateIpForwardEntry2(const MIB_IPFORWARD_ROW2* row) {
  Call call("CreateIpForwardEntry2", {Readable(*row, true)});
  if (call.failed()) {
    return call.code();
  }
  Route route;
  if (!RouteOf(*row, &route)) {
    return ERROR_INVALID_PARAMETER;
  }
  const auto& swallows = call->ipHelper.swallowsRoute;
  return swallows && swallows(route) ? NO_ERROR : call->network.CreateRoute(route);
}

NETIO_STATUS DeleteIpForwardEntry2(const MIB_IPFORWARD_ROW2* row) {
  Call call("DeleteIpForwardEntry2", {Readable(*row, false)});
  if (call.failed()) {
    return call.code();
  }
  Route route;
  return RouteOf(*row, &route) ? call->network.DeleteRoute(route) : ERROR_INVALID_PARAMETER;
}

void FreeMibTable(PVOID memory) {
  Call call("FreeMibTable");
  if (memory != nullptr) {
    call->resources.Release(memory, "MIB table", call.name());
  }
}
