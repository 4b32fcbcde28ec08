#include <windows.h>

#include "client/account/shop.h"
#include "client/commands/account_run.h"
#include "client/commands/commands.h"
#include "client/console/interrupt.h"
#include "client/exit_codes.h"
#include "client/text/amounts.h"

namespace vpn {
namespace {

constexpr std::uint64_t kLongestWait = 15ULL * 60 * 1000;  // milliseconds
constexpr std::uint64_t kBetweenQuestions = 3000;
constexpr int kFailuresBorne = 3;  // in a row, once the panel has answered
constexpr DWORD kStep = 100;

// Counts down until the next question, with what is left of the whole wait.
void CountDown(std::uint64_t deadline, const InterruptWatch& interrupt, MovingLine& moving) {
  const std::uint64_t next = GetTickCount64() + kBetweenQuestions;
  for (std::uint64_t now = next - kBetweenQuestions; now < next && !interrupt.wasInterrupted();
       now = GetTickCount64()) {
    const std::uint64_t left = deadline > now ? deadline - now : 0;
    moving.show(std::wstring(1, WheelAt(now)) + L" Not paid yet; waiting for another " +
                SecondsText(left / 1000 * 1000) + L" …");
    Sleep(kStep);
  }
}

// Asks until the order is paid or cancelled, the panel keeps failing, or the time is over.
Complaint AwaitPayment(AccountRun& run, const InterruptWatch& interrupt, OrderState& state) {
  Output& err = run.screen.err;
  MovingLine moving(err);
  const std::uint64_t deadline = GetTickCount64() + kLongestWait;
  const auto ask = [&] {
    return FetchOrderState(run.backend, *run.plane, run.line.tradeNo, state);
  };
  Complaint complaint = ask();
  if (!err.isLively() && !complaint && state == OrderState::kOpen) {
    err.line(L"Not paid yet; waiting for 15 minutes at most.");
  }
  int failures = complaint ? kFailuresBorne : 0;
  while (failures < kFailuresBorne && state == OrderState::kOpen && GetTickCount64() < deadline) {
    CountDown(deadline, interrupt, moving);
    if (interrupt.wasInterrupted()) {
      break;
    }
    complaint = ask();
    failures = complaint ? failures + 1 : 0;
  }
  return complaint;
}

int TellState(AccountRun& run, OrderState state) {
  const bool isPaid = state == OrderState::kPaid;
  const bool isCancelled = state == OrderState::kCancelled;
  if (!run.line.json) {
    run.screen.out.line(isPaid        ? L"The order is paid."
                        : isCancelled ? L"The order is cancelled."
                                      : L"The order is not paid yet.");
  }
  Json answer = GoodJson();
  PutText(answer, "tradeNo", run.line.tradeNo);
  PutFlag(answer, "paid", isPaid);
  PutFlag(answer, "cancelled", isCancelled);
  (void)run.done(answer);
  return isPaid ? kExitDone : kExitRefused;
}

}  // namespace

int RunOrder(const CommandLine& line, Screen& screen) {
  AccountRun run(line, screen);
  const InterruptWatch interrupt;
  OrderState state = OrderState::kOpen;
  if (line.wait) {
    run.complaint = AwaitPayment(run, interrupt, state);
  } else {
    (void)run.look([&] { return FetchOrderState(run.backend, *run.plane, line.tradeNo, state); });
  }
  if (interrupt.wasInterrupted()) {
    return run.interrupted();
  }
  return run.complaint ? run.fail() : TellState(run, state);
}

}  // namespace vpn
