#include "tests/sequence/world.h"

#include <atomic>
#include <thread>

#include "tests/sim/text.h"

#include <win/errors.h>

namespace sequence {
namespace {

constexpr std::uint16_t kPort = 17593;
constexpr wchar_t kSettings[] = L"Software\\Microsoft\\Windows\\CurrentVersion\\Internet Settings";

std::string Frame(const std::string& payload) {
  return sim::FrameHeader(static_cast<std::uint32_t>(payload.size())) + payload;
}

std::string RequestText(const std::string& op, const std::string& node) {
  return R"({"op":")" + op + (node.empty() ? "\"}" : R"(","node":")" + node + "\"}");
}

std::string BadRequest(const std::string& value) {
  if (value == "op") return R"({"op":"reboot"})";
  if (value == "none") return R"({"node":"Tokyo"})";
  if (value == "number") return R"({"op":5,"op":"status"})";
  return value == "case" ? R"({"OP":"status"})" : "hello";
}

sim::Script XrayScript(const std::string& value) {
  if (value == "dead") return sim::Script().Exits(1, 3);
  if (value == "deaf") return sim::Idle();
  if (value == "nostart") return sim::Script().FailsToStart(ERROR_ACCESS_DENIED);
  if (value == "late") return sim::Script().Listens(kPort, 4000);
  if (value == "faints") return sim::Script().Listens(kPort, 25).Exits(1, 40);
  if (value == "stubborn") return sim::Script().Listens(kPort, 25).TakesToDie(600'000);
  return sim::Script().Listens(kPort, 25);
}

sim::Script TunScript(const std::string& value) {
  sim::AdapterPlan plan = sim::TavrinAdapter();
  plan.appearsAfter = 20;
  plan.renamedAfter = 40;
  plan.upAfter = value == "late" ? 9000 : 60;
  plan.vanishesAfter = 100;
  plan.adapter.addresses = {{Ip("169.254.10.20"), 16}};  // as the platform gives it by itself
  if (value == "down") plan.upAfter.reset();
  if (value == "numbered") plan.adapter.friendlyName = "tavrin 9";
  if (value == "dead") return sim::Script().Exits(1, 5);
  if (value == "noadapter") return sim::Idle();
  if (value == "nostart") return sim::Script().FailsToStart(ERROR_ACCESS_DENIED);
  sim::Script script = sim::Script().BringsAdapter(plan);
  return value == "ghost" ? script.Exits(1, 62) : script;
}

sim::Script NetshScript(const std::string& value) {
  if (value == "hang") return sim::Idle();
  return value == "fail" ? sim::Script().Exits(1, 60) : sim::Script().ActsAsNetsh(60);
}

std::string Link(const Node& node) {
  return "vless://u@" + node.address + ":443?security=reality&pbk=k&sni=s#" + node.name + "\n";
}

}  // namespace

World::World() : stage_(fault::AllScenes().front()), services_(machine()) {
  SetUpPanel();
  PutFiles();
  PutScripts();
  SetConditions("names");
}

void World::PutFile(const wchar_t* name, const std::string& content) {
  const std::wstring path = std::wstring(L"C:\\run\\") + name;
  machine().files.Put(path, content);
  inputs_.emplace_back(path, content);
}

void World::PutFiles() {
  sim::Files& files = machine().files;
  inputs_.clear();
  files.PutDirectory(L"C:\\run");
  for (const wchar_t* name :
       {L"session.json", L"account.json", L"panel.json", L"xray\\xray.exe",
        L"tun2socks\\wintun.dll", L"tun2socks\\tun2socks-windows-amd64.exe"}) {
    files.Remove(std::wstring(L"C:\\run\\") + name);
  }
  const std::string& missing = conditions_["files"];
  if (missing != "noxray") PutFile(L"xray\\xray.exe", "MZ");
  if (missing != "notun") PutFile(L"tun2socks\\tun2socks-windows-amd64.exe", "MZ");
  if (missing != "nowintun") PutFile(L"tun2socks\\wintun.dll", "MZ");
  PutAccount();
}

void World::PutAccount() {
  const std::string& account = conditions_["account"];
  const Node node = conditions_.AccountNode();
  if (account != "none") {
    const bool ofPanel = account == "panel" || account == "noplan";
    PutFile(L"session.json", std::string(R"({"email":")") +
                                 (account == "stranger" ? "other" : "user") + R"(@example.com")" +
                                 (ofPanel ? R"(,"auth_data":"Bearer x"})" : "}\n"));
  }
  if (account == "damaged") {
    PutFile(L"account.json", R"({"email)");
  } else if (account != "gone") {
    PutFile(L"account.json",
            std::string(R"({"email":"user@example.com","password":"p","expireAt":")") +
                (account == "expired" ? "2020-01-01" : "2999-01-01") + R"(","nodeName":")" +
                node.name + R"(","address":")" + node.address + R"(","port":)" +
                (account == "nodeless" ? "0" : "443") + R"(,"uuid":"u"})");
  }
  std::string panel = conditions_["hosts"] == "0" ? R"("deviceApi":"https://203.0.113.77/api")"
                      : conditions_["hosts"] == "1"
                          ? R"("deviceApi":"https://device.example:8443/api",)"
                            R"("downloadHost":"download.example")"
                          : R"("inviteBase":"https://invite.example")";
  if (conditions_.HasPanel()) panel += R"(,"apiBase":"https://panel.example")";
  PutFile(L"panel.json", "{" + panel + "}");
}

