// Prints the simulated machine for people: "show_machine routes|ipv6|adapters|calls".
// The machine is the one that TAVRIN_TEST_MACHINE names.
#include <windows.h>

#include <cstdio>
#include <exception>

#include "tests/standins/shared_machine.h"

namespace standins {
namespace {

using netmodel::FormatIpv4;

std::string AliasOf(const netmodel::Network& network, std::uint64_t luid) {
  const netmodel::Adapter* adapter = network.FindByLuid(luid);
  return adapter != nullptr ? adapter->friendlyName : "?";
}

void PrintRoutes(const netmodel::Network& network) {
  for (const netmodel::Route& route : network.routes) {
    const std::string destination =
        FormatIpv4(route.destination) + "/" + std::to_string(route.prefixLength);
    const std::string hop = route.nextHop == 0 ? "on-link" : FormatIpv4(route.nextHop);
    std::printf("%-20s via %-16s metric %4u  on %s\n", destination.c_str(), hop.c_str(),
                route.metric, AliasOf(network, route.luid).c_str());
  }
}

void PrintIpv6(const netmodel::Network& network) {
  for (const netmodel::Adapter& adapter : network.adapters) {
    std::printf("%s: ipv6 %s, router discovery %s\n", adapter.friendlyName.c_str(),
                adapter.ipv6Enabled ? "on" : "off", adapter.ipv6RouterDiscovery ? "on" : "off");
  }
  for (const netmodel::Ipv6Route& route : network.ipv6Routes) {
    std::printf("%-20s on %s\n", route.prefix.c_str(), AliasOf(network, route.luid).c_str());
  }
}

void PrintAdapters(const netmodel::Network& network) {
  for (const netmodel::Adapter& adapter : network.adapters) {
    std::printf("%s (%s), %s\n", adapter.friendlyName.c_str(), adapter.description.c_str(),
                adapter.operStatus == netmodel::kOperStatusUp ? "up" : "down");
    for (const netmodel::UnicastAddress& address : adapter.addresses) {
      std::printf("  address %s/%u\n", FormatIpv4(address.address).c_str(), address.prefixLength);
    }
    for (const std::string& server : adapter.dnsServers) {
      std::printf("  name server %s\n", server.c_str());
    }
  }
}

int Show(const std::wstring& what) {
  if (what == L"calls") {
    for (const std::string& line : ReadCallLog(MachineDirectoryFromEnvironment())) {
      std::printf("%s\n", line.c_str());
    }
    return 0;
  }
  const netmodel::Network network = SharedMachine().state().network;
  if (what == L"routes") PrintRoutes(network);
  if (what == L"ipv6") PrintIpv6(network);
  if (what == L"adapters") PrintAdapters(network);
  return what == L"routes" || what == L"ipv6" || what == L"adapters" ? 0 : 2;
}

}  // namespace
}  // namespace standins

int wmain(int argc, wchar_t** argv) {
  SetConsoleOutputCP(CP_UTF8);
  try {
    return standins::Show(argc == 2 ? argv[1] : L"");
  } catch (const std::exception& failure) {
    std::fprintf(stderr, "%s\n", failure.what());
    return 1;
  }
}
