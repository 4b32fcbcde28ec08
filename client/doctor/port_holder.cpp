#include "client/doctor/port_holder.h"

#include <cstddef>
#include <vector>

#include "client/service/presence.h"
#include "src/net/ip_helper.h"

namespace vpn {
namespace {

// 0 when nobody is found, or when the platform does not tell.
DWORD ProcessOnPort(std::uint16_t port) {
  DWORD size = 0;
  (void)GetExtendedTcpTable(nullptr, &size, FALSE, AF_INET, TCP_TABLE_OWNER_PID_LISTENER, 0);
  std::vector<std::uint64_t> buffer(size / sizeof(std::uint64_t) + 1);
  auto* const table = reinterpret_cast<MIB_TCPTABLE_OWNER_PID*>(buffer.data());
  if (size == 0 || GetExtendedTcpTable(table, &size, FALSE, AF_INET, TCP_TABLE_OWNER_PID_LISTENER,
                                       0) != NO_ERROR) {
    return 0;
  }
  for (DWORD at = 0; at < table->dwNumEntries; ++at) {
    if (ntohs(static_cast<u_short>(table->table[at].dwLocalPort)) == port) {
      return table->table[at].dwOwningPid;
    }
  }
  return 0;
}

}  // namespace

std::wstring HolderOfPort(std::uint16_t port) {
  const DWORD id = ProcessOnPort(port);
  if (id == 0) {
    return L"a program that Windows does not name";
  }
  const std::wstring name = ImageNameOf(id);
  const std::wstring process = L"process " + std::to_wstring(id);
  return name.empty() ? process : name + L" (" + process + L")";
}

}  // namespace vpn
