// GetAdaptersAddresses of the stand-in iphlpapi.dll: linked records within the caller's buffer.
#include <cstdio>
#include <cstring>

#include "tests/standins/iphlpapi_call.h"
#include "tests/standins/text.h"

using netmodel::Adapter;
using netmodel::Network;

namespace {

// Hands out pieces of the caller's buffer from front to back; without a buffer it only counts.
class Arena {
 public:
  explicit Arena(void* memory) : memory_(static_cast<std::uint8_t*>(memory)) {}

  template <typename T>
  T* Take(std::size_t count = 1) {
    const std::size_t offset = used_;
    used_ += (count * sizeof(T) + 7) & ~static_cast<std::size_t>(7);
    return memory_ == nullptr ? nullptr : reinterpret_cast<T*>(memory_ + offset);
  }

  template <typename Char>
  Char* TakeText(const std::basic_string<Char>& text) {
    Char* copy = Take<Char>(text.size() + 1);
    if (copy != nullptr) std::memcpy(copy, text.c_str(), (text.size() + 1) * sizeof(Char));
    return copy;
  }

  std::size_t used() const { return used_; }

 private:
  std::uint8_t* memory_;
  std::size_t used_ = 0;
};

SOCKET_ADDRESS TakeSocketAddress(Arena& arena, const std::string& text) {
  SOCKADDR_INET address{};
  const std::wstring wide = standins::ToWide(text);
  const bool v6 = text.find(':') != std::string::npos;
  address.si_family = v6 ? AF_INET6 : AF_INET;
  void* bytes = v6 ? static_cast<void*>(&address.Ipv6.sin6_addr) : &address.Ipv4.sin_addr;
  InetPtonW(address.si_family, wide.c_str(), bytes);
  SOCKADDR_INET* copy = arena.Take<SOCKADDR_INET>();
  if (copy != nullptr) *copy = address;
  const std::size_t size = v6 ? sizeof(sockaddr_in6) : sizeof(sockaddr_in);
  return {reinterpret_cast<LPSOCKADDR>(copy), static_cast<INT>(size)};
}

std::string AdapterNameOf(const Adapter& adapter) {
  GUID guid{};
  std::memcpy(&guid, adapter.guid.data(), sizeof(guid));
  char text[64] = {};
  std::snprintf(text, sizeof(text), "{%08lX-%04X-%04X-%02X%02X-%02X%02X%02X%02X%02X%02X}",
                guid.Data1, guid.Data2, guid.Data3, guid.Data4[0], guid.Data4[1], guid.Data4[2],
                guid.Data4[3], guid.Data4[4], guid.Data4[5], guid.Data4[6], guid.Data4[7]);
  return text;
}

void TakeAddresses(Arena& arena, const Adapter& adapter, IP_ADAPTER_ADDRESSES* record) {
  IP_ADAPTER_UNICAST_ADDRESS_LH** link = record == nullptr ? nullptr : &record->FirstUnicastAddress;
  for (const netmodel::UnicastAddress& address : adapter.addresses) {
    auto* entry = arena.Take<IP_ADAPTER_UNICAST_ADDRESS_LH>();
    const SOCKET_ADDRESS socket = TakeSocketAddress(arena, netmodel::FormatIpv4(address.address));
    if (entry == nullptr) continue;
    *entry = {};
    entry->Length = sizeof(*entry);
    entry->Address = socket;
    entry->OnLinkPrefixLength = address.prefixLength;
    *link = entry;
    link = &entry->Next;
  }
}

void TakeDnsServers(Arena& arena, const Adapter& adapter, IP_ADAPTER_ADDRESSES* record) {
  IP_ADAPTER_DNS_SERVER_ADDRESS_XP** link =
      record == nullptr ? nullptr : &record->FirstDnsServerAddress;
  for (const std::string& server : adapter.dnsServers) {
    auto* entry = arena.Take<IP_ADAPTER_DNS_SERVER_ADDRESS_XP>();
    const SOCKET_ADDRESS socket = TakeSocketAddress(arena, server);
    if (entry == nullptr) continue;
    *entry = {};
    entry->Length = sizeof(*entry);
    entry->Address = socket;
    *link = entry;
    link = &entry->Next;
  }
}

void FillRecord(const Adapter& adapter, IP_ADAPTER_ADDRESSES* record) {
  record->IfIndex = adapter.index;
  record->Luid.Value = adapter.luid;
  record->Mtu = adapter.mtu;
  record->IfType = adapter.ifType;
  record->OperStatus = static_cast<IF_OPER_STATUS>(adapter.operStatus);
  record->PhysicalAddressLength = adapter.ifType == IF_TYPE_ETHERNET_CSMACD ? 6 : 0;
  record->Ipv4Enabled = 1;
  record->Ipv6Enabled = adapter.ipv6Enabled ? 1 : 0;
  std::memcpy(&record->NetworkGuid, adapter.guid.data(), sizeof(GUID));
}

IP_ADAPTER_ADDRESSES* TakeAdapter(Arena& arena, const Adapter& adapter) {
  auto* record = arena.Take<IP_ADAPTER_ADDRESSES>();
  if (record != nullptr) {
    *record = {};
    record->Length = sizeof(*record);
    FillRecord(adapter, record);
  }
  char* name = arena.TakeText(AdapterNameOf(adapter));
  wchar_t* friendlyName = arena.TakeText(standins::ToWide(adapter.friendlyName));
  wchar_t* description = arena.TakeText(standins::ToWide(adapter.description));
  wchar_t* suffix = arena.TakeText(std::wstring());
  if (record != nullptr) {
    record->AdapterName = name;
    record->FriendlyName = friendlyName;
    record->Description = description;
    record->DnsSuffix = suffix;
  }
  TakeAddresses(arena, adapter, record);
  TakeDnsServers(arena, adapter, record);
  return record;
}

std::size_t TakeAll(const Network& network, void* memory) {
  Arena arena(memory);
  IP_ADAPTER_ADDRESSES* previous = nullptr;
  for (const Adapter& adapter : network.adapters) {
    IP_ADAPTER_ADDRESSES* record = TakeAdapter(arena, adapter);
    if (previous != nullptr) previous->Next = record;
    previous = record;
  }
  return arena.used();
}

std::uint32_t CopyAdapters(const Network& network, void* memory, ULONG* size) {
  const auto needed = static_cast<ULONG>(TakeAll(network, nullptr));
  if (needed == 0) return ERROR_NO_DATA;
  const bool fits = memory != nullptr && *size >= needed;
  *size = needed;
  if (!fits) return ERROR_BUFFER_OVERFLOW;
  TakeAll(network, memory);
  return NO_ERROR;
}

}  // namespace

extern "C" ULONG WINAPI GetAdaptersAddresses(ULONG family, ULONG flags, PVOID /*reserved*/,
                                             PIP_ADAPTER_ADDRESSES addresses, PULONG size) {
  return standins::Answer(
      "GetAdaptersAddresses",
      [=](const Network&) {
        return "family " + std::to_string(family) + ", flags " + std::to_string(flags) +
               (addresses == nullptr ? ", for the size" : ", into a buffer");
      },
      [=](Network& n) { return CopyAdapters(n, addresses, size); });
}
