#include "tests/sequence/model.h"

#include <algorithm>

namespace sequence {
namespace {

constexpr std::uint64_t kLifetime = 90'000;  // of a fetched account
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
  const bool touched = machine_.IsTouched();
  if (running == 0) return touched || !machine_.Alive().empty() ? "leftovers" : "none";
  if (!one->tunnel.changed)
    return touched || !machine_.Alive().empty() ? "leftovers, idle" : "idle";
  if (!one->tunnel.Runs()) return "dead child";
  if (machine_.network.FindByAlias(one->tunnel.tunAlias) == nullptr) return "no adapter";
  return one->tunnel.fromPanel ? "up (panel)" : "up";
}

bool Model::IsCrowded() const {
  const Service* const next = turns_.empty() ? nullptr : &services_[turns_.front()];
  return next != nullptr && next->tunnel.changed &&
         std::any_of(machine_.children.begin(), machine_.children.end(),
                     [&](const ChildPointer& child) {
                       return child->name == kTun && !child->dead && child != next->tunnel.tun;
                     });
}

std::uint64_t Model::CacheAge(std::uint64_t now) const {
  const std::uint64_t stored = turns_.empty() ? 0 : services_[turns_.front()].cacheTime;
  return stored == 0 ? 0 : now - stored;
}

Lines Model::Handles() const {
  Lines handles;
  for (const Service& service : services_) {
    if (service.runs) handles.push_back("pipe from CreateNamedPipeW");
    if (service.runs && service.isWatched) handles.push_back("process owner.exe from OpenProcess");
    const Lines ofTunnel = service.tunnel.Handles();
    handles.insert(handles.end(), ofTunnel.begin(), ofTunnel.end());
  }
  std::sort(handles.begin(), handles.end());
  return handles;
}

// --- The account -------------------------------------------------------------------------------

Model::Fetched Model::Fetch() {
  const std::string& account = machine_.conditions["account"];
  const std::string& panel = machine_.conditions["panel"];
  if (machine_.conditions["dir"] == "gone" || account == "none") return {"not logged in", {}};
  if (account == "signedout") return {"请先登录", {}};
  if (!machine_.conditions.HasPanel()) {
    if (account == "gone") return {"cannot read C:\\run\\account.json", {}};
    if (account == "stranger" || account == "damaged")
      return {"session does not match account", {}};
    if (account == "expired") return {"account expired", {}};
    if (account == "nodeless") return {"account.json is missing node fields", {}};
    return {"", {machine_.conditions.AccountNode()}, true};
  }
  const auto ask = [&](const char* path) {
    machine_.expected.requests.push_back(std::string("GET https://panel.example/api/v1/") + path);
    machine_.now += panel == "slow" ? 7000 : panel == "hang" ? 20'000 : 0;
  };
  ask("user/getSubscribe");
  if (panel == "refuse") return {"无法连上面板服务器。", {}};
  if (panel == "cut") return {"与面板的连接被中断。", {}};
  if (panel == "hang") return {"连接面板超时。请检查网络，或稍后再试。", {}};
  if (panel == "500") return {"面板 HTTP 500", {}};
  if (account == "noplan") return {"", {}, true};
  const std::vector<Node> nodes = machine_.conditions.PanelNodes();
  ask("client/subscribe?token=t");
  if (panel != "sub" && !nodes.empty()) return {"", nodes, true};
  ask("user/server/fetch");
  if (nodes.empty()) return {"面板未下发可用节点，请确认节点已显示且套餐权限组一致", {}};
  return {"", nodes, true};
}

Model::Fetched Model::FetchCached(Service& service) {
  if (service.cacheTime != 0 && machine_.now - service.cacheTime < kLifetime &&
      !service.cache.empty()) {
    return {"", service.cache, true};
  }
  Fetched fetched = Fetch();
  if (fetched.ok) {
    service.cache = fetched.nodes;
    service.cacheTime = machine_.now;
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
  if (!FindPhysical(machine_, &alias, &gateway)) return "no physical default gateway";
  if (machine_.conditions["dir"] == "gone") return "cannot write generated xray config";
  machine_.config = machine_.conditions["disk"] == "full" ? "" : node.address + " on " + alias;
  const std::string failure = service.tunnel.Start(machine_, node);
  if (!failure.empty()) service.cacheTime = 0;
  return failure;
}

// --- The processes of the service --------------------------------------------------------------

void Model::StartService(size_t slot, const std::string& mode) {
  Service& service = services_[slot];
  if (service.runs) return;
  service = Service();
  service.runs = true;
  service.mode = mode;
  service.isWatched = mode == "owner";
  if (mode == "console") {
    machine_.Log("TavrinService console mode. Pipe \\\\.\\pipe\\TavrinService");
    machine_.Log("Runtime C:\\run");
    machine_.Log("Ctrl+C to stop.");
  } else if (mode == "service") {
    machine_.Log("service running. runtime=C:\\run");
  } else {
    machine_.Log("daemon mode. runtime=C:\\run");
    if (mode == "lost") machine_.Log("owner pid open failed err=87");
  }
  (void)FetchCached(service);
  turns_.push_back(slot);
}

void Model::EndService(size_t slot) {
  Service& service = services_[slot];
  service.tunnel.Stop(machine_);
  machine_.Log(service.mode == "console"   ? "stopped."
               : service.mode == "service" ? "service stopped"
                                           : "daemon stopped");
  service = Service();
}

void Model::StopService(size_t slot) {
  Service& service = services_[slot];
  const bool hasStop = service.mode == "console" || service.mode == "service";
  if (!service.runs || (!hasStop && !service.isWatched)) return;
  if (service.isWatched) machine_.Log("ui process exited; stopping helper");
  service.isWatched = false;
  service.stops = true;
  // The throw-away connection reaches whoever waits longest, which need not be the one that is
  // meant.
  Serve(nullptr, "", true, "109");
}

void Model::KillService(size_t slot, bool childrenSurvive) {
  Service& service = services_[slot];
  for (const ChildPointer& child : {service.tunnel.xray, service.tunnel.tun}) {
    if (child && childrenSurvive) {
      child->isOrphan = true;
    } else if (child && !child->dead) {
      machine_.Terminate(child);
    }
  }
  std::erase(turns_, slot);
  service = Service();
}

void Model::Serve(const char* op, const std::string& node, bool clientLeaves,
                  const char* readError) {
  if (turns_.empty()) {
    machine_.expected.reply = "nobody";
    return;
  }
  const size_t slot = turns_.front();
  Service& service = services_[slot];
  turns_.pop_front();
  machine_.expected.reply = "none";
  if (service.stops) {
    EndService(slot);
    return;
  }
  if (op == nullptr) {
    machine_.Log(std::string("ipc read failed err=") + readError);
  } else {
    machine_.Log(std::string("ipc op=") + op);
    bool ok = true;
    const std::string failure = Carry(service, op, node, &ok);
    if (!ok) machine_.Log("ipc error=" + failure);
    if (clientLeaves) machine_.Log("ipc write reply failed err=232");
    machine_.expected.reply =
        clientLeaves ? "" : Reply(ok, service.tunnel.Runs(), Escaped(failure));
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
    service.tunnel.Stop(machine_);
    service.stops = op == "shutdown" && service.mode != "service";
  } else if (op != "status") {
    failure = "op not allowed";
  }
  *ok = failure.empty();
  return failure;
}

Expected Model::Apply(const Event& event, std::uint64_t now) {
  const std::string& name = event.name;
  const std::string& value = event.value;
  machine_.Begin(now);
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
    machine_.expected.reply = "";
  } else if (name == "kill" || name == "orphan") {
    KillService(slot, name == "orphan");
  } else if (name == "die") {
    if (value != "tun") machine_.KillChild(kXray);
    if (value != "xray") machine_.KillChild(kTun);
  } else {
    machine_.Change(name, value);
  }
  if (name == "port")
    machine_.portTaken = taken && (machine_.portTaken || !machine_.ChildListens());
  if (name == "dir") machine_.config = "none";
  (void)machine_.conditions.Takes(name, value);
  return machine_.expected;
}

void Model::Adopt(const netmodel::Network& network, std::vector<ChildPointer> children,
                  const std::deque<size_t>& turns, const std::string& config) {
  machine_.network = network;
  machine_.children = std::move(children);
  turns_ = turns;
  machine_.config = config;
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
