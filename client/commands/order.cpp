#include <windows.h>

#include "client/account/shop.h"
#include "client/commands/account_answer.h"
#include "client/commands/asking.h"
#include "client/commands/commands.h"
#include "client/exit_codes.h"
#include "client/service/presence.h"
#include "client/text/amounts.h"

namespace vpn {
namespace {

constexpr std::uint64_t kLongestWait = 15 * 60 * 1000;  // milliseconds
constexpr std::uint64_t kBetweenQuestions = 3000;
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

// Asks until the order is paid or cancelled, the panel fails, or the time is over.
Complaint AwaitPayment(const Backend& backend, const std::wstring& tradeNo,
                       const InterruptWatch& interrupt, Screen& screen, OrderState& state) {
  MovingLine moving(screen.err);
  const std::uint64_t deadline = GetTickCount64() + kLongestWait;
  Complaint complaint = FetchOrderState(backend, tradeNo, state);
  if (!screen.err.isLively() && !complaint && state == OrderState::kOpen) {
    screen.err.line(L"Not paid yet; waiting for 15 minutes at most.");
  }
  while (!complaint && state == OrderState::kOpen && GetTickCount64() < deadline) {
    CountDown(deadline, interrupt, moving);
    if (interrupt.wasInterrupted()) {
      break;
    }
    complaint = FetchOrderState(backend, tradeNo, state);
  }
  return complaint;
}

int TellState(OrderState state, const CommandLine& line, Screen& screen) {
  const bool isPaid = state == OrderState::kPaid;
  const bool isCancelled = state == OrderState::kCancelled;
  if (line.json) {
    Json object = GoodJson();
    object["tradeNo"] = JsonValue(line.tradeNo);
    object["paid"] = isPaid;
    object["cancelled"] = isCancelled;
    screen.out.write(JsonText(object));
  } else {
    screen.out.line(isPaid        ? L"The order is paid."
                    : isCancelled ? L"The order is cancelled."
                                  : L"The order is not paid yet.");
  }
  return isPaid ? kExitDone : kExitRefused;
}

}  // namespace

int RunOrder(const CommandLine& line, Screen& screen) {
  const Backend backend = FindBackend(FindServicePlace(line.runtimeDir).runtimeDir);
  const InterruptWatch interrupt;
  OrderState state = OrderState::kOpen;
  const Complaint complaint =
      line.wait
          ? AwaitPayment(backend, line.tradeNo, interrupt, screen, state)
          : WhileAsking(screen, [&] { return FetchOrderState(backend, line.tradeNo, state); });
  if (interrupt.wasInterrupted()) {
    return TellInterrupted(screen);
  }
  return complaint ? FailAccount(complaint, line.json, screen) : TellState(state, line, screen);
}

}  // namespace vpn
