#include "src/net/host_resolve.h"

#include <algorithm>

#include "src/common/text.h"
#include "src/net/ip_helper.h"

namespace vpn {
namespace {

// The platform's resolver has two forms: for wide text, and for bytes.
int LookUp(const std::wstring& host, const ADDRINFOW* hints, ADDRINFOW** list) {
  return GetAddrInfoW(host.c_str(), nullptr, hints, list);
}
int LookUp(const std::string& host, const addrinfo* hints, addrinfo** list) {
  return getaddrinfo(host.c_str(), nullptr, hints, list);
}
void Free(ADDRINFOW* list) {
  FreeAddrInfoW(list);
}
void Free(addrinfo* list) {
  freeaddrinfo(list);
}

template <class Info>
struct AddressListTraits : NullIsEmpty<Info*> {
  static void close(Info* value) { Free(value); }
};
template <class Info>
using AddressList = UniqueHandle<AddressListTraits<Info>>;

// Empty when the host does not resolve.
template <class Info, class Text>
AddressList<Info> LookUpIpv4(const Text& host) {
  Info hints = {};
  hints.ai_family = AF_INET;
  hints.ai_socktype = SOCK_STREAM;
  AddressList<Info> list;
  return LookUp(host, &hints, list.put()) == 0 ? std::move(list) : AddressList<Info>();
}

template <class Info>
const IN_ADDR& AddressOf(const Info& entry) {
  return reinterpret_cast<const sockaddr_in*>(entry.ai_addr)->sin_addr;
}

std::vector<std::wstring> ResolveAll(const std::wstring& host) {
  const WinsockScope winsock;  // without it the look-up just fails
  const auto list = LookUpIpv4<ADDRINFOW>(host);
  std::vector<std::wstring> addresses;
  for (const ADDRINFOW* entry = list.get(); entry != nullptr; entry = entry->ai_next) {
    const bool isIpv4 = entry->ai_family == AF_INET && entry->ai_addr != nullptr;
    const std::wstring text = isIpv4 ? FormatIpv4(AddressOf(*entry)) : L"";
    if (!text.empty()) {
      addresses.push_back(text);
    }
  }
  return addresses;
}

}  // namespace

std::vector<std::wstring> ResolveHostIpv4(const std::wstring& host) {
  if (host.empty()) {
    return {};
  }
  if (IsIpv4Literal(host)) {
    return {host};
  }
  std::vector<std::wstring> addresses = ResolveAll(host);
  std::sort(addresses.begin(), addresses.end());
  addresses.erase(std::unique(addresses.begin(), addresses.end()), addresses.end());
  return addresses;
}

std::string ResolveFirstIpv4(const std::string& host) {
  const WinsockScope winsock;
  const auto list = LookUpIpv4<addrinfo>(host);
  if (!list) {
    return {};
  }
  std::array<char, 22> text{};
  const char* const written = inet_ntop(AF_INET, &AddressOf(*list.get()), text.data(), text.size());
  return written == nullptr ? "" : text.data();
}

}  // namespace vpn
