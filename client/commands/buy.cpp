#include "client/account/shop.h"
#include "client/advice/advice.h"
#include "client/commands/account_answer.h"
#include "client/commands/commands.h"
#include "client/console/input.h"
#include "client/exit_codes.h"
#include "client/service/presence.h"
#include "client/text/amounts.h"
#include "client/text/display_width.h"

namespace vpn {
namespace {

// Everything that a purchase needs and does.
struct Purchase {
  PlanOption plan;
  bool knowsOrders = false;
  std::vector<OpenOrder> open;  // these are cancelled by it
  PurchaseResult result;
};

std::wstring OrderText(const OpenOrder& order) {
  return PlainLine(order.tradeNo + L" (" + order.planName + L", " + order.period + L", " +
                   MoneyText(order.cents) + L")");
}

// Beside the answer, since it is for the person.
void TellWhatHappens(const Purchase& purchase, Output& err) {
  const PlanOption& plan = purchase.plan;
  err.line(PlainLine(plan.name) + L", " + plan.durationLabel + L" (" + plan.period + L"): " +
           plan.priceText);
  if (!purchase.knowsOrders) {
    err.line(L"The panel does not tell which orders are open; this cancels them.");
  }
  for (const OpenOrder& order : purchase.open) {
    err.line(L"This cancels the open order " + OrderText(order) + L".");
  }
}

// True for a yes; else `exitCode` is the command's.
bool IsWanted(Screen& screen, int& exitCode) {
  if (!HasKeyboard()) {
    exitCode =
        WrongUse(L"there is no console to ask on; buy without a question with --yes", screen);
    return false;
  }
  const InterruptWatch interrupt;
  const Answer answer = AskPerson(L"Buy it? [y/N] ", Echo::kShown, interrupt, screen.err);
  if (answer.kind == Answer::Kind::kInterrupted) {
    exitCode = TellInterrupted(screen);
    return false;
  }
  if (answer.text == L"y" || answer.text == L"Y" || answer.text == L"yes") {
    return true;
  }
  screen.err.line(L"Nothing is bought.");
  exitCode = kExitRefused;
  return false;
}

Json PurchaseJson(const Purchase& purchase) {
  Json object = GoodJson();
  object["plan"] = PlanJson(purchase.plan);
  object["cancelled"] = Json::array();
  for (const OpenOrder& order : purchase.open) {
    object["cancelled"].push_back(JsonValue(order.tradeNo));
  }
  object["activated"] = purchase.result.activated;
  object["tradeNo"] = JsonValue(purchase.result.tradeNo);
  object["payUrl"] = JsonValue(purchase.result.payUrl);
  object["message"] = JsonValue(purchase.result.message);
  return object;
}

void ShowResult(const PurchaseResult& result, Output& out) {
  out.line(L"Order    " + PlainLine(result.tradeNo));
  if (!result.payUrl.empty()) {
    out.line(L"Pay at   " + PlainLine(result.payUrl));
  }
  out.line(result.message);
  if (!result.activated) {
    out.line(L"  What to do: " + WhatToDo(result.message) + L".");
    out.line(L"  Then: tavrinctl order " + PlainLine(result.tradeNo) + L" --wait");
  }
}

}  // namespace

int RunBuy(const CommandLine& line, Screen& screen) {
  const Backend backend = FindBackend(FindServicePlace(line.runtimeDir).runtimeDir);
  const auto plane = MakeControlPlane(backend, backend.sessionPath());
  std::vector<PlanOption> plans;
  std::wstring error;
  if (!WhileAsking(screen, [&] { return plane->fetchPlans(plans, error); })) {
    return FailAccount(error, line.json, screen);
  }
  const PlanOption* const plan = FindPlan(plans, line.plan, line.period);
  if (plan == nullptr) {
    return FailAccount(
        Complaint{L"There is no plan " + line.plan + L" with the period " + line.period + L".",
                  L"choose a plan and a period that tavrinctl plans shows"},
        line.json, screen);
  }
  Purchase purchase;
  purchase.plan = *plan;
  purchase.knowsOrders =
      WhileAsking(screen, [&] { return FetchOpenOrders(backend, purchase.open); });
  TellWhatHappens(purchase, screen.err);
  int exitCode = kExitDone;
  if (!line.yes && !IsWanted(screen, exitCode)) {
    return exitCode;
  }
  if (!WhileAsking(screen, [&] {
        return plane->purchasePlan(plan->planId, plan->period, purchase.result, error);
      })) {
    return FailAccount(error, line.json, screen);
  }
  if (line.json) {
    screen.out.write(JsonText(PurchaseJson(purchase)));
  } else {
    ShowResult(purchase.result, screen.out);
  }
  return kExitDone;
}

}  // namespace vpn
