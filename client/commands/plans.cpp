#include "client/account/shop.h"
#include "client/commands/account_run.h"
#include "client/commands/commands.h"
#include "client/text/display_width.h"
#include "client/text/table.h"

namespace vpn {
namespace {

void ShowPlans(const std::vector<PlanOption>& plans, Output& out) {
  constexpr Table::Align kRight = Table::Align::kRight;
  Table table({{L"Plan", kRight},
               {L"Name"},
               {L"Period"},
               {L"Length"},
               {L"Price", kRight},
               {L"Per day", kRight},
               {L"Traffic", kRight},
               {L"Devices", kRight}});
  for (const PlanOption& plan : plans) {
    table.addRow({std::to_wstring(plan.planId), PlainLine(plan.name), plan.period,
                  plan.durationLabel, plan.priceText, plan.dailyPrice, plan.trafficText,
                  plan.deviceLimit > 0 ? std::to_wstring(plan.deviceLimit) : L"–", plan.tag});
  }
  for (const std::wstring& line : table.lines()) {
    out.line(line);
  }
}

}  // namespace

int RunPlans(const CommandLine& line, Screen& screen) {
  AccountRun run(line, screen);
  std::vector<PlanOption> plans;
  if (!run.ask([&](ControlPlane& plane, std::wstring& error) {
        return plane.fetchPlans(plans, error);
      })) {
    return run.fail();
  }
  if (!line.json) {
    ShowPlans(plans, screen.out);
  }
  Json answer = GoodJson();
  Json& list = PutList(answer, "plans");
  for (const PlanOption& plan : plans) {
    PutPlan(AppendObject(list), plan);
  }
  return run.done(answer);
}

}  // namespace vpn
