// Many rounds in one process: what it holds after the last is what it held after the tenth.
#include <cstdlib>
#include <iostream>

#include "tests/e2e/harness/expect.h"
#include "tests/e2e/harness/process_figures.h"
#include "tests/e2e/harness/service_test.h"

namespace e2e {
namespace {

constexpr int kSettled = 10;  // by then every cache and every pool is filled
constexpr std::size_t kMemorySlack = 1024 * 1024;

int Rounds() {
  const char* const chosen = std::getenv("TAVRIN_SOAK_ROUNDS");
  return chosen != nullptr ? std::atoi(chosen) : 20;
}

class Soak : public ServiceTest {
 protected:
  void ConnectAndDisconnect() {
    ASSERT_EQ(Ask(R"({"op":"connect"})"), kUp);
    ASSERT_EQ(Ask(R"({"op":"disconnect"})"), kDown);
    ExpectSameNetwork(machine.Network(), netmodel::TypicalNetwork());
    machine.ForgetCalls();
  }
  ProcessFigures Figures() {
    WaitForListening();
    return FiguresOf(service().pid());
  }
};

TEST_F(Soak, LastRoundHoldsWhatTheTenthHeld) {
  const int rounds = Rounds();
  ASSERT_GT(rounds, kSettled);
  StartService();
  ProcessFigures settled;
  for (int round = 1; round <= rounds && !HasFailure(); ++round) {
    SCOPED_TRACE(round);
    ConnectAndDisconnect();
    if (round == kSettled) settled = Figures();
  }
  const ProcessFigures last = Figures();
  std::cout << "round " << kSettled << ": " << FigureText(settled) << "\nround " << rounds << ": "
            << FigureText(last) << "\n";
  EXPECT_EQ(last.handles, settled.handles);
  EXPECT_EQ(last.threads, settled.threads);
  EXPECT_LE(last.privateBytes, settled.privateBytes + kMemorySlack);
  EXPECT_EQ(OpenFilesBelow(box.runtime()), Lines{});
  EXPECT_EQ(ServiceLog().size(), 3U + 2U * static_cast<std::size_t>(rounds));
  ShutDown();
}

}  // namespace
}  // namespace e2e
