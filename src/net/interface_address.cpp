#include "src/net/interface_address.h"

#include "src/common/number_text.h"
#include "src/net/net_internal.h"

#include "src/net/adapters.h"

namespace vpn {
namespace {

// Best effort: an address that stays does no harm beside the right one.
void DeleteIpv4Addresses(const NET_LUID& luid) {
  UniqueMibTable<MIB_UNICASTIPADDRESS_TABLE> table;
  if (GetUnicastIpAddressTable(AF_INET, table.put()) != NO_ERROR || !table) {
    return;
  }
  for (ULONG i = 0; i < table.get()->NumEntries; ++i) {
    const MIB_UNICASTIPADDRESS_ROW& row = table.get()->Table[i];
    if (row.InterfaceLuid.Value == luid.Value) {
      (void)DeleteUnicastIpAddressEntry(&row);
    }
  }
}

// Best effort too: with detection on, the address would be tentative for seconds.
void DisableDuplicateAddressDetection(const NET_LUID& luid) {
  MIB_IPINTERFACE_ROW row = {};
  InitializeIpInterfaceEntry(&row);
  row.InterfaceLuid = luid;
  row.Family = AF_INET;
  if (GetIpInterfaceEntry(&row) == NO_ERROR) {
    row.DadTransmits = 0;
    row.SitePrefixLength = 0;  // IPv4 has none, yet the platform hands out 64 and refuses it back
    (void)SetIpInterfaceEntry(&row);
  }
}

DWORD CreateAddress(const NET_LUID& luid, const IN_ADDR& address, std::uint8_t prefixLength) {
  MIB_UNICASTIPADDRESS_ROW row = {};
  InitializeUnicastIpAddressEntry(&row);
  row.InterfaceLuid = luid;
  // The platform finds the interface by its LUID; the index is filled in for whoever reads the row.
  (void)ConvertInterfaceLuidToIndex(&luid, &row.InterfaceIndex);
  row.Address.Ipv4.sin_family = AF_INET;
  row.Address.Ipv4.sin_addr = address;
  row.ValidLifetime = kForever;
  row.PreferredLifetime = kForever;
  row.OnLinkPrefixLength = prefixLength;
  return CreateUnicastIpAddressEntry(&row);
}

void AppendDnsServers(const IP_ADAPTER_ADDRESSES& adapter, std::vector<std::wstring>& servers) {
  for (const auto* server = adapter.FirstDnsServerAddress; server != nullptr;
       server = server->Next) {
    const sockaddr* const address = server->Address.lpSockaddr;
    if (address == nullptr || address->sa_family != AF_INET) {
      continue;
    }
    servers.push_back(FormatIpv4(reinterpret_cast<const sockaddr_in*>(address)->sin_addr));
  }
}

}  // namespace

Status LookupInterfaceIds(const std::wstring& alias, NET_LUID& luid, GUID& guid) {
  if (ConvertInterfaceAliasToLuid(alias.c_str(), &luid) != NO_ERROR) {
    return Status::failure(L"unknown interface " + alias);
  }
  if (ConvertInterfaceLuidToGuid(&luid, &guid) != NO_ERROR) {
    return Status::failure(L"guid lookup failed for " + alias);
  }
  return Status::success();
}

Status SetInterfaceAddress(const std::wstring& alias, const std::wstring& address,
                           std::uint8_t prefixLength) {
  NET_LUID luid = {};
  GUID guid = {};
  if (Status known = LookupInterfaceIds(alias, luid, guid); !known) {
    return known;
  }
  const std::optional<IN_ADDR> parsed = ParseIpv4(address);
  if (!parsed) {
    return Status::failure(L"invalid IPv4 address " + address);
  }
  DeleteIpv4Addresses(luid);
  DisableDuplicateAddressDetection(luid);
  const DWORD result = CreateAddress(luid, *parsed, prefixLength);
  if (result != NO_ERROR && result != ERROR_OBJECT_ALREADY_EXISTS) {
    return Status::failure(L"CreateUnicastIpAddressEntry failed " + DecimalText(result));
  }
  return Status::success();
}

Status SetInterfaceDns(const std::wstring& alias, const std::wstring& server) {
  NET_LUID luid = {};
  GUID guid = {};
  if (Status known = LookupInterfaceIds(alias, luid, guid); !known) {
    return known;
  }
  std::wstring nameServer = server;  // the structure wants it writable
  DNS_INTERFACE_SETTINGS settings = {};
  settings.Version = DNS_INTERFACE_SETTINGS_VERSION1;
  settings.Flags = DNS_SETTING_NAMESERVER;
  settings.NameServer = nameServer.data();
  const DWORD result = SetInterfaceDnsSettings(guid, &settings);
  if (result != NO_ERROR) {
    return Status::failure(L"SetInterfaceDnsSettings failed " + DecimalText(result));
  }
  return Status::success();
}

Status ClearInterfaceDns(const std::wstring& alias) {
  return SetInterfaceDns(alias, L"");
}

std::vector<std::wstring> ListInterfaceDnsServers(const std::wstring& alias) {
  std::vector<std::wstring> servers;
  const AdapterList adapters(AF_INET, GAA_FLAG_INCLUDE_PREFIX);
  for (const auto* adapter = adapters.first(); adapter != nullptr; adapter = adapter->Next) {
    if (HasFriendlyName(*adapter, alias)) {
      AppendDnsServers(*adapter, servers);
    }
  }
  return servers;
}

}  // namespace vpn