void World::PutScripts() {
  machine().programs.On(L"xray.exe", XrayScript(conditions_["xray"]));
  machine().programs.On(L"tun2socks*.exe", TunScript(conditions_["tun"]));
  machine().programs.On(L"netsh.exe", NetshScript(conditions_["netsh"]));
}

// Asked under the machine's lock, so that it sees whole conditions.
void World::SetUpPanel() {
  machine().http.Handle([this](const sim::HttpRequestRecord& request) {
    const std::string& panel = conditions_["panel"];
    sim::HttpAnswer answer;
    const std::vector<Node> nodes = conditions_.PanelNodes();
    if (request.url.ends_with("getSubscribe")) {
      const bool plan = conditions_["account"] != "noplan";
      answer.body = std::string(R"({"data":{"plan_id":)") + (plan ? "1" : "null") +
                    R"(,"uuid":"u","token":"t","expired_at":null}})";
    } else if (request.url.ends_with("token=t")) {
      for (const Node& node : nodes) answer.body += Link(node);
      if (panel == "sub") answer.sendCode = 12029;
    } else {
      for (const Node& node : nodes) {
        answer.body += std::string(answer.body.empty() ? "" : ",") + R"({"name":")" + node.name +
                       R"(","host":")" + node.address + R"(","server_port":443,"public_key":"k"})";
      }
      answer.body = R"({"data":[)" + answer.body + "]}";
    }
    if (panel == "refuse") answer.sendCode = 12029;
    if (panel == "cut") answer.receiveCode = 12030;
    if (panel == "hang") answer.receiveTime = 99'999;
    if (panel == "slow") answer.receiveTime = 7000;
    if (panel == "500") answer.status = 500;
    return std::optional(answer);
  });
}

void World::SetConditions(const std::string& name) {
  const auto lock = machine().Lock();
  const bool isOfFiles = name == "account" || name == "node" || name == "hosts" || name == "files";
  if (isOfFiles && conditions_["dir"] == "back") PutFiles();
  PutScripts();
  for (const auto& [host, addresses] : conditions_.HostNames()) {
    machine().names.Set(host, addresses.empty() ? sim::HostEntry{.error = WSAHOST_NOT_FOUND}
                                                : sim::HostEntry{.ipv4 = addresses});
  }
  machine().files.isDiskFull = conditions_["disk"] == "full";
  const std::string& proxy = conditions_["proxy"];
  machine().registry.SetDword(kSettings, L"ProxyEnable", proxy == "off" ? 0 : 1);
  machine().registry.SetText(kSettings, L"ProxyServer", proxy == "on" ? L"127.0.0.1:10809" : L"");
  if (name == "dir") {
    machine().files.Remove(L"C:\\run");
    inputs_.clear();
    if (conditions_["dir"] == "back") PutFiles();
  }
}

void World::SetPort(bool taken) {
  if (taken && !portIsForeign_) {
    portIsForeign_ = machine().listeners.Listen(kPort, 0);
  } else if (!taken && portIsForeign_) {
    machine().listeners.StopListening(kPort);
    portIsForeign_ = false;
  }
}

void World::EndChildren(const std::string& value) {
  const auto lock = machine().Lock();
  for (const char* name : {"xray.exe", "tun2socks-windows-amd64.exe"}) {
    if ((value == "xray" && name[0] == 't') || (value == "tun" && name[0] == 'x')) {
      continue;
    }
    for (const auto& process : machine().processes.AliveProcesses()) {
      if (sim::Narrow(process->image).ends_with(name)) {
        machine().processes.End(process, 1);
        break;
      }
    }
  }
}

void World::ChangeTheNetwork(const Event& event) {
  const auto lock = machine().Lock();
  (void)ChangeNetwork(event.name, event.value, machine().network);
  netmodel::Adapter* const own = OwnAdapter(machine().network);
  for (const auto& process : machine().processes.AliveProcesses()) {
    if (own != nullptr && process->script.adapter) {
      process->adapterLuid = own->luid;
    }
  }
}

std::uint32_t World::NewOwner() {
  return machine().processes.Seed(L"C:\\ui\\owner.exe", nextOwner_++)->id;
}

void World::StartService(const std::string& mode, size_t slot) {
  if (services_.IsAlive(slot)) {
    return;
  }
  const Mode real = mode == "console"   ? Mode::kConsole
                    : mode == "service" ? Mode::kService
                                        : Mode::kDaemon;
  const std::uint32_t owner = mode == "owner" ? NewOwner() : mode == "lost" ? nextOwner_++ : 0;
  services_.Start(slot, real, owner);
}

