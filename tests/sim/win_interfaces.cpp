// IP Helper: names and ids of interfaces, their addresses and settings.
#include "tests/sim/ip_rows.h"
#include "tests/sim/text.h"

#include <iphlpapi.h>
#include <netioapi.h>
#include <winsock2.h>

#include <algorithm>

using netmodel::Adapter;
using sim::Arg;
using sim::Call;

namespace {

// A view of a LUID's adapter for one call: `code` is what the call returns when there is none.
Adapter* FindAdapter(const Call& call, const NET_LUID& luid) {
  return call->network.FindByLuid(luid.Value);
}

Arg Readable(const NET_LUID& luid) {
  const auto machine = sim::Machine::Current();
  const auto lock = machine ? machine->Lock() : sim::MachineLock();
  return machine ? sim::AliasOf(machine->network, luid.Value) : std::string();
}

Arg Readable(const MIB_UNICASTIPADDRESS_ROW& row) {
  std::uint32_t address = 0;
  (void)sim::TakeAddress(row.Address, &address);
  return netmodel::FormatIpv4(address) + '/' + std::to_string(row.OnLinkPrefixLength);
}

MIB_UNICASTIPADDRESS_ROW RowOf(const Adapter& adapter, const netmodel::UnicastAddress& unicast) {
  MIB_UNICASTIPADDRESS_ROW row = {};
  sim::PutAddress(row.Address, unicast.address);
  row.InterfaceLuid.Value = adapter.luid;
  row.InterfaceIndex = adapter.index;
  row.ValidLifetime = 0xFFFFFFFF;
  row.PreferredLifetime = 0xFFFFFFFF;
  row.OnLinkPrefixLength = unicast.prefixLength;
  row.DadState = IpDadStatePreferred;
  return row;
}

}  // namespace

NETIO_STATUS ConvertInterfaceAliasToLuid(const WCHAR* alias, NET_LUID* luid) {
  Call call("ConvertInterfaceAliasToLuid", {alias});
  if (call.failed()) {
    return call.code();
  }
  const Adapter* const adapter = call->network.FindByAlias(sim::Narrow(alias));
  if (adapter == nullptr) {
    return ERROR_INVALID_PARAMETER;
  }
  luid->Value = adapter->luid;
  return NO_ERROR;
}

NETIO_STATUS ConvertInterfaceLuidToAlias(const NET_LUID* luid, PWSTR alias, SIZE_T length) {
  Call call("ConvertInterfaceLuidToAlias", {Readable(*luid)});
  if (call.failed()) {
    return call.code();
  }
  const Adapter* const adapter = FindAdapter(call, *luid);
  if (adapter == nullptr || call->ipHelper.withoutAlias.count(luid->Value) != 0) {
    return ERROR_INVALID_PARAMETER;
  }
  const std::wstring text = sim::Widen(adapter->friendlyName);
  if (text.size() >= length) {
    return ERROR_NOT_ENOUGH_MEMORY;
  }
  std::copy_n(text.c_str(), text.size() + 1, alias);
  return NO_ERROR;
}

NETIO_STATUS ConvertInterfaceLuidToIndex(const NET_LUID* luid, NET_IFINDEX* index) {
  Call call("ConvertInterfaceLuidToIndex", {Readable(*luid)});
  if (call.failed()) {
    return call.code();
  }
  const Adapter* const adapter = FindAdapter(call, *luid);
  if (adapter == nullptr) {
    return ERROR_INVALID_PARAMETER;
  }
  *index = adapter->index;
  return NO_ERROR;
}

NETIO_STATUS ConvertInterfaceLuidToGuid(const NET_LUID* luid, GUID* guid) {
  Call call("ConvertInterfaceLuidToGuid", {Readable(*luid)});
  if (call.failed()) {
    return call.code();
  }
  const Adapter* const adapter = FindAdapter(call, *luid);
  if (adapter == nullptr) {
    return ERROR_INVALID_PARAMETER;
  }
  *guid = sim::GuidOf(adapter->guid);
  return NO_ERROR;
}

NETIO_STATUS GetUnicastIpAddressTable(ADDRESS_FAMILY family, MIB_UNICASTIPADDRESS_TABLE** table) {
  Call call("GetUnicastIpAddressTable", {static_cast<int>(family)});
  if (call.failed()) {
    return call.code();
  }
  *table = nullptr;
  if (call->ipHelper.nullTables) {
    return NO_ERROR;
  }
  std::vector<MIB_UNICASTIPADDRESS_ROW> rows;
  for (const Adapter& adapter : call->network.adapters) {
    for (const netmodel::UnicastAddress& unicast : adapter.addresses) {
      rows.push_back(RowOf(adapter, unicast));
    }
  }
  sim::HandOutTable(call, rows, table);
  return NO_ERROR;
}

