#include "tests/unit/tunnel/tunnel_fixture.h"

#include <algorithm>
#include <sstream>
#include <utility>

namespace unit {
namespace {

constexpr std::uint32_t kNode = 0xC633641E;          // 198.51.100.30
constexpr std::uint32_t kPanel = 0xC6336414;         // 198.51.100.20
constexpr std::uint32_t kOtherGateway = 0xC0A801FE;  // 192.168.1.254
constexpr std::uint32_t kTunAddress = 0xC0A87B01;    // 192.168.123.1
constexpr std::uint32_t kUpperHalf = 0x80000000;

// What a tunnel may leave behind in another order, or count on, is not compared.
netmodel::Network Comparable(netmodel::Network network) {
  const auto byPlace = [](const auto& a, const auto& b) {
    return std::pair(a.luid, a.prefix) < std::pair(b.luid, b.prefix);
  };
  std::sort(network.ipv6Routes.begin(), network.ipv6Routes.end(), byPlace);
  network.nextIndex = 0;
  return network;
}

}  // namespace

const Texts kFirstStartLabels = {"stop() idle",       "kill stale (clean)", "find physical route",
                                 "pin panel hosts",   "spawn xray",         "xray socks listening",
                                 "spawn tun2socks",   "wintun adapter up",  "set tun address (api)",
                                 "set tun dns (api)", "tun ipv4 ready",     "routes installed",
                                 "ipv6 leak blocked"};

const Texts kRestartLabels = {"stop() own session", "skip orphan scan",  "find physical route",
                              "pin panel hosts",    "spawn xray",        "xray socks listening",
                              "spawn tun2socks",    "wintun adapter up", "set tun address (api)",
                              "set tun dns (api)",  "tun ipv4 ready",    "routes installed",
                              "ipv6 leak blocked"};

Texts First(const Texts& texts, size_t count) {
  const size_t end = std::min(count, texts.size());
  return Texts(texts.begin(), texts.begin() + static_cast<std::ptrdiff_t>(end));
}

Texts Last(const Texts& texts, size_t count) {
  const size_t from = texts.size() - std::min(count, texts.size());
  return Texts(texts.begin() + static_cast<std::ptrdiff_t>(from), texts.end());
}

std::string NetshCall(const std::string& arguments) {
  return "CreateProcessW null, \"netsh " + arguments + "\", own, 0x8000000, null, 1, 0";
}

TunnelTest::TunnelTest() {
  machine.PutHelpers(L"C:\\run");
  machine.files.Put(L"C:\\run\\session.json.xray.json", "{}");
  machine.names.Set("panel.example", std::vector<std::string>{"198.51.100.20"});
  config.xrayDir = L"C:\\run\\xray";
  config.tun2socksDir = L"C:\\run\\tun2socks";
  config.configPath = L"C:\\run\\session.json.xray.json";
  config.serverAddress = L"198.51.100.30";
  config.tunAddress = L"192.168.123.1";
  config.panelHosts = {L"panel.example"};
  SeedLookAlikes();
  RememberMachine();
}

void TunnelTest::SeedLookAlikes() {
  netmodel::Network& network = machine.network;
  const std::uint64_t ethernet = Ethernet().luid;
  netmodel::Adapter& wlan = AddAdapter("WLAN", "Wireless Adapter");
  wlan.dnsServers = {"1.1.1.1"};
  wlan.dnsFromDhcp = false;
  const std::uint64_t wireless = wlan.luid;
  netmodel::Adapter& namesake = AddAdapter("tavrin old", "Virtual Adapter");
  namesake.dnsServers = {"1.1.1.1"};
  namesake.dnsFromDhcp = false;
  namesake.addresses = {{kTunAddress, 24}};
  const std::uint64_t old = namesake.luid;
  const netmodel::Route routes[] = {
      {wireless, 0, 0, 0x0A000001, 50},          {wireless, kNode, 32, 0x0A000001, 1},
      {wireless, kPanel, 32, kGateway, 1},       {ethernet, kNode, 32, kOtherGateway, 1},
      {ethernet, kPanel, 32, kOtherGateway, 1},  {ethernet, kNode, 31, kGateway, 1},
      {ethernet, kNode + 1, 32, kGateway, 1},    {ethernet, 0, 1, kTunAddress, 5},
      {ethernet, kUpperHalf, 1, kTunAddress, 5}, {old, 0, 1, kTunAddress, 5},
      {old, kUpperHalf, 1, kTunAddress, 5},      {old, kNode, 32, kGateway, 1}};
  network.routes.insert(network.routes.end(), std::begin(routes), std::end(routes));
  const netmodel::Ipv6Route ipv6[] = {
      {wireless, "::/0"}, {wireless, "::/1"}, {old, "::/1"}, {old, "8000::/1"}, {ethernet, "::/1"}};
  network.ipv6Routes.insert(network.ipv6Routes.end(), std::begin(ipv6), std::end(ipv6));
}

void TunnelTest::MakeHelpersQuick() {
  machine.programs.On(L"xray.exe", sim::Script().Listens(17593, 0));
  sim::AdapterPlan plan = sim::TavrinAdapter();
  plan.appearsAfter = plan.renamedAfter = 0;
  plan.upAfter = 0;
  machine.programs.On(L"tun2socks*.exe", sim::Script().BringsAdapter(plan));
}

void TunnelTest::LetAdapterLinger(std::uint64_t milliseconds) {
  sim::AdapterPlan plan = sim::TavrinAdapter();
  plan.vanishesAfter = milliseconds;
  machine.programs.On(L"tun2socks*.exe", sim::Script().BringsAdapter(plan));
}

Texts TunnelTest::Labels() const {
  std::istringstream trace(
      machine.files.Read(L"C:\\Program Files\\Tavrin\\connect-timing.log").value_or("").substr(3));
  Texts labels;
  for (std::string line; std::getline(trace, line);) {
    const std::string label = line.substr(0, 28);
    labels.push_back(label.substr(0, label.find_last_not_of(' ') + 1));
  }
  return labels;
}

std::string TunnelTest::LastLabel() const {
  return Labels().back();
}

Texts TunnelTest::NetshLines() const {
  Texts lines;
  for (const std::string& line : machine.processes.StartedCommandLines()) {
    if (line.rfind("netsh ", 0) == 0) {
      lines.push_back(line);
    }
  }
  return lines;
}

Texts TunnelTest::Actions() const {
  return machine.calls.Sequence({"TerminateProcess", "CreateJobObjectW", "SetInformationJobObject",
                                 "CreateProcessW", "AssignProcessToJobObject", "ResumeThread",
                                 "CreateIpForwardEntry2", "DeleteIpForwardEntry2",
                                 "CreateUnicastIpAddressEntry", "DeleteUnicastIpAddressEntry",
                                 "SetIpInterfaceEntry", "SetInterfaceDnsSettings"});
}

Texts TunnelTest::Pins() {
  const std::string tail = "/32 via 192.168.1.1 metric 1";
  Texts pins;
  for (const std::string& route : RoutesOf(Ethernet().luid)) {
    const size_t at = route.find(tail);
    if (at != std::string::npos && route != "198.51.100.31" + tail) {
      pins.push_back(route.substr(0, at));
    }
  }
  return pins;
}

void TunnelTest::RememberMachine() {
  before_ = machine.network;
  RememberNetwork();
}

void TunnelTest::ExpectNetworkAsBefore() {
  EXPECT_TRUE(Comparable(machine.network) == Comparable(before_));
  EXPECT_EQ(LostOrChanged(before_, machine.network), Texts());
  EXPECT_EQ(LostOrChanged(machine.network, before_), Texts()) << "this was added";
}

void TunnelTest::TearDown() {
  machine.faults.Clear();
  manager.reset();
  machine.clock.Advance(60000);
  ExpectNetworkAsBefore();
  ProductTest::TearDown();
}

}  // namespace unit
