#include "tests/unit/client/client_test.h"

#include "client/commands/commands.h"
#include "tests/sim/pipe_client.h"

namespace unit {
namespace {

constexpr const char* kLines[] = {
    "stop() idle                  +    0ms  total     0ms\r\n",
    "kill stale (clean)           +    8ms  total     8ms\r\n",
    "find physical route          +   14ms  total    22ms\r\n",
    "pin panel hosts              +    1ms  total    23ms\r\n",
    "spawn xray                   +    3ms  total    26ms\r\n",
    "xray socks listening         +  136ms  total   162ms\r\n",
    "spawn tun2socks              +    2ms  total   164ms\r\n",
    "wintun adapter up            +  113ms  total   277ms\r\n",
    "set tun address (api)        +    6ms  total   283ms\r\n",
    "set tun dns (api)            +    4ms  total   287ms\r\n",
    "tun ipv4 ready               +    2ms  total   289ms\r\n",
    "routes installed             +   16ms  total   305ms\r\n",
    "ipv6 leak blocked            +  307ms  total   612ms\r\n",
};

}  // namespace

std::string RecordedLines(size_t count) {
  std::string text;
  for (size_t at = 0; at < count; ++at) {
    text += kLines[at];
  }
  return text;
}

std::string RecordedConnect() {
  return RecordedLines(std::size(kLines));
}

ScriptedService::ScriptedService(sim::Machine& machine) : machine_(machine) {
  sim::PipeSettings settings;
  settings.maxInstances = 8;
  settings.inBuffer = 4096;
  settings.outBuffer = 4096;
  EXPECT_EQ(machine.pipes.Create(L"\\\\.\\pipe\\TavrinService", settings, &server_), 0u);
  EXPECT_EQ(server_->StartConnect(), sim::kPending);
}

void ScriptedService::IsBusyFor(std::uint64_t milliseconds) {
  server_->instance->state = sim::PipeInstance::State::kConnected;
  machine_.clock.After(milliseconds,
                       [this] { server_->instance->state = sim::PipeInstance::State::kListening; });
}

void ScriptedService::SendsBytesAfter(std::uint64_t milliseconds, const std::string& bytes) {
  machine_.clock.After(milliseconds, [this, bytes] { server_->instance->toClient += bytes; });
}

void ScriptedService::RepliesAfter(std::uint64_t milliseconds, const std::string& payload) {
  SendsBytesAfter(milliseconds,
                  sim::FrameHeader(static_cast<std::uint32_t>(payload.size())) + payload);
}

void ScriptedService::HangsUpAfter(std::uint64_t milliseconds) {
  machine_.clock.After(milliseconds, [this] { server_->instance->serverOpen = false; });
}

std::string ScriptedService::Request() const {
  const std::string& bytes = server_->instance->toServer;
  return bytes.size() < 4 ? "" : bytes.substr(4);
}

ClientTest::ClientTest() {
  machine.modulePath = L"C:\\Program Files\\Tavrin\\tavrinctl.exe";
  machine.ThisProcess()->image = machine.modulePath;
  machine.PutHelpers(kRuntime);
  machine.files.SetVersion(L"C:\\Program Files\\Tavrin\\TavrinService.exe", "0.1.0");
}

int ClientTest::Run(const std::vector<std::wstring>& arguments) {
  return vpn::RunClient(arguments);
}

void ClientTest::UseTerminal(int columns) {
  machine.console.isTerminal = true;
  machine.console.terminal.columns = columns;
}

void ClientTest::PutAccount() {
  const std::wstring runtime = kRuntime;
  machine.files.Put(runtime + L"\\account.json", R"({
  "email": "someone@mail.example", "password": "secret", "expireAt": "2999-12-31",
  "nodeName": "Tokyo 01", "address": "203.0.113.77", "port": 443,
  "uuid": "6f2c9d4e-5b1a-4c3d-8e7f-0123456789ab", "sni": "www.site.example",
  "publicKey": "AAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAA", "shortId": "0123abcd"
})");
  machine.files.Put(runtime + L"\\session.json",
                    R"({"email":"someone@mail.example","expireAt":"2999-12-31"})");
}

void ClientTest::AppendTraceAfter(std::uint64_t milliseconds, const std::string& lines) {
  machine.clock.After(milliseconds, [this, lines] {
    machine.files.Put(kTrace, machine.files.Read(kTrace).value_or("\xEF\xBB\xBF") + lines);
  });
}

}  // namespace unit
