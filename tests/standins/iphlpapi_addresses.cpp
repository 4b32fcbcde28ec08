// The unicast address calls of the stand-in iphlpapi.dll; IPv4 only.
#include "tests/standins/iphlpapi_call.h"

using netmodel::FormatIpv4;
using netmodel::Network;
using netmodel::UnicastAddress;
using standins::Answer;
using standins::Ipv4Of;
using standins::NameOf;
using standins::Note;
using standins::SocketAddressOf;

namespace {

// A table row with its interface, since the model keeps addresses within their adapters.
std::vector<MIB_UNICASTIPADDRESS_ROW> RowsOf(const Network& network) {
  std::vector<MIB_UNICASTIPADDRESS_ROW> rows;
  for (const netmodel::Adapter& adapter : network.adapters) {
    for (const UnicastAddress& address : adapter.addresses) {
      MIB_UNICASTIPADDRESS_ROW& row = rows.emplace_back();
      row.InterfaceLuid.Value = adapter.luid;
      row.InterfaceIndex = adapter.index;
      row.Address = SocketAddressOf(address.address);
      row.OnLinkPrefixLength = address.prefixLength;
      row.ValidLifetime = 0xFFFFFFFF;
      row.PreferredLifetime = 0xFFFFFFFF;
    }
  }
  return rows;
}

std::uint32_t CopyTable(const Network& network, PMIB_UNICASTIPADDRESS_TABLE* table) {
  const auto rows = RowsOf(network);
  const std::size_t size =
      sizeof(MIB_UNICASTIPADDRESS_TABLE) + rows.size() * sizeof(MIB_UNICASTIPADDRESS_ROW);
  void* memory = HeapAlloc(GetProcessHeap(), HEAP_ZERO_MEMORY, size);
  if (memory == nullptr) return ERROR_NOT_ENOUGH_MEMORY;
  *table = static_cast<PMIB_UNICASTIPADDRESS_TABLE>(memory);
  (*table)->NumEntries = static_cast<ULONG>(rows.size());
  for (std::size_t i = 0; i < rows.size(); ++i) (*table)->Table[i] = rows[i];
  return NO_ERROR;
}

std::string DescribeAddress(const Network& network, const MIB_UNICASTIPADDRESS_ROW& row) {
  return NameOf(network, row.InterfaceLuid.Value) + ", " + FormatIpv4(Ipv4Of(row.Address));
}

}  // namespace

extern "C" {

// The values that the platform leaves for the caller to replace are illegal ones.
void WINAPI InitializeUnicastIpAddressEntry(PMIB_UNICASTIPADDRESS_ROW row) {
  Note("InitializeUnicastIpAddressEntry", "");
  *row = {};
  row->PrefixOrigin = static_cast<NL_PREFIX_ORIGIN>(16);  // IpPrefixOriginUnchanged
  row->SuffixOrigin = static_cast<NL_SUFFIX_ORIGIN>(16);  // IpSuffixOriginUnchanged
  row->OnLinkPrefixLength = 255;
  row->ValidLifetime = 0xFFFFFFFF;
  row->PreferredLifetime = 0xFFFFFFFF;
}

NETIO_STATUS WINAPI GetUnicastIpAddressTable(ADDRESS_FAMILY family,
                                             PMIB_UNICASTIPADDRESS_TABLE* table) {
  return Answer(
      "GetUnicastIpAddressTable",
      [family](const Network&) { return "family " + std::to_string(family); },
      [family, table](Network& n) -> std::uint32_t {
        return family == AF_INET ? CopyTable(n, table) : ERROR_INVALID_PARAMETER;
      });
}

NETIO_STATUS WINAPI CreateUnicastIpAddressEntry(const MIB_UNICASTIPADDRESS_ROW* row) {
  return Answer(
      "CreateUnicastIpAddressEntry",
      [row](const Network& n) {
        return DescribeAddress(n, *row) + "/" + std::to_string(row->OnLinkPrefixLength) +
               ", index " + std::to_string(row->InterfaceIndex) + ", valid " +
               std::to_string(row->ValidLifetime) + ", preferred " +
               std::to_string(row->PreferredLifetime);
      },
      [row](Network& n) -> std::uint32_t {
        if (row->Address.si_family != AF_INET) return ERROR_INVALID_PARAMETER;
        return n.CreateAddress(row->InterfaceLuid.Value,
                               {Ipv4Of(row->Address), row->OnLinkPrefixLength});
      });
}

NETIO_STATUS WINAPI DeleteUnicastIpAddressEntry(const MIB_UNICASTIPADDRESS_ROW* row) {
  return Answer(
      "DeleteUnicastIpAddressEntry", [row](const Network& n) { return DescribeAddress(n, *row); },
      [row](Network& n) -> std::uint32_t {
        return n.DeleteAddress(row->InterfaceLuid.Value, Ipv4Of(row->Address));
      });
}

}  // extern "C"
