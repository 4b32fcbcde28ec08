#include "src/account/plan_options.h"
#include "src/account/xboard_control_plane.h"
#include "src/panel/json_reader.h"

namespace vpn {

bool XboardControlPlane::fetchPlans(std::vector<PlanOption>& plans, std::wstring& error) {
  std::string response;
  if (!Succeeded(fetch(L"/api/v1/user/plan/fetch", response), error)) {
    return false;
  }
  plans.clear();
  for (const std::string& plan : JsonObjectArray(response, "data")) {
    AddPlan(plan, plans);
  }
  TagBestOffers(plans);
  if (plans.empty()) {
    error = L"面板没有可购买的套餐";
    return false;
  }
  return true;
}

}  // namespace vpn
