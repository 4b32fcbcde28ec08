// Names, numbers and settings of interfaces in the stand-in iphlpapi.dll.
#include <cstring>

#include "tests/standins/iphlpapi_call.h"
#include "tests/standins/text.h"

using netmodel::Adapter;
using netmodel::Network;
using standins::Answer;
using standins::NameOf;
using standins::Note;
using standins::ToUtf8;
using standins::ToWide;

namespace {

using GuidBytes = std::array<std::uint8_t, sizeof(GUID)>;

// netioapi.h, version 1; mingw's headers do not have it.
struct DnsInterfaceSettings {
  ULONG version;
  ULONG64 flags;
  PWSTR domain;
  PWSTR nameServer;
  PWSTR searchList;
  ULONG registrationEnabled;
  ULONG registerAdapterName;
  ULONG enableLlmnr;
  ULONG queryAdapterName;
  PWSTR profileNameServer;
};
constexpr ULONG kVersion1 = 1;
constexpr ULONG64 kNameServerFlag = 2;

GuidBytes BytesOf(const GUID& guid) {
  GuidBytes bytes{};
  std::memcpy(bytes.data(), &guid, sizeof(guid));
  return bytes;
}

std::string TextOf(const wchar_t* text) {
  return text == nullptr ? "null" : "\"" + ToUtf8(text) + "\"";
}

std::string DescribeDns(const Network& network, const GUID& guid,
                        const DnsInterfaceSettings& settings) {
  Network copy = network;
  const Adapter* adapter = copy.FindByGuid(BytesOf(guid));
  return (adapter != nullptr ? adapter->friendlyName : "unknown guid") + ", version " +
         std::to_string(settings.version) + ", flags " + std::to_string(settings.flags) +
         ", name server " + TextOf(settings.nameServer);
}

std::uint32_t ApplyDns(Network& network, const GUID& guid, const DnsInterfaceSettings& settings) {
  const bool understood = settings.version == kVersion1 && settings.flags == kNameServerFlag &&
                          settings.nameServer != nullptr;
  if (!understood) return ERROR_INVALID_PARAMETER;
  return network.SetDnsServers(BytesOf(guid), ToUtf8(settings.nameServer));
}

std::uint32_t CopyAlias(const Network& network, std::uint64_t luid, wchar_t* buffer,
                        std::size_t length) {
  const Adapter* adapter = network.FindByLuid(luid);
  if (adapter == nullptr) return ERROR_INVALID_PARAMETER;
  const std::wstring alias = ToWide(adapter->friendlyName);
  if (alias.size() >= length) return ERROR_NOT_ENOUGH_MEMORY;
  std::wmemcpy(buffer, alias.c_str(), alias.size() + 1);
  return NO_ERROR;
}

// What both conversions from a LUID do: the adapter goes to `take`, or the LUID is invalid.
template <typename Take>
std::uint32_t AnswerForLuid(const char* call, const NET_LUID* luid, Take take) {
  return Answer(
      call, [luid](const Network& n) { return NameOf(n, luid->Value); },
      [&](Network& n) -> std::uint32_t {
        const Adapter* adapter = n.FindByLuid(luid->Value);
        if (adapter == nullptr) return ERROR_INVALID_PARAMETER;
        take(*adapter);
        return NO_ERROR;
      });
}

}  // namespace

extern "C" {

NETIO_STATUS WINAPI ConvertInterfaceAliasToLuid(const WCHAR* alias, PNET_LUID luid) {
  return Answer(
      "ConvertInterfaceAliasToLuid", [alias](const Network&) { return ToUtf8(alias); },
      [alias, luid](Network& n) -> std::uint32_t {
        const Adapter* adapter = n.FindByAlias(ToUtf8(alias));
        if (adapter == nullptr) return ERROR_INVALID_PARAMETER;
        luid->Value = adapter->luid;
        return NO_ERROR;
      });
}

NETIO_STATUS WINAPI ConvertInterfaceLuidToAlias(const NET_LUID* luid, PWSTR alias, SIZE_T length) {
  return Answer(
      "ConvertInterfaceLuidToAlias",
      [=](const Network& n) {
        return NameOf(n, luid->Value) + ", room for " + std::to_string(length);
      },
      [=](Network& n) { return CopyAlias(n, luid->Value, alias, length); });
}

NETIO_STATUS WINAPI ConvertInterfaceLuidToIndex(const NET_LUID* luid, PNET_IFINDEX index) {
  return AnswerForLuid("ConvertInterfaceLuidToIndex", luid,
                       [index](const Adapter& adapter) { *index = adapter.index; });
}

NETIO_STATUS WINAPI ConvertInterfaceLuidToGuid(const NET_LUID* luid, GUID* guid) {
  return AnswerForLuid("ConvertInterfaceLuidToGuid", luid, [guid](const Adapter& adapter) {
    std::memcpy(guid, adapter.guid.data(), sizeof(GUID));
  });
}

void WINAPI InitializeIpInterfaceEntry(PMIB_IPINTERFACE_ROW row) {
  Note("InitializeIpInterfaceEntry", "");
  *row = {};
}

NETIO_STATUS WINAPI GetIpInterfaceEntry(PMIB_IPINTERFACE_ROW row) {
  return Answer(
      "GetIpInterfaceEntry",
      [row](const Network& n) {
        return NameOf(n, row->InterfaceLuid.Value) + ", family " + std::to_string(row->Family);
      },
      [row](Network& n) -> std::uint32_t {
        const Adapter* adapter = n.FindByLuid(row->InterfaceLuid.Value);
        if (adapter == nullptr) return ERROR_NOT_FOUND;
        row->InterfaceIndex = adapter->index;
        row->DadTransmits = adapter->dadTransmits;
        row->RouterDiscoveryBehavior =
            adapter->ipv6RouterDiscovery ? RouterDiscoveryEnabled : RouterDiscoveryDisabled;
        row->NlMtu = adapter->mtu;
        return NO_ERROR;
      });
}

NETIO_STATUS WINAPI SetIpInterfaceEntry(PMIB_IPINTERFACE_ROW row) {
  return Answer(
      "SetIpInterfaceEntry",
      [row](const Network& n) {
        return NameOf(n, row->InterfaceLuid.Value) + ", family " + std::to_string(row->Family) +
               ", dad transmits " + std::to_string(row->DadTransmits);
      },
      [row](Network& n) -> std::uint32_t {
        Adapter* adapter = n.FindByLuid(row->InterfaceLuid.Value);
        if (adapter == nullptr) return ERROR_NOT_FOUND;
        adapter->dadTransmits = row->DadTransmits;
        return NO_ERROR;
      });
}

// NOLINTNEXTLINE: the platform takes the GUID by value.
DWORD WINAPI SetInterfaceDnsSettings(GUID guid, const DnsInterfaceSettings* settings) {
  return Answer(
      "SetInterfaceDnsSettings",
      [&guid, settings](const Network& n) { return DescribeDns(n, guid, *settings); },
      [&guid, settings](Network& n) { return ApplyDns(n, guid, *settings); });
}

// Who listens where is no part of the model.
DWORD WINAPI GetExtendedTcpTable(void* /*table*/, DWORD* size, BOOL /*order*/, ULONG /*family*/,
                                 TCP_TABLE_CLASS /*kind*/, ULONG /*reserved*/) {
  *size = 0;
  return ERROR_NOT_SUPPORTED;
}

}  // extern "C"
