#include "client/account/shop.h"

#include <algorithm>

#include "client/advice/advice.h"
#include "src/common/text.h"
#include "src/panel/json_reader.h"
#include "src/panel/request_text.h"

namespace vpn {
namespace {

constexpr std::int64_t kOpen = 0;  // states of an order, as panels number them
constexpr std::int64_t kCancelled = 2;

}  // namespace

const PlanOption* FindPlan(const std::vector<PlanOption>& plans, const std::wstring& plan,
                           const std::wstring& period) {
  const auto found = std::find_if(plans.begin(), plans.end(), [&](const PlanOption& option) {
    const bool isPlan = std::to_wstring(option.planId) == plan || option.name == plan;
    return isPlan && (option.period == period || option.period == period + L"_price" ||
                      option.periodLabel == period);
  });
  return found == plans.end() ? nullptr : &*found;
}

Json PlanJson(const PlanOption& plan) {
  Json object;
  object["plan"] = plan.planId;
  object["name"] = JsonValue(plan.name);
  object["period"] = JsonValue(plan.period);
  object["periodLabel"] = JsonValue(plan.periodLabel);
  object["duration"] = JsonValue(plan.durationLabel);
  object["days"] = plan.days;
  object["price"] = JsonValue(plan.priceText);
  object["priceCents"] = plan.priceCents;
  object["dailyPrice"] = JsonValue(plan.dailyPrice);
  object["traffic"] = JsonValue(plan.trafficText);
  object["deviceLimit"] = plan.deviceLimit;
  object["tag"] = JsonValue(plan.tag);
  return object;
}

bool FetchOpenOrders(const Backend& backend, std::vector<OpenOrder>& orders) {
  const PanelReply reply =
      MakePanelClient(backend, backend.sessionPath()).get(L"/api/v1/user/order/fetch");
  if (!reply.ok() || !IsPanelReply(reply.body, "data")) {
    return false;
  }
  for (const std::string& row : JsonObjectArray(reply.body, "data")) {
    if (JsonInt(row, "status", -1) == kOpen) {
      orders.push_back({Utf8ToWide(JsonString(row, "trade_no")),
                        Utf8ToWide(JsonString(JsonObject(row, "plan"), "name")),
                        Utf8ToWide(JsonString(row, "period")), JsonInt(row, "total_amount", 0)});
    }
  }
  return true;
}

Complaint FetchOrderState(const Backend& backend, const std::wstring& tradeNo, OrderState& state) {
  state = OrderState::kOpen;
  bool isPaid = false;
  std::wstring error;
  if (!MakeControlPlane(backend, backend.sessionPath())->checkOrderPaid(tradeNo, isPaid, error)) {
    return {error, WhatToDo(error)};
  }
  if (isPaid) {
    state = OrderState::kPaid;
    return {};
  }
  const PanelReply reply =
      MakePanelClient(backend, backend.sessionPath())
          .get(L"/api/v1/user/order/check?trade_no=" + Utf8ToWide(UrlEncode(WideToUtf8(tradeNo))));
  if (JsonInt(reply.body, "data", kOpen) == kCancelled) {
    state = OrderState::kCancelled;
  }
  return JudgeReply(backend, reply, "data");
}

}  // namespace vpn
