// Connects and disconnects without end, in one process: what is open after the last round is what
// was open after the tenth.
#include <algorithm>
#include <cstdlib>
#include <optional>
#include <string>

#include "src/host/run_modes.h"
#include "tests/unit/host/run_mode_fixture.h"

namespace vpn {
namespace {

constexpr int kSettled = 10;
// The simulated machine remembers each process and handle of its life, and so gets slower; the
// product's own state goes on from one machine to the next.
constexpr int kRoundsOfAMachine = 100;

int Rounds() {
  const char* const chosen = std::getenv("TAVRIN_SIMULATED_SOAK_ROUNDS");
  return chosen != nullptr ? std::atoi(chosen) : 1000;
}

// One machine's life with one process on it, which is stopped in the end.
class Life {
 public:
  Life() : machine_(*installed_) {
    unit::ResetProductState();
    machine_.files.PutDirectory(L"C:\\run");
    SetRuntimeDir(L"C:\\run");
    unit::PutRuntime(machine_);
    before_ = machine_.network;
  }

  void Run(int rounds) {
    unit::BackgroundServer server(machine_, DaemonMain);
    for (int round = 1; round <= rounds && !testing::Test::HasFailure(); ++round) {
      SCOPED_TRACE(round);
      ConnectAndDisconnect();
      WaitUntilItWaits();
      if (round == kSettled) ExpectOnlyThePipeIsOpen();
      machine_.files.Put(L"C:\\run\\tavrin-service.log");
    }
    ExpectOnlyThePipeIsOpen();
    EXPECT_EQ(sim::PipeClient::Exchange(machine_, unit::kShutdown), unit::kOkIdle);
    ASSERT_TRUE(server.Ends());
    EXPECT_EQ(machine_.WaitForThreads(), 0u);
    EXPECT_EQ(machine_.OpenHandles(), std::vector<std::string>());
    EXPECT_EQ(machine_.Violations(), std::vector<std::string>());
  }

 private:
  // Behind each exchange the server comes to wait for its next client, and stays there.
  void WaitUntilItWaits() {
    ASSERT_TRUE(
        unit::Eventually([&] { return machine_.calls.Count("ConnectNamedPipe") == waits_; }));
    machine_.calls.Clear();
    waits_ = 0;
  }
  void ExpectOnlyThePipeIsOpen() {
    EXPECT_EQ(machine_.OpenHandles(), std::vector<std::string>{"pipe from CreateNamedPipeW"});
  }
  std::optional<std::string> Ask(const char* request) {
    ++waits_;
    return sim::PipeClient::Exchange(machine_, request);
  }
  void ConnectAndDisconnect() {
    ASSERT_EQ(Ask(unit::kConnect), unit::kOkRunning);
    ASSERT_EQ(Ask(R"({"op":"disconnect"})"), unit::kOkIdle);
    const auto lock = machine_.Lock();
    EXPECT_EQ(machine_.processes.Alive(), std::vector<std::string>());
    EXPECT_EQ(unit::LostOrChanged(before_, machine_.network), std::vector<std::string>());
    EXPECT_EQ(machine_.network.routes.size(), before_.routes.size());
    EXPECT_EQ(machine_.network.adapters.size(), before_.adapters.size());
  }

  sim::InstalledMachine installed_;
  sim::Machine& machine_;
  netmodel::Network before_;
  std::size_t waits_ = 1;  // of the server for a client, since the log of calls was cleared
};

TEST(SimulatedSoak, LastRoundHoldsWhatTheTenthHeld) {
  const int rounds = Rounds();
  ASSERT_GT(rounds, kSettled);
  for (int done = 0; done < rounds && !HasFailure(); done += kRoundsOfAMachine) {
    SCOPED_TRACE(done);
    Life().Run(std::min(kRoundsOfAMachine, rounds - done));
  }
}

}  // namespace
}  // namespace vpn
