#include "client/account/shop.h"
#include "client/commands/account_answer.h"
#include "client/commands/commands.h"
#include "client/exit_codes.h"
#include "client/service/presence.h"
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
  const Backend backend = FindBackend(FindServicePlace(line.runtimeDir).runtimeDir);
  std::vector<PlanOption> plans;
  std::wstring error;
  if (!WhileAsking(screen, [&] {
        return MakeControlPlane(backend, backend.sessionPath())->fetchPlans(plans, error);
      })) {
    return FailAccount(error, line.json, screen);
  }
  if (line.json) {
    Json object = GoodJson();
    object["plans"] = Json::array();
    for (const PlanOption& plan : plans) {
      object["plans"].push_back(PlanJson(plan));
    }
    screen.out.write(JsonText(object));
  } else {
    ShowPlans(plans, screen.out);
  }
  return kExitDone;
}

}  // namespace vpn
