#include "tests/panel/endpoints.h"

namespace panel {

namespace {

// A whole number loses its point on the way out.
Json InUnits(const Json& hundredths) {
  const double units = hundredths.get<double>() / 100;
  const auto whole = static_cast<std::int64_t>(units);
  return static_cast<double>(whole) == units ? Json(whole) : Json(units);
}

}  // namespace

// The list's prices are hundredths, these are units; and the names of the periods differ.
Json PlanColumns(const Json& plan) {
  constexpr std::pair<const char*, const char*> kPeriods[] = {
      {"monthly", "month_price"},         {"quarterly", "quarter_price"},
      {"half_yearly", "half_year_price"}, {"yearly", "year_price"},
      {"two_yearly", "two_year_price"},   {"three_yearly", "three_year_price"},
      {"onetime", "onetime_price"},       {"reset_traffic", "reset_price"}};
  Json prices = Json::object();
  for (const auto& [name, key] : kPeriods) {
    if (plan.at(key).is_number()) prices[name] = InUnits(plan.at(key));
  }
  Json columns;
  for (const char* key : {"id", "group_id", "transfer_enable", "name", "speed_limit", "show",
                          "sort", "renew", "content", "reset_traffic_method", "capacity_limit"}) {
    columns[key] = plan.at(key);
  }
  columns["prices"] = prices;
  for (const char* key : {"sell", "device_limit", "tags", "created_at", "updated_at"}) {
    columns[key] = plan.at(key);
  }
  return columns;
}

Reply PlanFetch(Call& call) {
  Json rows = Json::array();
  for (const Json& plan : call.state["plans"]) {
    if (plan.at("show") == true) rows.push_back(plan);
  }
  return Success(call.state, rows);
}

}  // namespace panel
