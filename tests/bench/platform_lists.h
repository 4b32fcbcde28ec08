// The lists of the machine, for the benchmarks. In the place of the simulated machine's calls,
// which build each list anew and look through the whole of it for each change, stand calls that
// hand out a prepared list and take each change at once: what grows is then the service's own part.
#ifndef TAVRIN_TESTS_BENCH_PLATFORM_LISTS_H_
#define TAVRIN_TESTS_BENCH_PLATFORM_LISTS_H_

#include <winsock2.h>
#include <iphlpapi.h>
#include <netioapi.h>
#include <windows.h>
#include <tlhelp32.h>

#include <cstddef>
#include <memory>
#include <vector>

namespace bench {

// The table as the platform lays it out: a count, and the rows behind it.
class RouteTable {
 public:
  explicit RouteTable(const std::vector<MIB_IPFORWARD_ROW2>& rows);
  MIB_IPFORWARD_TABLE2* get() const;

 private:
  std::vector<std::byte> memory_;
};

// So many rows on the machine's first adapter, which gets the name kEthernet: host routes, and for
// each ten of them a default route, the better the later it stands. Behind them a split route.
inline constexpr char kEthernet[] = "Ethernet";
std::shared_ptr<const RouteTable> Routes(std::size_t count);

struct ProcessRow {
  DWORD id;
  const wchar_t* name;
};

// What the calls give; null is an empty list. Whoever sets one keeps it alive.
struct PlatformLists {
  const RouteTable* routes = nullptr;
  const std::vector<IP_ADAPTER_ADDRESSES>* adapters = nullptr;  // `Next` is set by the call
  const std::vector<ProcessRow>* processes = nullptr;
};
extern PlatformLists g_lists;

}  // namespace bench

#endif  // TAVRIN_TESTS_BENCH_PLATFORM_LISTS_H_
