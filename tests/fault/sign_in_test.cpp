// From the sign-in at a panel to the end of a connect, with each fallible call failing in turn: the
// client signs in and ends, then the service's process connects and disconnects.
#include <gtest/gtest.h>

#include "client/commands/commands.h"
#include "tests/fault/failing_run.h"
#include "tests/fault/next_connect.h"
#include "tests/fault/reply_texts.h"
#include "tests/sim/text.h"

namespace fault {
namespace {

constexpr wchar_t kSession[] = L"C:\\run\\session.json";
constexpr wchar_t kDraft[] = L"C:\\run\\session.json.new";
constexpr char kOldSession[] = R"({"email":"user@example.com","auth_data":"Bearer x"})";
constexpr char kNewSession[] = "{\"email\":\"new@mail.example\",\"auth_data\":\"Bearer NEW\"}\n";

const Scene& PanelScene() {
  return AllScenes().back();
}

struct Outcome {
  int code = -1;  // of the client
  bool isKilled = false;
  std::string session;  // when the client had ended
  bool hasDraft = false;
  size_t clientCalls = 0;
  std::vector<sim::CallRecord> calls;
  std::wstring text;  // of the connect
};

class SignIn : public ::testing::Test {
 protected:
  static void PutPanel(sim::Machine& machine) {
    machine.http.On("POST", "https://panel.example/api/v1/passport/auth/login",
                    {.body = R"({"data":{"auth_data":"Bearer NEW"}})"});
  }

  static sim::ProcessRun LogIn(sim::Machine& machine, int& code,
                               const std::function<void()>& arrange) {
    machine.console.input = "secret\n";
    return machine.RunProcess([&] {
      arrange();
      code = vpn::RunClient(
          {L"login", L"new@mail.example", L"--password-stdin", L"--runtime", L"C:\\run"});
    });
  }

  static Outcome Run(Stage& stage, const std::function<void(sim::Machine&)>& arrange) {
    sim::Machine& machine = *stage.machine;
    PutPanel(machine);
    Outcome outcome;
    BeginProcess();
    const size_t from = machine.calls.All().size();
    outcome.isKilled = LogIn(machine, outcome.code, [&] { arrange(machine); }).killed;
    outcome.session = machine.files.Read(kSession).value_or("(none)");
    outcome.hasDraft = machine.files.Exists(kDraft);
    outcome.clientCalls = FallibleCalls(machine, from).size();
    BeginProcess();
    const sim::ProcessRun service = machine.RunProcess([&] {
      outcome.text = Connect();
      Disconnect();
      EndProcess();
    });
    outcome.isKilled |= service.killed;
    outcome.calls = FallibleCalls(machine, from);
    machine.faults.Clear();
    machine.clock.Advance(10'000);
    EXPECT_EQ(machine.OpenHandles(), Lines());
    EXPECT_EQ(machine.Violations(), Lines());
    EXPECT_EQ(Missing(stage.Foreign(), stage.Now()), Lines());
    return outcome;
  }

  void RunAll(Mode mode) {
    Outcome whole;
    {
      Stage stage(PanelScene());
      whole = Run(stage, [](sim::Machine&) {});
      ASSERT_EQ(whole.code, 0);
      ASSERT_EQ(whole.session, kNewSession);
      ASSERT_EQ(whole.text, L"");
    }
    EachCall("SignInToConnect", Describe(whole.calls), [&](size_t index) {
      Stage stage(PanelScene());
      const Outcome outcome =
          Run(stage, [&](sim::Machine& machine) { Arrange(machine, mode, index); });
      const bool isOfClient = index < whole.clientCalls;
      CheckSession(outcome, mode, isOfClient ? whole.calls[index].name : "");
      CheckConnect(outcome, mode, isOfClient);
      ExpectNextSignInWorks(stage);
      ExpectNextConnectIsClean(stage);
    });
  }

  // The session is the old one or the new one, each whole; `call` is what failed in the client.
  static void CheckSession(const Outcome& outcome, Mode mode, const std::string& call) {
    if (mode == Mode::kKilled) {
      EXPECT_TRUE(outcome.session == kOldSession || outcome.session == kNewSession)
          << outcome.session;
      return;
    }
    EXPECT_EQ(outcome.session, outcome.code == 0 ? kNewSession : kOldSession);
    if (mode == Mode::kOnce && call != "DeleteFileW") {
      EXPECT_FALSE(outcome.hasDraft);
    }
    if (call.empty()) {
      EXPECT_EQ(outcome.code, 0);
    }
  }

  // A sign-in that failed costs nobody a connect.
  static void CheckConnect(const Outcome& outcome, Mode mode, bool isOfClient) {
    if (isOfClient && mode != Mode::kOnwards) {
      EXPECT_EQ(outcome.text, L"");
    } else if (!outcome.text.empty()) {
      EXPECT_TRUE(IsKnownText(PanelScene(), outcome.text)) << sim::Narrow(outcome.text);
    }
  }

  static void ExpectNextSignInWorks(Stage& stage) {
    sim::Machine& machine = *stage.machine;
    int code = -1;
    BeginProcess();
    LogIn(machine, code, [] {});
    EXPECT_EQ(code, 0);
    EXPECT_EQ(machine.files.Read(kSession), kNewSession);
    EXPECT_FALSE(machine.files.Exists(kDraft));
  }
};

TEST_F(SignIn, ToConnectWithOneCallThatFails) {
  RunAll(Mode::kOnce);
}

TEST_F(SignIn, ToConnectWithAllCallsFailingFromOneOn) {
  RunAll(Mode::kOnwards);
}

TEST_F(SignIn, ToConnectWithAProcessThatDies) {
  RunAll(Mode::kKilled);
}

}  // namespace
}  // namespace fault
