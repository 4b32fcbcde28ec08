// Name resolution, and addresses as text.
#include "tests/sim/call.h"
#include "tests/sim/text.h"

#include <winsock2.h>
#include <ws2tcpip.h>

#include <algorithm>
#include <deque>

using sim::Call;

USHORT htons(USHORT value) {
  return static_cast<USHORT>((value >> 8) | (value << 8));
}
USHORT ntohs(USHORT value) {
  return htons(value);
}
ULONG htonl(ULONG value) {
  return (value >> 24) | ((value >> 8) & 0xFF00u) | ((value << 8) & 0xFF0000u) | (value << 24);
}
ULONG ntohl(ULONG value) {
  return htonl(value);
}

namespace {

constexpr char kAddressList[] = "address list";

// The chain and everything that it points to.
template <class Info>
struct AddressList {
  std::deque<Info> infos;
  std::deque<sockaddr_in> addresses;

  void Add(const std::string& text, int family = AF_INET) {
    std::uint32_t number = 0;
    (void)netmodel::ParseIpv4(text, &number);
    sockaddr_in& address = addresses.emplace_back();
    address = {};
    address.sin_family = AF_INET;
    address.sin_addr.S_un.S_addr = htonl(number);
    Info& info = infos.emplace_back();
    info = {};
    info.ai_family = family;
    info.ai_socktype = SOCK_STREAM;
    info.ai_addrlen = sizeof address;
    info.ai_addr = reinterpret_cast<sockaddr*>(&address);
    if (infos.size() > 1) {
      infos[infos.size() - 2].ai_next = &info;
    }
  }
};

template <class Info>
INT Resolve(Call& call, const std::string& name, const Info* hints, Info** result) {
  *result = nullptr;
  if (call.failed()) {
    return call.Fail(static_cast<INT>(call.code()));
  }
  if (call->winsockStarts[call.process()->id] == 0) {
    return call.Fail(WSANOTINITIALISED, WSANOTINITIALISED);
  }
  call->names.NoteAsked(name);
  const sim::HostEntry entry = call->names.Find(name);
  call->clock.Advance(entry.takes);
  const bool wantsIpv6 = hints != nullptr && hints->ai_family == AF_INET6;
  const int error = entry.error == 0 && wantsIpv6 ? WSANO_DATA : entry.error;
  if (error != 0) {
    return call.Fail(error, static_cast<std::uint32_t>(error));
  }
  if (entry.noList) {
    return 0;
  }
  const auto list = std::make_shared<AddressList<Info>>();
  if (entry.oddEntries) {
    list->Add("192.0.2.66", AF_INET6);
  }
  for (const std::string& address : entry.ipv4) {
    list->Add(address);
  }
  if (entry.oddEntries) {
    list->Add("192.0.2.67");
    list->infos.back().ai_addr = nullptr;
  }
  *result = &list->infos.front();
  call.Track(*result, kAddressList, list);
  return 0;
}

// The hints for the call log: `family 2, type 1`.
template <class Info>
std::string Describe(const Info* hints) {
  return hints == nullptr ? "null"
                          : "family " + std::to_string(hints->ai_family) + ", type " +
                                std::to_string(hints->ai_socktype);
}

void Free(Call& call, void* list) {
  if (list != nullptr) {
    call->resources.Release(list, kAddressList, call.name());
  }
}

std::string Dotted(const void* address) {
  const in_addr* const ipv4 = static_cast<const in_addr*>(address);
  return netmodel::FormatIpv4(ntohl(ipv4->S_un.S_addr));
}

template <class Char>
const Char* PutText(Call& call, INT family, const void* address, Char* buffer, size_t size) {
  if (call.failed()) {
    return call.Fail<const Char*>(nullptr);
  }
  if (family != AF_INET) {
    return call.Fail<const Char*>(nullptr, WSAEAFNOSUPPORT);
  }
  const std::string text = Dotted(address);
  if (text.size() >= size) {
    return call.Fail<const Char*>(nullptr, ERROR_INVALID_PARAMETER);
  }
  std::copy_n(text.c_str(), text.size() + 1, buffer);
  return buffer;
}

}  // namespace

INT GetAddrInfoW(PCWSTR node, PCWSTR service, const ADDRINFOW* hints, ADDRINFOW** result) {
  Call call("GetAddrInfoW", {node, service, Describe(hints)});
  return Resolve(call, sim::Narrow(node), hints, result);
}

void FreeAddrInfoW(ADDRINFOW* list) {
  Call call("FreeAddrInfoW");
  Free(call, list);
}

INT getaddrinfo(PCSTR node, PCSTR service, const ADDRINFOA* hints, ADDRINFOA** result) {
  Call call("getaddrinfo", {node, service, Describe(hints)});
  return Resolve(call, std::string(node), hints, result);
}

void freeaddrinfo(ADDRINFOA* list) {
  Call call("freeaddrinfo");
  Free(call, list);
}

PCSTR inet_ntop(INT family, const void* address, PSTR buffer, size_t size) {
  Call call("inet_ntop", {family, static_cast<int>(size)});
  return PutText(call, family, address, buffer, size);
}

PCWSTR InetNtopW(INT family, const void* address, PWSTR buffer, size_t size) {
  Call call("InetNtopW", {family, static_cast<int>(size)});
  return PutText(call, family, address, buffer, size);
}

INT InetPtonW(INT family, PCWSTR text, PVOID address) {
  Call call("InetPtonW", {text});
  if (call.failed()) {
    return call.Fail(-1);
  }
  if (family != AF_INET) {
    return call.Fail(-1, WSAEAFNOSUPPORT);
  }
  std::uint32_t number = 0;
  if (!netmodel::ParseIpv4(sim::Narrow(text), &number)) {
    return 0;
  }
  static_cast<in_addr*>(address)->S_un.S_addr = htonl(number);
  return 1;
}
