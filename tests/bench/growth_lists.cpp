// Routes, processes, adapters and pins.
#include <memory>
#include <string>
#include <vector>

#include "src/net/adapters.h"
#include "src/net/interface_address.h"
#include "src/net/physical_route.h"
#include "src/net/routes.h"
#include "src/tunnel/tunnel_internal.h"
#include "src/tunnel/tunnel_manager.h"
#include "tests/bench/figures.h"
#include "tests/bench/platform_lists.h"
#include "tests/sim/machine.h"

namespace bench {
namespace {

constexpr wchar_t kAlias[] = L"Ethernet";
constexpr wchar_t kRuntimeDir[] = L"C:\\run";

// Without what the machine noted of the last run of the work.
void Forget() {
  sim::Machine::Current()->calls.Clear();
}

void LookAtRoutes() {
  vpn::PhysicalRoute route;
  if (!vpn::FindPhysicalRoute(route) || !vpn::RouteExists(kAlias, L"0.0.0.0", 1)) {
    Fail("a route was not found");
  }
  Forget();
}

std::vector<ProcessRow> Processes(std::size_t count, DWORD id) {
  std::vector<ProcessRow> rows;
  for (std::size_t i = 0; i < count; ++i) {
    rows.push_back({id, i % 10 == 0 ? L"tun2socks-windows-amd64.exe" : L"svchost.exe"});
  }
  return rows;
}

std::vector<IP_ADAPTER_ADDRESSES> Adapters(std::size_t count) {
  static wchar_t name[] = L"Ethernet 12";
  static wchar_t description[] = L"Intel(R) Ethernet Connection I219-V #12";
  IP_ADAPTER_ADDRESSES row = {};
  row.FriendlyName = name;
  row.Description = description;
  row.OperStatus = IfOperStatusUp;
  return std::vector<IP_ADAPTER_ADDRESSES>(count, row);
}

void LookAtAdapters() {
  if (vpn::FindConflictingAdapter(L"tavrin") || vpn::WaitForTunAdapter(L"tavrin", 1) ||
      vpn::WaitForAdapterIpv4(L"tavrin", 1) ||
      !vpn::ListInterfaceDnsServers(L"Ethernet 12").empty()) {
    Fail("an adapter was taken for another");
  }
  Forget();
}

std::vector<std::wstring> Addresses(std::size_t count) {
  std::vector<std::wstring> addresses;
  for (std::size_t i = 0; i < count; ++i) {
    addresses.push_back(L"198.51." + std::to_wstring(i / 250) + L"." + std::to_wstring(i % 250));
  }
  return addresses;
}

void PinAndUnpin(const vpn::TunnelConfig& config, const RouteTable& routes) {
  g_lists = {};
  g_lists.routes = &routes;
  sim::Machine::Current()->faults.FailAlways("CreateJobObjectW");
  vpn::TunnelManager manager;
  if (manager.start(config).text() != L"CreateJobObject failed") {
    Fail("the start came to another end than it should");
  }
  manager.stop();
  sim::Machine::Current()->faults.Clear();
  Forget();
}

}  // namespace

Cases GrowthOfRoutes(bool quick) {
  Cases cases;
  for (const std::size_t size : Sizes(10'000, quick)) {
    cases.push_back({"service", size, [routes = Routes(size)] {
                       g_lists = {};
                       g_lists.routes = routes.get();
                       LookAtRoutes();
                     }});
  }
  return cases;
}

Cases GrowthOfProcesses(bool quick) {
  const auto other =
      sim::Machine::Current()->processes.Seed(L"D:\\elsewhere\\tun2socks-windows-amd64.exe");
  Cases cases;
  for (const std::size_t size : Sizes(5'000, quick)) {
    cases.push_back({"service", size, [rows = Processes(size, other->id)] {
                       g_lists = {};
                       g_lists.processes = &rows;
                       if (vpn::KillProcessesUnder(L"C:\\run\\tun2socks", L"tun2socks")) {
                         Fail("somebody else's process was ended");
                       }
                       Forget();
                     }});
  }
  return cases;
}

Cases GrowthOfAdapters(bool quick) {
  Cases cases;
  for (const std::size_t size : Sizes(500, quick)) {
    cases.push_back({"service", size, [rows = Adapters(size)] {
                       g_lists = {};
                       g_lists.adapters = &rows;
                       LookAtAdapters();
                     }});
  }
  return cases;
}

Cases GrowthOfPins(bool quick) {
  const std::shared_ptr<sim::Machine> machine = sim::Machine::Current();
  machine->PutHelpers(kRuntimeDir);
  machine->files.Put(std::wstring(kRuntimeDir) + L"\\session.json.xray.json");
  machine->environment.Set(L"TAVRIN_TIMING", std::wstring(300, L'x'));  // too long: no trace
  Cases cases;
  for (const std::size_t size : Sizes(1'000, quick)) {
    vpn::TunnelConfig config;
    config.xrayDir = std::wstring(kRuntimeDir) + L"\\xray";
    config.tun2socksDir = std::wstring(kRuntimeDir) + L"\\tun2socks";
    config.configPath = std::wstring(kRuntimeDir) + L"\\session.json.xray.json";
    config.panelHosts = Addresses(size);
    cases.push_back(
        {"service", size, [config, routes = Routes(1)] { PinAndUnpin(config, *routes); }});
  }
  return cases;
}

}  // namespace bench
