#include "tests/sim/ip_rows.h"

#include <cstring>

namespace sim {

void PutAddress(SOCKADDR_INET& target, std::uint32_t address) {
  target.Ipv4 = {};
  target.Ipv4.sin_family = AF_INET;
  target.Ipv4.sin_addr.S_un.S_addr = htonl(address);
}

bool TakeAddress(const SOCKADDR_INET& source, std::uint32_t* address) {
  *address = ntohl(source.Ipv4.sin_addr.S_un.S_addr);
  return source.si_family == AF_INET;
}

std::array<std::uint8_t, 16> GuidBytes(const GUID& guid) {
  std::array<std::uint8_t, 16> bytes{};
  static_assert(sizeof guid == 16);
  std::memcpy(bytes.data(), &guid, sizeof guid);
  return bytes;
}

GUID GuidOf(const std::array<std::uint8_t, 16>& bytes) {
  GUID guid;
  std::memcpy(&guid, bytes.data(), sizeof guid);
  return guid;
}

std::string AliasOf(const netmodel::Network& network, std::uint64_t luid) {
  const netmodel::Adapter* const adapter = network.FindByLuid(luid);
  return adapter != nullptr ? '"' + adapter->friendlyName + '"' : "luid " + std::to_string(luid);
}

}  // namespace sim
