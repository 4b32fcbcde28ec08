#include "tests/unit/product_state.h"

#include <algorithm>

#include "src/control/account_cache.h"
#include "src/control/tunnel_instance.h"
#include "src/host/host_internal.h"
#include "src/runtime/process_state.h"

namespace unit {
namespace {

// The handle of the service's status lives in the file of the service mode alone. It is stored
// whatever it is, so a registration that fails clears it.
void ForgetServiceHandle(sim::Machine& machine) {
  machine.faults.Fail("RegisterServiceCtrlHandlerExW");
  vpn::ServiceMain(0, nullptr);
}

std::string RouteText(const netmodel::Route& route) {
  return netmodel::FormatIpv4(route.destination) + "/" + std::to_string(route.prefixLength) +
         " via " + netmodel::FormatIpv4(route.nextHop) + " on LUID " + std::to_string(route.luid);
}

template <class Item>
bool Holds(const std::vector<Item>& items, const Item& item) {
  return std::find(items.begin(), items.end(), item) != items.end();
}

}  // namespace

const ValuesAtStart& AtStart() {
  static const ValuesAtStart& values =
      *new ValuesAtStart{vpn::g_runtimeDir, vpn::g_stopRequested, vpn::g_consoleEcho,
                         vpn::g_shutdownAllowed, vpn::g_ownerPid};
  return values;
}

void ResetProductState() {
  vpn::StopTunnel();
  vpn::InvalidateAccountCache();
  vpn::g_runtimeDir = AtStart().runtimeDir;
  vpn::g_stopRequested = 0;
  vpn::g_consoleEcho = 0;
  vpn::g_shutdownAllowed = 0;
  vpn::g_ownerPid = 0;
  const std::shared_ptr<sim::Machine> machine = sim::Machine::Current();
  ForgetServiceHandle(*machine);
  machine->calls.Clear();
  machine->faults.Clear();
}

std::vector<std::string> LostOrChanged(const netmodel::Network& before,
                                       const netmodel::Network& now) {
  std::vector<std::string> texts;
  for (const netmodel::Route& route : before.routes) {
    if (!Holds(now.routes, route)) {
      texts.push_back("route " + RouteText(route));
    }
  }
  for (const netmodel::Ipv6Route& route : before.ipv6Routes) {
    if (!Holds(now.ipv6Routes, route)) {
      texts.push_back("route " + route.prefix + " on LUID " + std::to_string(route.luid));
    }
  }
  for (const netmodel::Adapter& adapter : before.adapters) {
    if (!Holds(now.adapters, adapter)) {
      texts.push_back("adapter " + adapter.friendlyName);
    }
  }
  return texts;
}

ProductTest::ProductTest() {
  ResetProductState();
  RememberNetwork();
}

void ProductTest::RememberNetwork() {
  const auto lock = machine.Lock();
  before_ = machine.network;
}

void ProductTest::TearDown() {
  EXPECT_EQ(machine.WaitForThreads(), 0u) << "threads that did not end";
  machine.faults.Clear();
  vpn::StopTunnel();
  if (!mayLeaveChildren_) {
    EXPECT_EQ(machine.processes.Alive(), std::vector<std::string>()) << "children alive";
  }
  if (!mayChangeNetwork_) {
    EXPECT_EQ(LostOrChanged(before_, machine.network), std::vector<std::string>())
        << "lost or changed on the network";
  }
  MachineTest::TearDown();
}

}  // namespace unit
