#include "tests/fault/scene.h"

#include <utility>

#include "tests/fault/process.h"

namespace fault {
namespace {

constexpr char kPhysical[] = "以太网";
constexpr wchar_t kInternetSettings[] =
    L"Software\\Microsoft\\Windows\\CurrentVersion\\Internet Settings";

std::uint32_t Ip(const char* text) {
  std::uint32_t address = 0;
  (void)netmodel::ParseIpv4(text, &address);
  return address;
}

std::uint64_t Add(netmodel::Network& network, const char* name, const char* description, bool up,
                  const char* address, std::vector<std::string> servers, bool byDhcp) {
  netmodel::Adapter adapter;
  adapter.friendlyName = name;
  adapter.description = description;
  adapter.operStatus = up ? netmodel::kOperStatusUp : netmodel::kOperStatusDown;
  adapter.addresses = {{Ip(address), 24}};
  adapter.dnsServers = servers;
  adapter.dhcpDnsServers = byDhcp ? std::move(servers) : std::vector<std::string>();
  adapter.dnsFromDhcp = byDhcp;
  return network.AddAdapter(std::move(adapter)).luid;
}

void AddRoute(netmodel::Network& network, std::uint64_t luid, const char* destination,
              std::uint8_t prefixLength, const char* nextHop, std::uint32_t metric) {
  (void)network.CreateRoute({luid, Ip(destination), prefixLength, Ip(nextHop), metric});
}

// Other people's adapters, name servers and routes, each like one that the product makes or looks
// for in all but one respect.
void PutLookAlikes(netmodel::Network& network) {
  const std::uint64_t wired = network.FindByAlias(kPhysical)->luid;
  const std::uint64_t old =
      Add(network, "tavrin 1", "tun2socks Tunnel #2", false, "192.168.123.1", {"1.1.1.1"}, false);
  const std::uint64_t wintun =
      Add(network, "Wintun", "Wintun Userspace Tunnel", false, "10.7.0.1", {"1.1.1.1"}, false);
  const std::uint64_t guest =
      Add(network, "Tavrin guest", "Realtek USB NIC", true, "192.168.123.2", {"1.1.1.1"}, false);
  const std::uint64_t hyperV = Add(network, "vEthernet (Default Switch)", "Hyper-V Adapter", true,
                                   "172.20.0.1", {"172.20.0.1"}, true);
  const std::uint64_t vmware = Add(network, "VMware Network Adapter VMnet8", "VMware Adapter", true,
                                   "192.168.80.1", {"1.1.1.1"}, false);
  const std::uint64_t wireless =
      Add(network, "WLAN", "Intel Wi-Fi 6", false, "192.168.2.20", {"1.1.1.1"}, false);

  AddRoute(network, hyperV, "0.0.0.0", 0, "172.20.0.254", 1);
  AddRoute(network, guest, "0.0.0.0", 0, "0.0.0.0", 0);
  AddRoute(network, old, "0.0.0.0", 1, "192.168.123.1", 5);
  AddRoute(network, old, "128.0.0.0", 1, "192.168.123.1", 5);
  AddRoute(network, vmware, "0.0.0.0", 1, "192.168.80.2", 5);
  AddRoute(network, vmware, "128.0.0.0", 1, "192.168.80.2", 5);
  AddRoute(network, wired, "128.0.0.0", 2, "192.168.1.1", 5);
  AddRoute(network, wintun, "10.7.0.0", 24, "0.0.0.0", 5);
  AddRoute(network, wireless, "192.168.2.0", 24, "0.0.0.0", 281);
  for (const char* pin : {"198.51.100.7", "203.0.113.10", "203.0.113.77"}) {
    AddRoute(network, guest, pin, 32, "192.168.1.1", 1);    // another interface
    AddRoute(network, wired, pin, 32, "192.168.1.254", 1);  // another next hop
    AddRoute(network, wired, pin, 31, "192.168.1.1", 1);    // another prefix
  }
  AddRoute(network, wired, "198.51.100.8", 32, "192.168.1.1", 1);  // another destination
  for (const std::uint64_t luid : {guest, vmware}) {
    for (const char* prefix : {"::/0", "::/1", "8000::/1"}) {
      network.ipv6Routes.push_back({luid, prefix});
    }
  }
}

// Fewer passes of the waits than on a real machine, and still some of each.
void ScriptHelpers(sim::Machine& machine) {
  machine.PutHelpers(L"C:\\run");
  machine.programs.On(L"xray.exe", sim::Script().Listens(17593, 25));
  sim::AdapterPlan plan = sim::TavrinAdapter();
  plan.appearsAfter = 20;
  plan.renamedAfter = 40;
  plan.upAfter = 60;
  plan.adapter.addresses = {{Ip("169.254.10.20"), 16}};  // as the platform gives it by itself
  machine.programs.On(L"tun2socks*.exe", sim::Script().BringsAdapter(plan));
}

void PutLocalAccount(sim::Machine& machine) {
  machine.files.Put(L"C:\\run\\session.json", "{\"email\":\"user@example.com\"}\n");
  machine.files.Put(L"C:\\run\\account.json",
                    R"({"email":"user@example.com","password":"p","expireAt":"2030-01-01",)"
                    R"("nodeName":"n","address":"198.51.100.7","port":443,"uuid":"u"})");
  machine.files.Put(L"C:\\run\\panel.json", R"({"deviceApi":"https://203.0.113.77/api"})");
}

void PutPanel(sim::Machine& machine) {
  machine.files.Put(L"C:\\run\\session.json",
                    R"({"email":"user@example.com","auth_data":"Bearer x"})");
  machine.files.Put(
      L"C:\\run\\panel.json",
      R"({"apiBase":"https://panel.example","deviceApi":"https://device.example:8443/api",)"
      R"("updateUrl":"https://203.0.113.77/update","downloadHost":"download.example"})");
  machine.names.Set("panel.example", {"203.0.113.71", "203.0.113.70"});
  machine.names.Set("device.example", {"203.0.113.72"});
  machine.names.Set("download.example", {"203.0.113.72", "203.0.113.73"});
  machine.names.Set("node.example", {"198.51.100.7"});
  machine.http.On("GET", "https://panel.example/api/v1/user/getSubscribe",
                  {.body = R"({"data":{"plan_id":1,"uuid":"u","token":"t","expired_at":null}})"});
  machine.http.On("GET", "https://panel.example/api/v1/client/subscribe?token=t",
                  {.body = "vless://u@node.example:443?security=reality&pbk=k&sni=s#n\n"});
  machine.http.On("GET", "https://panel.example/api/v1/user/server/fetch",
                  {.body = R"({"data":[{"name":"n","host":"node.example","server_port":443,)"
                           R"("public_key":"k"}]})"});
}

// A killed run whose children live on, with everything that it had set up.
void PutOrphans(sim::Machine& machine) {
  machine.processes.Seed(L"C:\\run\\xray\\xray.exe", 0, machine.programs.Take(L"xray.exe"));
  sim::Script tun2socks = machine.programs.Take(L"tun2socks-windows-amd64.exe");
  tun2socks.adapter->vanishesAfter = 300;  // later than the pause behind the kill
  machine.processes.Seed(L"C:\\run\\tun2socks\\tun2socks-windows-amd64.exe", 0, tun2socks);
  machine.clock.Advance(100);
  netmodel::Network& network = machine.network;
  netmodel::Adapter& tun = *network.FindByAlias("tavrin");
  tun.addresses = {{Ip("192.168.123.1"), 24}};
  tun.dnsServers = {"1.1.1.1"};
  tun.dnsFromDhcp = false;
  tun.ipv6Enabled = false;
  AddRoute(network, tun.luid, "0.0.0.0", 1, "192.168.123.1", 5);
  AddRoute(network, tun.luid, "128.0.0.0", 1, "192.168.123.1", 5);
  netmodel::Adapter& wired = *network.FindByAlias(kPhysical);
  AddRoute(network, wired.luid, "198.51.100.7", 32, "192.168.1.1", 1);
  wired.ipv6RouterDiscovery = false;
  std::erase(network.ipv6Routes, netmodel::Ipv6Route{wired.luid, "::/0"});
}

}  // namespace

const std::vector<Scene>& AllScenes() {
  static const auto& scenes = *new std::vector<Scene>{
      {"FirstConnect", Start::kIdle, false, {"203.0.113.77", "198.51.100.7"}},
      {"ConnectWhileUp", Start::kUp, false, {"203.0.113.77", "198.51.100.7"}},
      {"AfterOrphans", Start::kOrphans, false, {"203.0.113.77", "198.51.100.7"}},
      // The node's address is its built-in default, since the node is given by name.
      {"FourPanelHosts",
       Start::kIdle,
       true,
       {"203.0.113.77", "203.0.113.72", "203.0.113.73", "203.0.113.70", "203.0.113.71",
        "203.0.113.10"}},
  };
  return scenes;
}

void PrintTo(const Scene& scene, std::ostream* out) {
  *out << scene.name;
}

Stage::Stage(const Scene& wanted) : scene(wanted) {
  ScriptHelpers(*machine);
  machine->registry.SetDword(kInternetSettings, L"ProxyEnable", 0);
  scene.panel ? PutPanel(*machine) : PutLocalAccount(*machine);
  PutLookAlikes(machine->network);
  before = machine->network;
  if (scene.start == Start::kOrphans) {
    PutOrphans(*machine);
  }
  start = machine->network;
}

bool Stage::Prepare() const {
  return scene.start != Start::kUp || Connect().empty();
}

Lines Stage::Foreign() const {
  Lines lines = LinesOf(before);
  std::erase_if(lines, [](const std::string& line) {
    return line.starts_with("ipv6 of 以太网") || line == "ipv6 route 以太网 ::/0";
  });
  return lines;
}

Lines Stage::Now() const {
  const auto lock = machine->Lock();
  return LinesOf(machine->network);
}

}  // namespace fault
