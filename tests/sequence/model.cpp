#include "tests/sequence/model.h"

#include <algorithm>

#include "tests/fault/network_lines.h"

namespace sequence {
namespace {

constexpr std::uint64_t kLifetime = 90'000;       // of a fetched account
constexpr std::uint64_t kStubbornness = 600'000;  // how long a stubborn child takes to die
const char* const kTunAddress = "192.168.123.1";
const char* const kXray = "xray.exe";
const char* const kTun = "tun2socks-windows-amd64.exe";
const char* const kNoCore = "连接核心无法启动，请换一条线路或重新登录后再试。";

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

std::string Reply(bool ok, bool running, const std::string& error) {
  return std::string(R"({"ok":)") + (ok ? "true" : "false") + R"(,"running":)" +
         (running ? "true" : "false") + R"(,"error":")" + error + R"("})";
}

// Backslashes stand twice in a reply.
std::string Escaped(const std::string& text) {
  std::string escaped;
  for (const char byte : text) {
    escaped += byte == '\\' ? "\\\\" : std::string(1, byte);
  }
  return escaped;
}

}  // namespace

std::string Model::State() const {
  size_t running = 0;
  const Service* one = nullptr;
  for (const Service& service : services_) {
    if (service.runs && service.stops) return "stopping";
    running += service.runs ? 1 : 0;
    one = service.runs ? &service : one;
  }
  if (running == 2) return "two";
  const bool touched = IsTouched();
  if (running == 0) return touched || !Alive().empty() ? "leftovers" : "none";
  if (!one->changed) return touched || !Alive().empty() ? "leftovers, idle" : "idle";
  if (!Runs(*one)) return "dead child";
  if (network_.FindByAlias(one->tunAlias) == nullptr) return "no adapter";
  return one->fromPanel ? "up (panel)" : "up";
}

bool Model::IsCertain(std::uint64_t now, std::uint64_t longest) const {
  return std::none_of(children_.begin(), children_.end(), [&](const ChildPointer& child) {
    return !child->dead && child->diesFrom != 0 && now + longest >= child->diesFrom &&
           now < child->diesTo;
  });
}

bool Model::IsCrowded() const {
  const Service* const next = turns_.empty() ? nullptr : &services_[turns_.front()];
  return next != nullptr && next->changed &&
         std::any_of(children_.begin(), children_.end(), [&](const ChildPointer& child) {
           return child->name == kTun && !child->dead && child != next->tun;
         });
}

std::uint64_t Model::CacheAge(std::uint64_t now) const {
  const std::uint64_t stored = turns_.empty() ? 0 : services_[turns_.front()].cacheTime;
  return stored == 0 ? 0 : now - stored;
}

Lines Model::Alive() const {
  Lines names;
  for (const ChildPointer& child : children_) {
    if (!child->dead) names.push_back(child->name);
  }
  std::sort(names.begin(), names.end());
  return names;
}

Lines Model::Handles() const {
  Lines handles;
  for (const Service& service : services_) {
    if (service.runs) handles.push_back("pipe from CreateNamedPipeW");
    if (service.runs && service.isWatched) handles.push_back("process owner.exe from OpenProcess");
    if (service.hasJob) handles.push_back("job from CreateJobObjectW");
    for (const ChildPointer& child : {service.xray, service.tun}) {
      if (child) {
        handles.push_back("process " + child->name + " from CreateProcessW");
        handles.push_back("thread of " + child->name + " from CreateProcessW");
      }
    }
  }
  std::sort(handles.begin(), handles.end());
  return handles;
}

void Model::Log(const std::string& line) {
  if (conditions_["dir"] == "back" && conditions_["disk"] == "ok") expected_.log.push_back(line);
}

void Model::Trace(const std::string& label) {
  if (conditions_["disk"] == "ok") expected_.trace.push_back(label);
}

void Model::Netsh(const std::string& rest) {
  const std::string line = "netsh interface " + rest;
  expected_.acts.push_back(line);
  if (conditions_["netsh"] == "hang") expected_.acts.push_back("end netsh.exe");
  if (conditions_["netsh"] == "ok") (void)network_.RunNetsh(line);
}

// An interface that nobody knows by this name costs the call.
void Model::Route(bool add, const std::string& alias, const std::string& destination,
                  const std::string& nextHop, int metric) {
  const netmodel::Adapter* const adapter = network_.FindByAlias(alias);
  if (adapter == nullptr) return;
  const std::string text = Quoted(alias) + ' ' + destination + " via " + nextHop;
  expected_.acts.push_back((add ? "add " : "delete ") + text +
                           (add ? " metric " + std::to_string(metric) : ""));
  const size_t slash = destination.find('/');
  const netmodel::Route route = {
      adapter->luid, Ip(destination.substr(0, slash)),
      static_cast<std::uint8_t>(std::stoi(destination.substr(slash + 1))), Ip(nextHop),
      static_cast<std::uint32_t>(metric)};
  (void)(add ? network_.CreateRoute(route) : network_.DeleteRoute(route));
}

void Model::Die(const ChildPointer& child) {
  child->dead = true;
  network_.RemoveAdapter(child->luid);
}

// The adapter stays for a little while, which only what follows at once can see.
void Model::Terminate(const ChildPointer& child) {
  if (!child->isStubborn) {
    child->dead = true;
  } else if (child->diesFrom == 0) {
    child->diesFrom = now_ + kStubbornness;
  }
}

void Model::End(std::uint64_t now) {
  for (const ChildPointer& child : children_) {
    if (child->diesFrom != 0 && child->diesTo == 0) child->diesTo = now + kStubbornness;
    if (child->dead || (child->diesTo != 0 && now >= child->diesTo)) Die(child);
  }
  std::erase_if(children_, [](const ChildPointer& child) { return child->dead; });
}

bool Model::FindPhysical(std::string* alias, std::string* gateway) const {
  const netmodel::Route* best = nullptr;
  for (const netmodel::Route& route : network_.routes) {
    const netmodel::Adapter* const adapter = network_.FindByLuid(route.luid);
    if (route.prefixLength == 0 && route.nextHop != 0 && !IsVirtual(adapter->friendlyName) &&
        (best == nullptr || route.metric < best->metric)) {
      best = &route;
    }
  }
  if (best == nullptr) return false;
  *alias = network_.FindByLuid(best->luid)->friendlyName;
  *gateway = netmodel::FormatIpv4(best->nextHop);
  return true;
}

bool Model::Runs(const Service& service) const {
  return service.xray && service.tun && !service.xray->dead && !service.tun->dead;
}

// --- The account -------------------------------------------------------------------------------

Model::Fetched Model::Fetch() {
  const std::string& account = conditions_["account"];
  const std::string& panel = conditions_["panel"];
  if (conditions_["dir"] == "gone" || account == "none") return {"not logged in", {}};
  if (account == "signedout") return {"请先登录", {}};
  if (!conditions_.HasPanel()) {
    if (account == "gone") return {"cannot read C:\\run\\account.json", {}};
    if (account == "stranger" || account == "damaged")
      return {"session does not match account", {}};
    if (account == "expired") return {"account expired", {}};
    if (account == "nodeless") return {"account.json is missing node fields", {}};
    return {"", {conditions_.AccountNode()}, true};
  }
  const auto ask = [&](const char* path) {
    expected_.requests.push_back(std::string("GET https://panel.example/api/v1/") + path);
    now_ += panel == "slow" ? 7000 : panel == "hang" ? 20'000 : 0;
  };
  ask("user/getSubscribe");
  if (panel == "refuse") return {"无法连上面板服务器。", {}};
  if (panel == "cut") return {"与面板的连接被中断。", {}};
  if (panel == "hang") return {"连接面板超时。请检查网络，或稍后再试。", {}};
  if (panel == "500") return {"面板 HTTP 500", {}};
  if (account == "noplan") return {"", {}, true};
  const std::vector<Node> nodes = conditions_.PanelNodes();
  ask("client/subscribe?token=t");
  if (panel != "sub" && !nodes.empty()) return {"", nodes, true};
  ask("user/server/fetch");
  if (nodes.empty()) return {"面板未下发可用节点，请确认节点已显示且套餐权限组一致", {}};
  return {"", nodes, true};
}

Model::Fetched Model::FetchCached(Service& service) {
  if (service.cacheTime != 0 && now_ - service.cacheTime < kLifetime && !service.cache.empty()) {
    return {"", service.cache, true};
  }
  Fetched fetched = Fetch();
  if (fetched.ok) {
    service.cache = fetched.nodes;
    service.cacheTime = now_;
  }
  return fetched;
}

std::string Model::Connect(Service& service, const std::string& key) {
  const auto find = [&](const std::vector<Node>& nodes) {
    return std::find_if(nodes.rbegin(), nodes.rend(),
                        [&](const Node& node) { return node.name == key; });
  };
  Fetched fetched = FetchCached(service);
  if (!fetched.ok) return fetched.failure;
  if (fetched.nodes.empty()) {
    service.cacheTime = 0;
    return "没有可用节点";
  }
  if (!key.empty() && find(fetched.nodes) == fetched.nodes.rend()) {
    service.cacheTime = 0;
    fetched = FetchCached(service);
    if (!fetched.ok) return fetched.failure;
    if (fetched.nodes.empty()) return "没有可用节点";
  }
  const auto found = find(fetched.nodes);
  const Node node = found == fetched.nodes.rend() ? fetched.nodes.front() : *found;
  std::string alias, gateway;
  if (!FindPhysical(&alias, &gateway)) return "no physical default gateway";
  if (conditions_["dir"] == "gone") return "cannot write generated xray config";
  config_ = conditions_["disk"] == "full" ? "" : node.address + " on " + alias;
  const std::string failure = StartTunnel(service, node);
  if (!failure.empty()) service.cacheTime = 0;
  return failure;
}

// --- The tunnel --------------------------------------------------------------------------------

void Model::Pin(Service& service, const std::string& address) {
  Route(false, service.alias, address + "/32", service.gateway, 1);
  Route(true, service.alias, address + "/32", service.gateway, 1);
  if (!Contains(service.pins, address)) service.pins.push_back(address);
}

void Model::ClearTun(const std::string& alias) {
  Route(false, alias, "0.0.0.0/1", kTunAddress, 5);
  Route(false, alias, "128.0.0.0/1", kTunAddress, 5);
  if (const netmodel::Adapter* const adapter = network_.FindByAlias(alias)) {
    expected_.acts.push_back("name server \"\"");
    (void)network_.SetDnsServers(adapter->guid, "");
  }
}

void Model::StopTunnel(Service& service) {
  for (const ChildPointer& child : {service.tun, service.xray}) {
    if (child && !child->dead) {
      expected_.acts.push_back("end " + child->name);
      Terminate(child);
    }
  }
  // A child that resists is waited for, and the other's adapter goes meanwhile.
  const bool waits = service.xray && !service.xray->dead;
  if (service.tun && waits) Die(service.tun);
  service.xray = service.tun = nullptr;
  service.hasJob = false;
  for (const std::string& address : service.pins) {
    Route(false, service.alias, address + "/32", service.gateway, 1);
  }
  if (!service.node.empty()) Route(false, service.alias, service.node + "/32", service.gateway, 1);
  service.pins.clear();
  if (service.changed) {
    ClearTun(service.tunAlias);
    Netsh("ipv6 set interface " + Quoted(service.alias) + " routerdiscovery=enabled store=active");
    Netsh("ipv6 delete route ::/1 interface=" + Quoted(service.tunAlias));
    Netsh("ipv6 delete route 8000::/1 interface=" + Quoted(service.tunAlias));
  }
  for (const ChildPointer& child : children_) {
    if (child->dead) Die(child);
  }
  service.changed = false;
  service.alias = service.gateway = service.tunAlias = service.node = "";
}

bool Model::KillOrphans() {
  std::vector<ChildPointer> found;
  for (const char* name : {kXray, kTun}) {
    for (const ChildPointer& child : children_) {
      if (!child->dead && child->name == name) found.push_back(child);
    }
  }
  for (const ChildPointer& child : found) {
    expected_.acts.push_back("end " + child->name);
    Terminate(child);
  }
  if (found.empty()) return false;
  // A pause follows, which only the adapters of orphans outlive, and not a command that hangs.
  std::string alias, gateway;
  const bool known = FindPhysical(&alias, &gateway);
  if (known) Netsh("ipv6 set interface " + Quoted(alias) + " routerdiscovery=enabled store=active");
  for (const ChildPointer& child : found) {
    if (child->dead && (!child->isOrphan || (known && conditions_["netsh"] == "hang"))) Die(child);
  }
  if (const netmodel::Adapter* const adapter = OwnAdapter(network_)) {
    const std::string tun = adapter->friendlyName;
    ClearTun(tun);
    Netsh("ipv6 delete route ::/1 interface=" + Quoted(tun));
    Netsh("ipv6 delete route 8000::/1 interface=" + Quoted(tun));
  }
  for (const ChildPointer& child : found) {
    if (child->dead) Die(child);
  }
  return true;
}

bool Model::ChildListens() const {
  return std::any_of(children_.begin(), children_.end(),
                     [](const ChildPointer& child) { return !child->dead && child->listens; });
}

std::string Model::Refusal() const {
  if (conditions_["vpn"] == "on") {
    return "检测到其他 VPN 正在使用网络（Work）。请先退出 v2rayN / Clash 等客户端的 TUN "
           "模式，再连接。";
  }
  if (conditions_["proxy"] != "off") {
    return "系统代理正在开启（" +
           std::string(conditions_["proxy"] == "on" ? "127.0.0.1:10809" : "未知") +
           "）。请先关闭 v2rayN / Clash 等客户端的系统代理，再连接。";
  }
  if (portTaken_ || ChildListens()) {
    return "本机端口 17593 已被其他程序占用，无法建立隧道。请退出其他代理客户端后重试。";
  }
  if (conditions_["files"] == "noxray") return "xray.exe not found";
  if (conditions_["files"] == "notun") return "tun2socks exe not found";
  if (conditions_["files"] == "nowintun") return "wintun.dll not found next to tun2socks";
  return "";
}

std::string Model::StartTunnel(Service& service, const Node& node) {
  const bool own = Runs(service) || service.changed;
  StopTunnel(service);
  Trace(own ? "stop() own session" : "stop() idle");
  Trace(own ? "skip orphan scan" : KillOrphans() ? "kill stale (hit)" : "kill stale (clean)");
  if (const std::string refusal = Refusal(); !refusal.empty()) return refusal;
  (void)FindPhysical(&service.alias, &service.gateway);
  std::uint32_t literal = 0;
  service.node = netmodel::ParseIpv4(node.address, &literal) ? node.address : "203.0.113.10";
  Trace("find physical route");
  if (network_.FindByAlias(service.alias)->dnsServers == Lines{"1.1.1.1"}) {
    Netsh("ipv4 set dnsservers name=" + Quoted(service.alias) + " source=dhcp");
    Trace("reset physical dns (netsh)");
  }
  for (const std::string& address : conditions_.HostAddresses()) {
    Pin(service, address);
  }
  Trace("pin panel hosts");
  service.fromPanel = conditions_.HasPanel();
  const std::string failure = BringUp(service);
  if (!failure.empty()) StopTunnel(service);
  return failure;
}

std::string Model::BringUp(Service& service) {
  const std::string& xray = conditions_["xray"];
  const std::string& tun = conditions_["tun"];
  const auto start = [&](const char* name) {
    children_.push_back(std::make_shared<Child>());
    children_.back()->name = name;
    return children_.back();
  };
  service.hasJob = true;
  expected_.acts.push_back("job");
  expected_.acts.push_back(std::string("start ") + kXray);
  if (xray == "nostart") return "CreateProcess failed err=5";
  service.xray = start(kXray);
  service.xray->isStubborn = xray == "stubborn";
  service.xray->listens = xray != "dead" && xray != "deaf";
  Trace("spawn xray");
  service.xray->dead = xray == "dead";
  if (!service.xray->listens) return kNoCore;
  Trace("xray socks listening");
  expected_.acts.push_back(std::string("start ") + kTun);
  if (tun == "nostart") return "CreateProcess failed err=5";
  service.tun = start(kTun);
  Trace("spawn tun2socks");
  service.xray->dead = xray == "faints" || service.xray->dead;
  service.tun->dead = tun == "dead";
  if (tun == "dead" || tun == "noadapter") return "wintun adapter not created";
  netmodel::Adapter adapter;
  adapter.friendlyName = tun == "numbered" ? "tavrin 9" : "tavrin";
  adapter.description = "tun2socks Tunnel";
  adapter.ifType = 53;
  adapter.mtu = 65535;
  netmodel::Adapter& added = network_.AddAdapter(adapter);
  service.tun->luid = added.luid;
  if (tun == "down") return "wintun adapter not created";
  service.tunAlias = added.friendlyName;
  Trace("wintun adapter up");
  service.tun->dead = tun == "ghost";
  if (tun == "ghost") return "tun2socks exited early";
  added.addresses = {{Ip(kTunAddress), 24}};
  added.dadTransmits = 0;
  expected_.acts.push_back("address " + Quoted(service.tunAlias) + ", 192.168.123.1/24");
  Trace("set tun address (api)");
  expected_.acts.push_back("name server \"1.1.1.1\"");
  (void)network_.SetDnsServers(added.guid, "1.1.1.1");
  Trace("set tun dns (api)");
  Trace("tun ipv4 ready");
  Pin(service, service.node);
  Route(true, service.tunAlias, "0.0.0.0/1", kTunAddress, 5);
  Route(true, service.tunAlias, "128.0.0.0/1", kTunAddress, 5);
  Trace("routes installed");
  Netsh("ipv6 set interface " + Quoted(service.alias) + " routerdiscovery=disabled store=active");
  Netsh("ipv6 delete route ::/0 interface=" + Quoted(service.alias));
  Netsh("ipv6 set interface " + Quoted(service.tunAlias) + " admin=disabled store=active");
  Netsh("ipv6 delete route ::/1 interface=" + Quoted(service.tunAlias));
  Netsh("ipv6 delete route 8000::/1 interface=" + Quoted(service.tunAlias));
  Trace("ipv6 leak blocked");
  service.changed = true;
  return "";
}

// --- The processes of the service --------------------------------------------------------------

bool Model::IsTouched() const {
  const Lines more = fault::Missing(fault::LinesOf(network_), fault::LinesOf(untouched_));
  return std::any_of(more.begin(), more.end(), [](const std::string& line) {
    return line.starts_with("route") || line.find("discovery off") != std::string::npos;
  });
}

void Model::StartService(size_t slot, const std::string& mode) {
  Service& service = services_[slot];
  if (service.runs) return;
  service = Service();
  service.runs = true;
  service.mode = mode;
  service.isWatched = mode == "owner";
  if (mode == "console") {
    Log("TavrinService console mode. Pipe \\\\.\\pipe\\TavrinService");
    Log("Runtime C:\\run");
    Log("Ctrl+C to stop.");
  } else if (mode == "service") {
    Log("service running. runtime=C:\\run");
  } else {
    Log("daemon mode. runtime=C:\\run");
    if (mode == "lost") Log("owner pid open failed err=87");
  }
  (void)FetchCached(service);
  turns_.push_back(slot);
}

void Model::EndService(size_t slot) {
  Service& service = services_[slot];
  StopTunnel(service);
  Log(service.mode == "console"   ? "stopped."
      : service.mode == "service" ? "service stopped"
                                  : "daemon stopped");
  service = Service();
}

void Model::StopService(size_t slot) {
  Service& service = services_[slot];
  const bool hasStop = service.mode == "console" || service.mode == "service";
  if (!service.runs || (!hasStop && !service.isWatched)) return;
  if (service.isWatched) Log("ui process exited; stopping helper");
  service.isWatched = false;
  service.stops = true;
  // The throw-away connection reaches whoever waits longest, which need not be the one that is
  // meant.
  Serve(nullptr, "", true, "109");
}

void Model::KillService(size_t slot, bool childrenSurvive) {
  Service& service = services_[slot];
  for (const ChildPointer& child : {service.xray, service.tun}) {
    if (child && childrenSurvive) {
      child->isOrphan = true;
    } else if (child && !child->dead) {
      Terminate(child);
    }
  }
  std::erase(turns_, slot);
  service = Service();
}

void Model::Serve(const char* op, const std::string& node, bool clientLeaves,
                  const char* readError) {
  if (turns_.empty()) {
    expected_.reply = "nobody";
    return;
  }
  const size_t slot = turns_.front();
  Service& service = services_[slot];
  turns_.pop_front();
  expected_.reply = "none";
  if (service.stops) {
    EndService(slot);
    return;
  }
  if (op == nullptr) {
    Log(std::string("ipc read failed err=") + readError);
  } else {
    Log(std::string("ipc op=") + op);
    bool ok = true;
    const std::string failure = Carry(service, op, node, &ok);
    if (!ok) Log("ipc error=" + failure);
    if (clientLeaves) Log("ipc write reply failed err=232");
    expected_.reply = clientLeaves ? "" : Reply(ok, Runs(service), Escaped(failure));
  }
  if (service.stops) {
    EndService(slot);
  } else {
    turns_.push_back(slot);
  }
}

std::string Model::Carry(Service& service, const std::string& op, const std::string& node,
                         bool* ok) {
  std::string failure;
  if (op == "connect") {
    failure = Connect(service, node);
  } else if (op == "disconnect" || op == "shutdown") {
    StopTunnel(service);
    service.stops = op == "shutdown" && service.mode != "service";
  } else if (op != "status") {
    failure = "op not allowed";
  }
  *ok = failure.empty();
  return failure;
}

void Model::KillChild(const char* name) {
  const auto found =
      std::find_if(children_.begin(), children_.end(),
                   [&](const ChildPointer& child) { return !child->dead && child->name == name; });
  if (found != children_.end()) Die(*found);
}

Expected Model::Apply(const Event& event, std::uint64_t now) {
  const std::string& name = event.name;
  const std::string& value = event.value;
  now_ = now;
  expected_ = Expected();
  const size_t slot = value == "2" ? 1 : 0;
  const bool taken = name == "port" && value == "taken";
  if (name == "connect" || name == "disconnect" || name == "status" || name == "shutdown") {
    Serve(name.c_str(), value, false, "");
  } else if (name == "bad") {
    Serve(value == "op" ? "reboot" : "", "", false, "");
  } else if (name == "frame" && value == "slow") {
    Serve("status", "", false, "");
  } else if (name == "frame") {
    Serve(nullptr, "", true, value == "left" || value == "cut" ? "109" : "*");
  } else if (name == "gone") {
    Serve(value.c_str(), "", true, "");
  } else if (name == "start") {
    StartService(0, value);
  } else if (name == "second") {
    StartService(1, value);
  } else if (name == "stop") {
    StopService(slot);
    expected_.reply = "";
  } else if (name == "kill" || name == "orphan") {
    KillService(slot, name == "orphan");
  } else if (name == "die") {
    if (value != "tun") KillChild(kXray);
    if (value != "xray") KillChild(kTun);
  } else if (ChangeNetwork(name, value, network_)) {
    (void)(name == "adapter" || ChangeNetwork(name, value, untouched_));
    netmodel::Adapter* const own = OwnAdapter(network_);
    for (const ChildPointer& child : children_) {
      if (own != nullptr && child->name == kTun) child->luid = own->luid;
    }
  }
  if (name == "port") portTaken_ = taken && (portTaken_ || !ChildListens());
  if (name == "dir") config_ = "none";
  (void)conditions_.Takes(name, value);
  return expected_;
}

void Model::Adopt(const netmodel::Network& network, std::vector<ChildPointer> children,
                  const std::deque<size_t>& turns, const std::string& config) {
  network_ = network;
  children_ = std::move(children);
  turns_ = turns;
  config_ = config;
  for (size_t slot = 0; slot < services_.size(); ++slot) {
    Service clean;
    clean.runs = std::find(turns.begin(), turns.end(), slot) != turns.end();
    clean.mode = services_[slot].mode;
    clean.isWatched = services_[slot].isWatched;
    clean.stops = services_[slot].stops;
    services_[slot] = clean.runs ? clean : Service();
  }
}

}  // namespace sequence
