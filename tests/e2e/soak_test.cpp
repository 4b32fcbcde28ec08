// Many rounds in one process: what it holds after the last is what it held after the tenth.
#include <cstdlib>
#include <iostream>

#include "tests/e2e/harness/expect.h"
#include "tests/e2e/harness/process_figures.h"
#include "tests/e2e/harness/service_test.h"
#include "tests/standins/text.h"

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
  ProcessFigures Figures() { return SettledFiguresOf(service().pid()); }
};

// Figures that never move would show no leak.
TEST_F(Soak, FiguresFollowWhatAProcessHolds) {
  const DWORD self = GetCurrentProcessId();
  const std::size_t before = FiguresOf(self).handles;
  const std::size_t memoryBefore = FiguresOf(self).privateBytes;
  const std::wstring path = box.runtime() + L"\\account.json";
  const HANDLE file = CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                  nullptr, OPEN_EXISTING, 0, nullptr);
  ASSERT_NE(file, INVALID_HANDLE_VALUE);
  EXPECT_EQ(FiguresOf(self).handles, before + 1);
  EXPECT_EQ(OpenFilesBelow(box.runtime()), Lines{standins::ToUtf8(path)});
  CloseHandle(file);
  EXPECT_EQ(FiguresOf(self).handles, before);
  std::vector<char> block(4 * kMemorySlack, 'x');
  EXPECT_EQ(block[kMemorySlack], 'x');
  EXPECT_GT(FiguresOf(self).privateBytes, memoryBefore + 2 * kMemorySlack);
}

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
