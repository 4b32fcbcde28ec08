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

void PutPlan(Json& object, const PlanOption& plan) {
  PutNumber(object, "plan", plan.planId);
  PutText(object, "name", plan.name);
  PutText(object, "period", plan.period);
  PutText(object, "periodLabel", plan.periodLabel);
  PutText(object, "duration", plan.durationLabel);
  PutNumber(object, "days", plan.days);
  PutText(object, "price", plan.priceText);
  PutNumber(object, "priceCents", plan.priceCents);
  PutText(object, "dailyPrice", plan.dailyPrice);
  PutText(object, "traffic", plan.trafficText);
  PutNumber(object, "deviceLimit", plan.deviceLimit);
  PutText(object, "tag", plan.tag);
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

Complaint FetchOrderState(const Backend& backend, ControlPlane& plane, const std::wstring& tradeNo,
                          OrderState& state) {
  state = OrderState::kOpen;
  bool isPaid = false;
  std::wstring error;
  if (!plane.checkOrderPaid(tradeNo, isPaid, error)) {
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
