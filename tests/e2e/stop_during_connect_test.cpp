// A stop that comes while a connect is under way, in each of its phases: the connect is answered
// first, and then the process ends as ever.
#include "tests/e2e/harness/expect.h"
#include "tests/e2e/harness/stop_fixture.h"
#include "tests/e2e/harness/waiting.h"

namespace e2e {
namespace {

using standins::MachineState;

constexpr char kConnect[] = R"({"op":"connect"})";
constexpr char kTun2socks[] = "tun2socks-windows-amd64.exe";
constexpr std::int64_t kSlow = 800;  // milliseconds

// One place in which a connect stands still, made so before it starts.
struct Phase {
  const char* name;
  void (*slowDown)(MachineState&);
  bool (*isReached)(const Machine&);
};

bool HasCalled(const Machine& machine, const std::string& call) {
  for (const std::string& line : machine.Calls()) {
    if (line.starts_with(call + "(")) return true;
  }
  return false;
}

const Phase kPhases[] = {
    {"PhysicalRoute", [](MachineState& state) { state.heldCall = "GetIpForwardTable2"; },
     [](const Machine& machine) { return HasCalled(machine, "GetIpForwardTable2"); }},
    {"Refusals", [](MachineState& state) { state.heldCall = "GetAdaptersAddresses"; },
     [](const Machine& machine) { return HasCalled(machine, "GetAdaptersAddresses"); }},
    {"Xray", [](MachineState& state) { state.xray.delayMs = kSlow; },
     [](const Machine& machine) { return machine.Starts("xray.exe") == 1; }},
    {"Tun2socks", [](MachineState& state) { state.tun2socks.delayMs = kSlow; },
     [](const Machine& machine) { return machine.Starts(kTun2socks) == 1; }},
    {"Adapter", [](MachineState& state) { state.tun2socks.downMs = kSlow; },
     [](const Machine& machine) { return machine.Network().FindByAlias("tavrin") != nullptr; }},
    {"Address", [](MachineState& state) { state.heldCall = "CreateUnicastIpAddressEntry"; },
     [](const Machine& machine) { return HasCalled(machine, "CreateUnicastIpAddressEntry"); }},
    {"Routes", [](MachineState& state) { state.heldCall = "CreateIpForwardEntry2"; },
     [](const Machine& machine) { return HasCalled(machine, "CreateIpForwardEntry2"); }},
    {"Ipv6Block", [](MachineState& state) { state.netsh.hangsOn = "admin=disabled"; },
     [](const Machine& machine) { return machine.Starts("netsh.exe") == 3; }},
};

struct Case {
  Phase phase;
  Trigger trigger;
};

class StopDuringConnect : public StopFixture, public ::testing::WithParamInterface<Case> {};

TEST_P(StopDuringConnect, IsAnsweredAndThenEnds) {
  const auto& [phase, trigger] = GetParam();
  Begin(trigger);
  machine.Edit(phase.slowDown);
  PipeClient client;
  client.Write(Frame(kConnect));
  WaitUntil("the connect stands still", [&] { return phase.isReached(machine); });
  Pull();
  EXPECT_TRUE(IsUp());
  machine.Edit([](MachineState& state) { state.heldCall.clear(); });
  EXPECT_EQ(client.ReadReply(), kUp);
  ExpectEnded();
}

// The other ways to stop take part once before the children start and once with both of them up.
std::vector<Case> AllCases() {
  std::vector<Case> cases;
  for (const Phase& phase : kPhases) {
    cases.push_back({phase, Trigger::kCtrlC});
    if (phase.name != std::string("Refusals") && phase.name != std::string("Routes")) continue;
    cases.push_back({phase, Trigger::kOwnerEnds});
    cases.push_back({phase, Trigger::kManagerStop});
  }
  return cases;
}

INSTANTIATE_TEST_SUITE_P(In, StopDuringConnect, ::testing::ValuesIn(AllCases()),
                         [](const auto& one) {
                           return std::string(one.param.phase.name) +
                                  TriggerName(one.param.trigger);
                         });

class StopDuringSlowConnect : public StopFixture {
 protected:
  // The helper hangs and the connect runs into its budget, with the stop already asked for.
  void ExpectRefusedAndEnded(const std::string& text, const std::string& image) {
    PipeClient client;
    client.Write(Frame(kConnect));
    WaitUntil("the helper starts", [&] { return machine.Starts(image) == 1; });
    Pull();
    EXPECT_EQ(client.ReadReply(), Refusal(text));
    ExpectEnded();
  }
};

TEST_F(StopDuringSlowConnect, XrayThatNeverListens) {
  Begin(Trigger::kManagerStop);
  machine.Edit([](MachineState& state) { state.xray.listens = false; });
  ExpectRefusedAndEnded("连接核心无法启动，请换一条线路或重新登录后再试。", "xray.exe");
}

TEST_F(StopDuringSlowConnect, AdapterThatNeverComesUp) {
  Begin(Trigger::kOwnerEnds);
  machine.Edit([](MachineState& state) { state.tun2socks.comesUp = false; });
  ExpectRefusedAndEnded("wintun adapter not created", kTun2socks);
}

// The replaced tunnel is already half down, and its successor comes up all the same.
TEST_F(StopDuringSlowConnect, OldTunnelWhoseEndHangs) {
  Begin(Trigger::kCtrlC);
  ASSERT_EQ(Ask(kConnect), kUp);
  machine.ForgetCalls();
  machine.Edit([](MachineState& state) { state.netsh.hangsOn = "delete route ::/1"; });
  PipeClient client;
  client.Write(Frame(kConnect));
  WaitUntil("the old tunnel goes down", [&] { return machine.Starts("netsh.exe") >= 2; });
  Pull();
  machine.Edit([](MachineState& state) { state.netsh.hangsOn.clear(); });
  EXPECT_EQ(client.ReadReply(), kUp);
  ExpectEnded();
}

}  // namespace
}  // namespace e2e
