#include "tests/sequence/model_tunnel.h"

#include <algorithm>

namespace sequence {
namespace {

constexpr char kTunAddress[] = "192.168.123.1";
constexpr char kNoCore[] = "连接核心无法启动，请换一条线路或重新登录后再试。";

std::string Quoted(const std::string& text) {
  return '"' + text + '"';
}

bool Contains(const Lines& lines, const std::string& line) {
  return std::find(lines.begin(), lines.end(), line) != lines.end();
}

bool IsVirtual(const std::string& alias) {
  return alias.find("vEthernet") != std::string::npos ||
         alias.find("VMware") != std::string::npos || alias.find("Loopback") != std::string::npos ||
         alias.find("Wintun") != std::string::npos;
}

void DeleteIpv6Halves(KnownMachine& machine, const std::string& tun) {
  machine.Netsh("ipv6 delete route ::/1 interface=" + Quoted(tun));
  machine.Netsh("ipv6 delete route 8000::/1 interface=" + Quoted(tun));
}

void SetRouterDiscovery(KnownMachine& machine, const std::string& alias, const char* state) {
  machine.Netsh("ipv6 set interface " + Quoted(alias) + " routerdiscovery=" + state +
                " store=active");
}

void ClearTun(KnownMachine& machine, const std::string& tun) {
  machine.Route(false, tun, "0.0.0.0/1", kTunAddress, 5);
  machine.Route(false, tun, "128.0.0.0/1", kTunAddress, 5);
  machine.SetNameServer(tun, "");
}

bool KillOrphans(KnownMachine& machine) {
  std::vector<ChildPointer> found;
  for (const char* name : {kXray, kTun}) {
    for (const ChildPointer& child : machine.children) {
      if (!child->dead && child->name == name) found.push_back(child);
    }
  }
  for (const ChildPointer& child : found) {
    machine.Act("end " + child->name);
    machine.Terminate(child);
  }
  if (found.empty()) return false;
  // A pause follows, which only the adapters of orphans outlive, and not a command that hangs.
  std::string alias, gateway;
  const bool known = FindPhysical(machine, &alias, &gateway);
  if (known) SetRouterDiscovery(machine, alias, "enabled");
  for (const ChildPointer& child : found) {
    if (child->dead && (!child->isOrphan || (known && machine.conditions["netsh"] == "hang")))
      machine.Die(child);
  }
  if (const netmodel::Adapter* const adapter = OwnAdapter(machine.network)) {
    const std::string tun = adapter->friendlyName;
    ClearTun(machine, tun);
    DeleteIpv6Halves(machine, tun);
  }
  for (const ChildPointer& child : found) {
    if (child->dead) machine.Die(child);
  }
  return true;
}

std::string Refusal(const KnownMachine& machine) {
  if (machine.conditions["vpn"] == "on") {
    return "检测到其他 VPN 正在使用网络（Work）。请先退出 v2rayN / Clash 等客户端的 TUN "
           "模式，再连接。";
  }
  if (machine.conditions["proxy"] != "off") {
    return "系统代理正在开启（" +
           std::string(machine.conditions["proxy"] == "on" ? "127.0.0.1:10809" : "未知") +
           "）。请先关闭 v2rayN / Clash 等客户端的系统代理，再连接。";
  }
  if (machine.portTaken || machine.ChildListens()) {
    return "本机端口 17593 已被其他程序占用，无法建立隧道。请退出其他代理客户端后重试。";
  }
  if (machine.conditions["files"] == "noxray") return "xray.exe not found";
  if (machine.conditions["files"] == "notun") return "tun2socks exe not found";
  if (machine.conditions["files"] == "nowintun") return "wintun.dll not found next to tun2socks";
  return "";
}

}  // namespace

bool FindPhysical(const KnownMachine& machine, std::string* alias, std::string* gateway) {
  const netmodel::Route* best = nullptr;
  for (const netmodel::Route& route : machine.network.routes) {
    const netmodel::Adapter* const adapter = machine.network.FindByLuid(route.luid);
    if (route.prefixLength == 0 && route.nextHop != 0 && !IsVirtual(adapter->friendlyName) &&
        (best == nullptr || route.metric < best->metric)) {
      best = &route;
    }
  }
  if (best == nullptr) return false;
  *alias = machine.network.FindByLuid(best->luid)->friendlyName;
  *gateway = netmodel::FormatIpv4(best->nextHop);
  return true;
}

bool ModelTunnel::Runs() const {
  return xray && tun && !xray->dead && !tun->dead;
}

Lines ModelTunnel::Handles() const {
  Lines handles;
  if (hasJob_) handles.emplace_back("job from CreateJobObjectW");
  for (const ChildPointer& child : {xray, tun}) {
    if (child) {
      handles.push_back("process " + child->name + " from CreateProcessW");
      handles.push_back("thread of " + child->name + " from CreateProcessW");
    }
  }
  return handles;
}

void ModelTunnel::Pin(KnownMachine& machine, const std::string& address) {
  machine.Route(false, alias_, address + "/32", gateway_, 1);
  machine.Route(true, alias_, address + "/32", gateway_, 1);
  if (!Contains(pins_, address)) pins_.push_back(address);
}

void ModelTunnel::Stop(KnownMachine& machine) {
  for (const ChildPointer& child : {tun, xray}) {
    if (child && !child->dead) {
      machine.Act("end " + child->name);
      machine.Terminate(child);
    }
  }
  // A child that resists is waited for, and the other's adapter goes meanwhile.
  const bool waits = xray && !xray->dead;
  if (tun && waits) machine.Die(tun);
  xray = tun = nullptr;
  hasJob_ = false;
  for (const std::string& address : pins_) {
    machine.Route(false, alias_, address + "/32", gateway_, 1);
  }
  if (!node_.empty()) machine.Route(false, alias_, node_ + "/32", gateway_, 1);
  pins_.clear();
  if (changed) {
    ClearTun(machine, tunAlias);
    SetRouterDiscovery(machine, alias_, "enabled");
    DeleteIpv6Halves(machine, tunAlias);
  }
  for (const ChildPointer& child : machine.children) {
    if (child->dead) machine.Die(child);
  }
  changed = false;
  alias_ = gateway_ = tunAlias = node_ = "";
}

std::string ModelTunnel::Start(KnownMachine& machine, const Node& to) {
  const bool own = Runs() || changed;
  Stop(machine);
  machine.Trace(own ? "stop() own session" : "stop() idle");
  machine.Trace(own                    ? "skip orphan scan"
                : KillOrphans(machine) ? "kill stale (hit)"
                                       : "kill stale (clean)");
  if (const std::string refusal = Refusal(machine); !refusal.empty()) return refusal;
  (void)FindPhysical(machine, &alias_, &gateway_);
  std::uint32_t literal = 0;
  node_ = netmodel::ParseIpv4(to.address, &literal) ? to.address : "203.0.113.10";
  machine.Trace("find physical route");
  if (machine.network.FindByAlias(alias_)->dnsServers == Lines{"1.1.1.1"}) {
    machine.Netsh("ipv4 set dnsservers name=" + Quoted(alias_) + " source=dhcp");
    machine.Trace("reset physical dns (netsh)");
  }
  for (const std::string& address : machine.conditions.HostAddresses()) {
    Pin(machine, address);
  }
  machine.Trace("pin panel hosts");
  fromPanel = machine.conditions.HasPanel();
  const std::string failure = BringUp(machine);
  if (!failure.empty()) Stop(machine);
  return failure;
}

std::string ModelTunnel::StartXray(KnownMachine& machine) {
  const std::string& manner = machine.conditions["xray"];
  machine.Act(std::string("start ") + kXray);
  if (manner == "nostart") return "CreateProcess failed err=5";
  xray = machine.Start(kXray);
  xray->isStubborn = manner == "stubborn";
  xray->listens = manner != "dead" && manner != "deaf";
  machine.Trace("spawn xray");
  xray->dead = manner == "dead";
  if (!xray->listens) return kNoCore;
  machine.Trace("xray socks listening");
  return "";
}

std::string ModelTunnel::StartTun(KnownMachine& machine) {
  const std::string& manner = machine.conditions["tun"];
  machine.Act(std::string("start ") + kTun);
  if (manner == "nostart") return "CreateProcess failed err=5";
  tun = machine.Start(kTun);
  machine.Trace("spawn tun2socks");
  xray->dead = xray->dead || machine.conditions["xray"] == "faints";
  tun->dead = manner == "dead";
  if (manner == "dead" || manner == "noadapter") return "wintun adapter not created";
  netmodel::Adapter adapter;
  adapter.friendlyName = manner == "numbered" ? "tavrin 9" : "tavrin";
  adapter.description = "tun2socks Tunnel";
  adapter.ifType = 53;
  adapter.mtu = 65535;
  tun->luid = machine.network.AddAdapter(adapter).luid;
  if (manner == "down") return "wintun adapter not created";
  tunAlias = adapter.friendlyName;
  machine.Trace("wintun adapter up");
  tun->dead = manner == "ghost";
  return tun->dead ? "tun2socks exited early" : "";
}

std::string ModelTunnel::BringUp(KnownMachine& machine) {
  hasJob_ = true;
  machine.Act("job");
  if (const std::string failure = StartXray(machine); !failure.empty()) return failure;
  if (const std::string failure = StartTun(machine); !failure.empty()) return failure;
  machine.SetAddress(tunAlias, kTunAddress);
  machine.Trace("set tun address (api)");
  machine.SetNameServer(tunAlias, "1.1.1.1");
  machine.Trace("set tun dns (api)");
  machine.Trace("tun ipv4 ready");
  Pin(machine, node_);
  machine.Route(true, tunAlias, "0.0.0.0/1", kTunAddress, 5);
  machine.Route(true, tunAlias, "128.0.0.0/1", kTunAddress, 5);
  machine.Trace("routes installed");
  SetRouterDiscovery(machine, alias_, "disabled");
  machine.Netsh("ipv6 delete route ::/0 interface=" + Quoted(alias_));
  machine.Netsh("ipv6 set interface " + Quoted(tunAlias) + " admin=disabled store=active");
  DeleteIpv6Halves(machine, tunAlias);
  machine.Trace("ipv6 leak blocked");
  changed = true;
  return "";
}

}  // namespace sequence
