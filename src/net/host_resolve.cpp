#include "src/net/host_resolve.h"

#include <algorithm>

#include "src/net/ip_helper.h"
#include "src/net/routes.h"
#include "src/net/winsock_session.h"

namespace vpn {
namespace {

struct AddressInfoTraits {
  using Type = ADDRINFOW*;
  static Type Empty() { return nullptr; }
  static bool IsValid(Type value) { return value != nullptr; }
  static void Close(Type value) { FreeAddrInfoW(value); }
};

std::vector<std::wstring> LookUp(const std::wstring& host) {
  ADDRINFOW hints = {};
  hints.ai_family = AF_INET;
  hints.ai_socktype = SOCK_STREAM;
  UniqueHandle<AddressInfoTraits> result;
  if (GetAddrInfoW(host.c_str(), nullptr, &hints, result.put()) != 0) {
    return {};
  }
  std::vector<std::wstring> addresses;
  for (const ADDRINFOW* entry = result.get(); entry != nullptr; entry = entry->ai_next) {
    if (entry->ai_family != AF_INET || entry->ai_addr == nullptr) {
      continue;
    }
    const std::wstring text =
        FormatIpv4(reinterpret_cast<const sockaddr_in*>(entry->ai_addr)->sin_addr);
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
  // Without Winsock the look-up just fails.
  const WinsockSession winsock;
  std::vector<std::wstring> addresses = LookUp(host);
  std::sort(addresses.begin(), addresses.end());
  addresses.erase(std::unique(addresses.begin(), addresses.end()), addresses.end());
  return addresses;
}

}  // namespace vpn
