#include "client/account/shop.h"
#include "client/advice/advice.h"
#include "client/commands/account_run.h"
#include "client/commands/commands.h"
#include "client/console/input.h"
#include "client/exit_codes.h"
#include "client/text/amounts.h"
#include "client/text/display_width.h"

namespace vpn {
namespace {

std::wstring OrderText(const OpenOrder& order) {
  return PlainLine(order.tradeNo + L" (" + order.planName + L", " + order.period + L", " +
                   MoneyText(order.cents) + L")");
}

// Beside the answer, since it is for the person. Gives the orders that the purchase cancels.
std::vector<OpenOrder> TellWhatHappens(AccountRun& run, const PlanOption& plan) {
  Output& err = run.screen.err;
  std::vector<OpenOrder> orders;
  const bool isKnown =
      run.ask([&](ControlPlane&, std::wstring&) { return FetchOpenOrders(run.backend, orders); });
  err.line(PlainLine(plan.name) + L", " + plan.durationLabel + L" (" + plan.period + L"): " +
           plan.priceText);
  if (!isKnown) {
    err.line(L"The panel does not tell which orders are open; this cancels them.");
  }
  for (const OpenOrder& order : orders) {
    err.line(L"This cancels the open order " + OrderText(order) + L".");
  }
  return orders;
}

// True for a yes; else `exitCode` is the command's.
bool IsWanted(AccountRun& run, int& exitCode) {
  if (!HasKeyboard()) {
    exitCode = run.wrongUse(L"there is no console to ask on; buy without a question with --yes");
    return false;
  }
  const InterruptWatch interrupt;
  const Answer answer = AskPerson(L"Buy it? [y/N] ", Echo::kShown, interrupt, run.screen.err);
  if (answer.kind == Answer::Kind::kInterrupted) {
    exitCode = run.interrupted();
    return false;
  }
  if (answer.text == L"y" || answer.text == L"Y" || answer.text == L"yes") {
    return true;
  }
  run.screen.err.line(L"Nothing is bought.");
  exitCode = kExitRefused;
  return false;
}

Json PurchaseJson(const PlanOption& plan, const std::vector<OpenOrder>& cancelled,
                  const PurchaseResult& result) {
  Json object = GoodJson();
  PutPlan(PutObject(object, "plan"), plan);
  Json& list = PutList(object, "cancelled");
  for (const OpenOrder& order : cancelled) {
    AppendText(list, order.tradeNo);
  }
  PutFlag(object, "activated", result.activated);
  PutText(object, "tradeNo", result.tradeNo);
  PutText(object, "payUrl", result.payUrl);
  PutText(object, "message", result.message);
  return object;
}

void ShowResult(const PurchaseResult& result, Output& out) {
  const std::wstring number = PlainLine(result.tradeNo);
  out.line(L"Order    " + number);
  if (!result.payUrl.empty()) {
    out.line(L"Pay at   " + PlainLine(result.payUrl));
  }
  out.line(result.message);
  if (!result.activated) {
    out.line(L"  What to do: " + WhatToDo(result.message) + L".");
    out.line(L"  Then: tavrinctl order " + number + L" --wait");
  }
}

int Buy(AccountRun& run, const PlanOption& plan) {
  const std::vector<OpenOrder> cancelled = TellWhatHappens(run, plan);
  int exitCode = kExitDone;
  if (!run.line.yes && !IsWanted(run, exitCode)) {
    return exitCode;
  }
  PurchaseResult result;
  if (!run.ask([&](ControlPlane& plane, std::wstring& error) {
        return plane.purchasePlan(plan.planId, plan.period, result, error);
      })) {
    return run.fail();
  }
  if (!run.line.json) {
    ShowResult(result, run.screen.out);
  }
  return run.done(PurchaseJson(plan, cancelled, result));
}

}  // namespace

int RunBuy(const CommandLine& line, Screen& screen) {
  AccountRun run(line, screen);
  std::vector<PlanOption> plans;
  if (!run.ask([&](ControlPlane& plane, std::wstring& error) {
        return plane.fetchPlans(plans, error);
      })) {
    return run.fail();
  }
  const PlanOption* const plan = FindPlan(plans, line.plan, line.period);
  if (plan == nullptr) {
    return run.fail(L"There is no plan " + line.plan + L" with the period " + line.period,
                    L"choose a plan and a period that tavrinctl plans shows");
  }
  return Buy(run, *plan);
}

}  // namespace vpn
