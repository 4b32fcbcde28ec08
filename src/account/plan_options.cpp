#include "src/account/plan_options.h"

#include <algorithm>
#include <functional>

#include "src/common/number_text.h"
#include "src/common/text.h"
#include "src/panel/json_reader.h"

namespace vpn {
namespace {

struct Period {
  const char* key;
  const wchar_t* label;
  std::int32_t days;
  const wchar_t* duration;
};

constexpr Period kPeriods[] = {
    {"month_price", L"月付", 30, L"1 个月"},        {"quarter_price", L"季付", 90, L"3 个月"},
    {"half_year_price", L"半年付", 180, L"6 个月"}, {"year_price", L"年付", 365, L"1 年"},
    {"two_year_price", L"两年", 730, L"2 年"},      {"three_year_price", L"三年", 1095, L"3 年"},
    {"onetime_price", L"一次性", 0, L"一次性"}};

// Some panels give bytes and some gigabytes. What makes at least one gigabyte in bytes is bytes.
std::wstring TrafficText(std::int64_t traffic) {
  constexpr std::int64_t kGigabyte = 1073741824;
  const auto number = static_cast<double>(traffic);
  return FixedText(traffic >= kGigabyte ? number / static_cast<double>(kGigabyte) : number, 0) +
         L" GB";
}

double PricePerDay(const PlanOption* option) {
  return static_cast<double>(option->priceCents) / option->days;
}

void SetPrice(std::int64_t cents, PlanOption& option) {
  option.priceCents = cents;
  if (cents <= 0) {
    option.priceText = L"免费";
    return;
  }
  const double price = static_cast<double>(cents) / 100.0;
  option.priceText = L"¥" + FixedText(price, 2);
  if (option.days >= 1) {
    option.dailyPrice = L"¥" + FixedText(price / option.days, 2) + L"/天";
  }
}

void AddPlanOption(const std::string& planJson, const PlanOption& plan, const Period& period,
                   std::vector<PlanOption>& plans) {
  const std::optional<std::int64_t> cents = JsonOptionalInt(planJson, period.key);
  if (!cents) {
    return;
  }
  PlanOption option = plan;
  option.days = period.days;
  option.period = Utf8ToWide(period.key);
  option.periodLabel = period.label;
  option.durationLabel = period.duration;
  SetPrice(*cents, option);
  plans.push_back(option);
}

}  // namespace

void AddPlan(const std::string& planJson, std::vector<PlanOption>& plans) {
  PlanOption plan;  // what all rows of the plan share
  plan.planId = static_cast<std::int32_t>(JsonInt(planJson, "id", 0));
  if (plan.planId <= 0) {
    return;
  }
  plan.name = Utf8ToWide(JsonString(planJson, "name"));
  plan.trafficText = TrafficText(JsonInt(planJson, "transfer_enable", 0));
  plan.deviceLimit = static_cast<std::int32_t>(JsonInt(planJson, "device_limit", 0));
  for (const Period& period : kPeriods) {
    AddPlanOption(planJson, plan, period, plans);
  }
}

void TagBestOffers(std::vector<PlanOption>& plans) {
  std::vector<PlanOption*> offers;
  for (PlanOption& option : plans) {
    if (option.days > 0 && option.priceCents > 0) {
      offers.push_back(&option);
    }
  }
  std::ranges::stable_sort(offers, std::less(), PricePerDay);
  if (!offers.empty()) {
    offers[0]->tag = L"超值套餐";
  }
  if (offers.size() > 1) {
    offers[1]->tag = L"最受欢迎";
  }
}

}  // namespace vpn
