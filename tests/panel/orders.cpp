// Orders and payment. States of an order: 0 open, 1 paid and being opened, 2 cancelled, 3 done.
#include <cmath>

#include "tests/panel/endpoints.h"

namespace panel {
namespace {

Json* OrderOf(Call& call) {
  Json* const order = FindBy(call.state["orders"], "trade_no", call.Text("trade_no"));
  return order != nullptr && (*order)["user_id"] == (*call.user)["id"] ? order : nullptr;
}

bool HasUnfinished(const Call& call) {
  for (const Json& order : call.state["orders"]) {
    if (order.at("user_id") == call.user->at("id") && order.at("status") <= 1) return true;
  }
  return false;
}

// A price of the list is a fraction at times; the amount is cut off at the point.
Json NewOrder(Call& call, double price) {
  return {{"id", call.state["orders"].size() + 1},
          {"invite_user_id", nullptr},
          {"user_id", (*call.user)["id"]},
          {"plan_id", call.Number("plan_id")},
          {"coupon_id", nullptr},
          {"payment_id", nullptr},
          {"type", 1},
          {"period", call.Text("period")},
          {"trade_no", "2026" + FreshDigits(call.state, 21)},
          {"callback_no", nullptr},
          {"total_amount", static_cast<std::int64_t>(std::trunc(price))},
          {"handling_amount", nullptr},
          {"discount_amount", nullptr},
          {"balance_amount", nullptr},
          {"status", 0},
          {"commission_status", 0},
          {"commission_balance", 0},
          {"paid_at", nullptr},
          {"created_at", 1760000000},
          {"updated_at", 1760000000}};
}

void Activate(Json& state, Json& order) {
  Json* const user = FindBy(state["users"], "id", order["user_id"]);
  Json* const plan = FindBy(state["plans"], "id", order["plan_id"]);
  order["status"] = 3;
  order["paid_at"] = 1760000100;
  if (user == nullptr || plan == nullptr) return;
  (*user)["plan_id"] = (*plan)["id"];
  (*user)["transfer_enable"] = (*plan)["transfer_enable"].get<std::int64_t>() * 1073741824;
  (*user)["device_limit"] = (*plan)["device_limit"];
  (*user)["expired_at"] = 4102329600;
}

}  // namespace

bool PayOrder(Json& state, const std::string& tradeNo) {
  Json* const order = FindBy(state["orders"], "trade_no", tradeNo);
  if (order == nullptr || (*order)["status"] != 0) return false;
  Activate(state, *order);
  return true;
}

Reply OrderFetch(Call& call) {
  Json rows = Json::array();
  for (const Json& order : call.state["orders"]) {
    const bool wanted = !call.request.has_param("status") ||
                        std::to_string(order.at("status").get<int>()) == call.Text("status");
    if (order.at("user_id") != call.user->at("id") || !wanted) continue;
    Json row = order;
    Json* const plan = FindBy(call.state["plans"], "id", order.at("plan_id"));
    row["plan"] = plan == nullptr ? Json() : PlanColumns(*plan);
    rows.push_back(row);
  }
  return Success(call.state, rows);
}

Reply OrderSave(Call& call) {
  Json* const plan = FindBy(call.state["plans"], "id", call.Number("plan_id"));
  if (HasUnfinished(call)) {
    return Refusal(call.state, 400, "您有未付款或开通中的订单，请稍后再试或将其取消");
  }
  if (plan == nullptr) return Refusal(call.state, 400, "该订阅不存在");
  const auto price = plan->find(call.Text("period"));
  if (price == plan->end() || !price->is_number()) {
    return Refusal(call.state, 400, "该订阅周期无法进行购买，请选择其他周期");
  }
  const Json order = NewOrder(call, price->get<double>());
  call.state["orders"].push_back(order);
  if (call.state["orderNumberInObject"] == true) {
    return Success(call.state, {{"trade_no", order["trade_no"]}});
  }
  return Success(call.state, order["trade_no"]);
}

Reply OrderCancel(Call& call) {
  Json* const order = OrderOf(call);
  if (order == nullptr) return Refusal(call.state, 400, "订单不存在");
  if ((*order)["status"] != 0) return Refusal(call.state, 400, "只可以取消待支付订单");
  (*order)["status"] = 2;
  return Success(call.state, true);
}

// The only answer besides the server list that comes without an envelope.
Reply OrderCheckout(Call& call) {
  Json* const order = OrderOf(call);
  if (order == nullptr || (*order)["status"] != 0) {
    return Refusal(call.state, 400, "订单不存在或已支付");
  }
  if ((*order)["total_amount"] == 0) {
    Activate(call.state, *order);
    return Plain(200, {{"type", -1}, {"data", true}});
  }
  if (call.state["checkoutNeedsMethod"] == true &&
      FindBy(call.state["paymentMethods"], "id", call.Number("method")) == nullptr) {
    return Refusal(call.state, 400, "支付方式不可用");
  }
  (*order)["payment_id"] = call.Number("method");
  return Plain(200, {{"type", call.state["checkoutType"]}, {"data", call.state["checkoutData"]}});
}

Reply OrderCheck(Call& call) {
  const Json* const order = OrderOf(call);
  if (order == nullptr) return Refusal(call.state, 400, "订单不存在");
  return Success(call.state, order->at("status"));
}

Reply PaymentMethods(Call& call) {
  return Success(call.state, call.state["paymentMethods"]);
}

}  // namespace panel
