#include "src/account/plan_options.h"
#include "src/account/xboard_control_plane.h"
#include "src/panel/json_reader.h"
#include "src/panel/panel_call.h"

namespace vpn {

bool XboardControlPlane::fetchPlans(std::vector<PlanOption>& plans, std::wstring& error) {
  if (!requireSignIn(error)) {
    return false;
  }
  std::string response;
  if (!GetFromPanel(apiBase + L"/api/v1/user/plan/fetch", authData, response, error)) {
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
