// IP Helper: the adapter list, one block of memory that points into itself.
#include "tests/sim/ip_rows.h"
#include "tests/sim/text.h"

#include <iphlpapi.h>
#include <winsock2.h>

#include <algorithm>
#include <deque>
#include <new>
#include <vector>

using netmodel::Adapter;
using sim::Call;

namespace {

// Places things one behind the other in the caller's buffer. Without one it measures, with memory
// of its own that goes away with it.
class Packer {
 public:
  explicit Packer(void* buffer) : base_(static_cast<char*>(buffer)) {}

  template <class T>
  T* Place() {
    return new (Take(sizeof(T))) T{};
  }

  wchar_t* PlaceText(const std::string& text) {
    const std::wstring units = sim::Widen(text);
    wchar_t* const place = static_cast<wchar_t*>(Take((units.size() + 1) * sizeof(wchar_t)));
    std::copy_n(units.c_str(), units.size() + 1, place);
    return place;
  }

  size_t used() const { return used_; }

 private:
  void* Take(size_t size) {
    const size_t from = used_;
    const size_t words = (size + 7) / 8;
    used_ += words * 8;
    return base_ != nullptr ? base_ + from : static_cast<void*>(own_.emplace_back(words).data());
  }

  char* base_;
  size_t used_ = 0;
  std::deque<std::vector<std::uint64_t>> own_;
};

SOCKET_ADDRESS PlaceIpv4(Packer& packer, std::uint32_t number) {
  sockaddr_in* const address = packer.Place<sockaddr_in>();
  address->sin_family = AF_INET;
  address->sin_addr.S_un.S_addr = htonl(number);
  return {reinterpret_cast<sockaddr*>(address), sizeof *address};
}

// The bytes of an IPv6 name server are not modelled; that it is one is what counts.
SOCKET_ADDRESS PlaceIpv6(Packer& packer) {
  sockaddr_in6* const address = packer.Place<sockaddr_in6>();
  address->sin6_family = AF_INET6;
  return {reinterpret_cast<sockaddr*>(address), sizeof *address};
}

void PlaceAddresses(Packer& packer, const Adapter& adapter, IP_ADAPTER_ADDRESSES& row) {
  IP_ADAPTER_UNICAST_ADDRESS** link = &row.FirstUnicastAddress;
  for (const netmodel::UnicastAddress& unicast : adapter.addresses) {
    const SOCKET_ADDRESS address = PlaceIpv4(packer, unicast.address);
    auto* const entry = packer.Place<IP_ADAPTER_UNICAST_ADDRESS>();
    entry->Address = address;
    entry->OnLinkPrefixLength = unicast.prefixLength;
    *link = entry;
    link = &entry->Next;
  }
}

void PlaceDnsServers(Packer& packer, const Adapter& adapter, bool beginsEmpty,
                     IP_ADAPTER_ADDRESSES& row) {
  IP_ADAPTER_DNS_SERVER_ADDRESS** link = &row.FirstDnsServerAddress;
  if (beginsEmpty) {
    *link = packer.Place<IP_ADAPTER_DNS_SERVER_ADDRESS>();
    link = &(*link)->Next;
  }
  for (const std::string& server : adapter.dnsServers) {
    std::uint32_t number = 0;
    const SOCKET_ADDRESS address =
        netmodel::ParseIpv4(server, &number) ? PlaceIpv4(packer, number) : PlaceIpv6(packer);
    auto* const entry = packer.Place<IP_ADAPTER_DNS_SERVER_ADDRESS>();
    entry->Address = address;
    *link = entry;
    link = &entry->Next;
  }
}

struct Listing {
  bool withIpv4;
  const sim::IpHelperOddities* oddities;
};

IP_ADAPTER_ADDRESSES* PlaceAdapter(Packer& packer, const Adapter& adapter, const Listing& listing) {
  IP_ADAPTER_ADDRESSES row = {};
  row.Length = sizeof row;
  row.IfIndex = adapter.index;
  row.Mtu = adapter.mtu;
  row.IfType = adapter.ifType;
  row.OperStatus = static_cast<IF_OPER_STATUS>(adapter.operStatus);
  row.Luid.Value = adapter.luid;
  if (listing.oddities->nullTexts.count(adapter.luid) == 0) {
    row.FriendlyName = packer.PlaceText(adapter.friendlyName);
    row.Description = packer.PlaceText(adapter.description);
  }
  if (listing.withIpv4) {
    PlaceAddresses(packer, adapter, row);
  }
  PlaceDnsServers(packer, adapter, listing.oddities->emptyServers.count(adapter.luid) != 0, row);
  auto* const placed = packer.Place<IP_ADAPTER_ADDRESSES>();
  *placed = row;
  return placed;
}

IP_ADAPTER_ADDRESSES* PlaceAll(Packer& packer, const Call& call, bool withIpv4) {
  const Listing listing = {withIpv4, &call->ipHelper};
  IP_ADAPTER_ADDRESSES* first = nullptr;
  IP_ADAPTER_ADDRESSES** link = &first;
  for (const Adapter& adapter : call->network.adapters) {
    *link = PlaceAdapter(packer, adapter, listing);
    link = &(*link)->Next;
  }
  return first;
}

}  // namespace

ULONG GetAdaptersAddresses(ULONG family, ULONG flags, PVOID /*reserved*/,
                           IP_ADAPTER_ADDRESSES* buffer, ULONG* size) {
  Call call("GetAdaptersAddresses", {family, sim::Arg::OfHex(flags)});
  if (call.failed()) {
    return call.code();
  }
  if (call->network.adapters.empty()) {
    *size = 0;
    return ERROR_NO_DATA;
  }
  const bool withIpv4 = family != AF_INET6;
  Packer measure(nullptr);
  PlaceAll(measure, call, withIpv4);
  const ULONG head = sizeof(IP_ADAPTER_ADDRESSES);
  const ULONG needed = head + static_cast<ULONG>(measure.used());
  if (buffer == nullptr || *size < needed) {
    *size = needed;
    return ERROR_BUFFER_OVERFLOW;
  }
  // The list has to start where the buffer does; the packer puts texts in front of their adapter.
  Packer packer(buffer + 1);
  *buffer = *PlaceAll(packer, call, withIpv4);
  return NO_ERROR;
}
