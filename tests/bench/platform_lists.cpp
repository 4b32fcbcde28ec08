#include "tests/bench/platform_lists.h"

#include <algorithm>
#include <cwchar>
#include <memory>
#include <string>

#include "tests/sim/call.h"

namespace bench {
namespace {

NET_LUID EthernetLuid() {
  const std::shared_ptr<sim::Machine> machine = sim::Machine::Current();
  machine->network.adapters.front().friendlyName = kEthernet;
  NET_LUID luid = {};
  luid.Value = machine->network.adapters.front().luid;
  return luid;
}

MIB_IPFORWARD_ROW2 Row(const NET_LUID& luid, std::size_t number, bool isDefault) {
  MIB_IPFORWARD_ROW2 row = {};
  row.InterfaceLuid = luid;
  row.DestinationPrefix.Prefix.Ipv4.sin_family = AF_INET;
  row.NextHop.Ipv4.sin_family = AF_INET;
  row.NextHop.Ipv4.sin_addr.s_addr = static_cast<ULONG>(0x0A000001 + number);
  if (!isDefault) {
    row.DestinationPrefix.Prefix.Ipv4.sin_addr.s_addr = static_cast<ULONG>(0xC6336400 + number);
    row.DestinationPrefix.PrefixLength = 32;
  }
  row.Metric = static_cast<ULONG>(100'000 - number);  // the later, the better
  return row;
}

}  // namespace

PlatformLists g_lists;

RouteTable::RouteTable(const std::vector<MIB_IPFORWARD_ROW2>& rows)
    : memory_(offsetof(MIB_IPFORWARD_TABLE2, Table) + rows.size() * sizeof(MIB_IPFORWARD_ROW2)) {
  get()->NumEntries = static_cast<ULONG>(rows.size());
  std::copy(rows.begin(), rows.end(), get()->Table);
}

MIB_IPFORWARD_TABLE2* RouteTable::get() const {
  return reinterpret_cast<MIB_IPFORWARD_TABLE2*>(const_cast<std::byte*>(memory_.data()));
}

std::shared_ptr<const RouteTable> Routes(std::size_t count) {
  const NET_LUID luid = EthernetLuid();
  std::vector<MIB_IPFORWARD_ROW2> rows;
  for (std::size_t i = 0; i < count; ++i) {
    rows.push_back(Row(luid, i, i % 10 == 0));
  }
  MIB_IPFORWARD_ROW2 split = Row(luid, count, true);
  split.DestinationPrefix.PrefixLength = 1;
  rows.push_back(split);
  return std::make_shared<RouteTable>(rows);
}

}  // namespace bench

using bench::g_lists;

namespace {

struct Snapshot : sim::Object {
  std::string Describe() const override { return "process snapshot"; }
};

std::size_t g_nextProcess = 0;

}  // namespace

void InitializeIpForwardEntry(MIB_IPFORWARD_ROW2* row) {
  *row = {};
}

NETIO_STATUS GetIpForwardTable2(ADDRESS_FAMILY /*family*/, MIB_IPFORWARD_TABLE2** table) {
  *table = g_lists.routes == nullptr ? nullptr : g_lists.routes->get();
  return NO_ERROR;
}

NETIO_STATUS CreateIpForwardEntry2(const MIB_IPFORWARD_ROW2* /*row*/) {
  return NO_ERROR;
}

NETIO_STATUS DeleteIpForwardEntry2(const MIB_IPFORWARD_ROW2* /*row*/) {
  return NO_ERROR;
}

void FreeMibTable(PVOID /*memory*/) {}

ULONG GetAdaptersAddresses(ULONG /*family*/, ULONG /*flags*/, PVOID /*reserved*/,
                           IP_ADAPTER_ADDRESSES* buffer, ULONG* size) {
  const std::size_t count = g_lists.adapters == nullptr ? 0 : g_lists.adapters->size();
  const auto needed = static_cast<ULONG>(count * sizeof(IP_ADAPTER_ADDRESSES));
  if (count == 0 || buffer == nullptr || *size < needed) {
    *size = needed;
    return count == 0 ? ERROR_NO_DATA : ERROR_BUFFER_OVERFLOW;
  }
  for (std::size_t i = 0; i < count; ++i) {
    buffer[i] = (*g_lists.adapters)[i];
    buffer[i].Next = i + 1 < count ? &buffer[i + 1] : nullptr;
  }
  return NO_ERROR;
}

HANDLE CreateToolhelp32Snapshot(DWORD /*flags*/, DWORD /*processId*/) {
  const sim::Call call("CreateToolhelp32Snapshot");
  return call.OpenHandle(std::make_shared<Snapshot>());
}

BOOL Process32NextW(HANDLE /*snapshot*/, PROCESSENTRY32W* entry) {
  if (g_lists.processes == nullptr || g_nextProcess >= g_lists.processes->size()) {
    return FALSE;
  }
  const bench::ProcessRow& row = (*g_lists.processes)[g_nextProcess++];
  entry->th32ProcessID = row.id;
  std::wcscpy(entry->szExeFile, row.name);
  return TRUE;
}

BOOL Process32FirstW(HANDLE snapshot, PROCESSENTRY32W* entry) {
  g_nextProcess = 0;
  return Process32NextW(snapshot, entry);
}