std::string World::Exchange(const std::string& request) {
  sim::PipeClient client(machine());
  if (services_.Connect(client) != 0) {
    return "nobody";
  }
  return client.SendFrame(request) ? client.ReceiveFrame().value_or("none") : "none";
}

std::string World::SendFrame(const std::string& value) {
  sim::PipeClient client(machine());
  if (services_.Connect(client) != 0) {
    return "nobody";
  }
  if (value == "slow") {
    for (const char byte : Frame(R"({"op":"status"})")) {
      if (!client.Write(std::string(1, byte))) break;
    }
    return client.ReceiveFrame().value_or("none");
  }
  if (value == "empty" || value == "huge") {
    (void)client.Write(sim::FrameHeader(value == "empty" ? 0 : 65537));
    return client.ReceiveFrame().value_or("none");
  }
  if (value == "cut") {
    (void)client.Write(sim::FrameHeader(20) + "abc");
  }
  return "none";
}

// The server reads only when the client has gone, so that no race decides.
std::string World::LeaveBeforeReply(const std::string& op) {
  std::atomic<bool> gone{false};
  machine().faults.Before("ReadFile", 1, [&gone] {
    while (!gone) std::this_thread::yield();
  });
  sim::PipeClient client(machine());
  const std::uint32_t code = services_.Connect(client);
  if (code == 0) {
    (void)client.Write(Frame(RequestText(op, "")));
    client.Close();
  }
  gone = true;
  (void)services_.ComeToRest();
  services_.ClearFaults();
  return code == 0 ? "none" : "nobody";
}

std::string World::Carry(const Event& event) {
  const std::string& name = event.name;
  const std::string& value = event.value;
  const size_t slot = value == "2" ? 1 : 0;
  if (name == "connect" || name == "disconnect" || name == "status" || name == "shutdown") {
    return Exchange(RequestText(name, value));
  }
  if (name == "bad") return Exchange(BadRequest(value));
  if (name == "frame") return SendFrame(value);
  if (name == "gone") return LeaveBeforeReply(value);
  if (name == "start" || name == "second") {
    StartService(value, name == "start" ? 0 : 1);
  } else if (name == "stop") {
    if (services_.IsAlive(slot)) (void)services_.RequestStop(slot);
  } else if (name == "kill" || name == "orphan") {
    if (services_.IsAlive(slot)) services_.Kill(slot, name == "orphan");
  } else if (name == "die") {
    EndChildren(value);
  } else if (name == "port") {
    SetPort(value == "taken");
  } else if (name == "phys" || name == "foreign" || name == "dns" || name == "adapter") {
    ChangeTheNetwork(event);
  }
  {
    const auto lock = machine().Lock();
    if (!conditions_.Takes(name, value)) return "";
  }
  if (name == "vpn") ChangeTheNetwork(event);
  SetConditions(name);
  return "";
}

void World::DoInTheMiddle(const std::string& what) {
  if (what == "sleep") {
    machine().clock.Advance(8 * 3'600'000);
  } else if (what == "wrap") {
    machine().clock.Advance(0x100000000U - (machine().clock.Now() & 0xFFFFFFFFU));
  } else if (what == "xray" || what == "tun") {
    EndChildren(what);
  } else if (what == "vanish") {
    ChangeTheNetwork({"adapter", "vanish"});
  } else if (what == "phys") {
    ChangeTheNetwork({"phys", "lost"});
  } else if (what == "stop" && services_.Turns().empty()) {
    for (size_t slot = 0; slot < Services::kSlots; ++slot) {
      if (services_.IsAlive(slot)) (void)services_.RequestStop(slot);
    }
  }
}

std::string World::CarryDisturbed(const Event& event) {
  sim::Faults& faults = machine().faults;
  const std::string& value = event.value;
  faults.ResetCount();
  std::string op = "connect";
  if (event.name == "mid") {
    const size_t at = value.find('@');
    const size_t number = value.find('#');
    const std::string what = value.substr(0, at);
    const std::string call = value.substr(at + 1, number - at - 1);
    const std::uint64_t nth = std::stoull(value.substr(number + 1));
    if (what == "kill") {
      faults.KillBefore(call, nth);
    } else {
      faults.Before(call, nth, [this, what] { DoInTheMiddle(what); });
    }
  } else {
    op = value[0] == 'c' ? "connect" : "disconnect";
    const std::uint64_t first = std::stoull(value.substr(1));
    if (event.name == "fail") {
      faults.FailAt(first);
    } else {
      const std::uint64_t count = std::stoull(value.substr(value.find('+') + 1));
      faults.FailFrom(first);
      faults.BeforeCall(first + count - 1, [&faults] { faults.FailFrom(0); });
    }
  }
  const std::string reply = Exchange(RequestText(op, ""));
  (void)services_.ComeToRest();
  services_.ClearFaults();
  return reply;
}

std::vector<std::string> World::ChangedFiles() {
  std::vector<std::string> changed;
  for (const auto& [path, content] : inputs_) {
    if (machine().files.Read(path) != content) {
      changed.push_back(sim::Narrow(path));
    }
  }
  return changed;
}

}  // namespace sequence