void InitializeUnicastIpAddressEntry(MIB_UNICASTIPADDRESS_ROW* row) {
  Call call("InitializeUnicastIpAddressEntry");
  *row = {};
  row->PrefixOrigin = IpPrefixOriginUnchanged;
  row->SuffixOrigin = IpSuffixOriginUnchanged;
  row->ValidLifetime = 0xFFFFFFFF;
  row->PreferredLifetime = 0xFFFFFFFF;
  row->OnLinkPrefixLength = 255;
}

NETIO_STATUS CreateUnicastIpAddressEntry(const MIB_UNICASTIPADDRESS_ROW* row) {
  Call call("CreateUnicastIpAddressEntry", {Readable(row->InterfaceLuid), Readable(*row)});
  if (call.failed()) {
    return call.code();
  }
  netmodel::UnicastAddress unicast;
  unicast.prefixLength = row->OnLinkPrefixLength;
  if (!sim::TakeAddress(row->Address, &unicast.address) || unicast.prefixLength > 32) {
    return ERROR_INVALID_PARAMETER;
  }
  netmodel::Network& network = call->network;
  const std::uint64_t luid = row->InterfaceLuid.Value;
  const std::uint64_t delay = call->ipHelper.addressDelay;
  if (delay == 0) {
    return network.CreateAddress(luid, unicast);
  }
  call->clock.After(delay, [&network, luid, unicast] { network.CreateAddress(luid, unicast); });
  return NO_ERROR;
}

NETIO_STATUS DeleteUnicastIpAddressEntry(const MIB_UNICASTIPADDRESS_ROW* row) {
  Call call("DeleteUnicastIpAddressEntry", {Readable(row->InterfaceLuid), Readable(*row)});
  if (call.failed()) {
    return call.code();
  }
  std::uint32_t address = 0;
  if (!sim::TakeAddress(row->Address, &address)) {
    return ERROR_INVALID_PARAMETER;
  }
  return call->network.DeleteAddress(row->InterfaceLuid.Value, address);
}

void InitializeIpInterfaceEntry(MIB_IPINTERFACE_ROW* row) {
  Call call("InitializeIpInterfaceEntry");
  *row = {};
}

NETIO_STATUS GetIpInterfaceEntry(MIB_IPINTERFACE_ROW* row) {
  Call call("GetIpInterfaceEntry", {Readable(row->InterfaceLuid)});
  if (call.failed()) {
    return call.code();
  }
  const Adapter* const adapter = FindAdapter(call, row->InterfaceLuid);
  if (adapter == nullptr || (row->Family != AF_INET && row->Family != AF_INET6)) {
    return adapter == nullptr ? ERROR_NOT_FOUND : ERROR_INVALID_PARAMETER;
  }
  row->RouterDiscoveryBehavior =
      adapter->ipv6RouterDiscovery ? RouterDiscoveryEnabled : RouterDiscoveryDisabled;
  row->InterfaceIndex = adapter->index;
  row->DadTransmits = adapter->dadTransmits;
  row->SitePrefixLength = 64;  // for IPv4 too, where the platform itself refuses it
  row->NlMtu = adapter->mtu;
  row->Connected = adapter->operStatus == netmodel::kOperStatusUp ? TRUE : FALSE;
  return NO_ERROR;
}

NETIO_STATUS SetIpInterfaceEntry(MIB_IPINTERFACE_ROW* row) {
  Call call("SetIpInterfaceEntry", {Readable(row->InterfaceLuid), row->DadTransmits});
  if (call.failed()) {
    return call.code();
  }
  Adapter* const adapter = FindAdapter(call, row->InterfaceLuid);
  if (adapter == nullptr || row->Family != AF_INET) {
    return adapter == nullptr ? ERROR_NOT_FOUND : ERROR_INVALID_PARAMETER;
  }
  if (row->SitePrefixLength > 32) {
    return ERROR_INVALID_PARAMETER;
  }
  adapter->dadTransmits = row->DadTransmits;
  return NO_ERROR;
}

NETIO_STATUS SetInterfaceDnsSettings(GUID interfaceGuid, const DNS_INTERFACE_SETTINGS* settings) {
  Call call("SetInterfaceDnsSettings",
            {settings->NameServer, Arg::OfHex(static_cast<std::uint32_t>(settings->Flags))});
  if (call.failed()) {
    return call.code();
  }
  const bool known = settings->Version == DNS_INTERFACE_SETTINGS_VERSION1 &&
                     settings->Flags == DNS_SETTING_NAMESERVER && settings->NameServer != nullptr;
  if (!known) {
    return ERROR_INVALID_PARAMETER;
  }
  return call->network.SetDnsServers(sim::GuidBytes(interfaceGuid),
                                     sim::Narrow(settings->NameServer));
}
