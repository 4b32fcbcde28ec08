// Buying a plan. An order left open by an earlier attempt makes the panel refuse a new one, so open
// orders are cancelled first, and once more when the panel complains all the same.
#include <algorithm>

#include "src/account/failure_text.h"
#include "src/account/xboard_control_plane.h"
#include "src/common/deployment.h"
#include "src/common/text.h"
#include "src/panel/json_reader.h"
#include "src/panel/request_text.h"

namespace vpn {
namespace {

constexpr std::int64_t kNoType = -2;
constexpr std::int64_t kNothingToPay = -1;

constexpr const wchar_t* kPendingWords[] = {L"未完成", L"未支付",   L"未付款", L"待支付",
                                            L"开通中", L"将其取消", L"unpaid", L"pending order"};

bool Contains(const std::wstring& text, const wchar_t* part) {
  return text.find(part) != std::wstring::npos;
}

bool IsPendingOrderError(const std::wstring& text) {
  return std::ranges::any_of(kPendingWords,
                             [&](const wchar_t* word) { return Contains(text, word); });
}

// A line for the panel's operator rather than for the user.
std::wstring PaymentSetupText() {
  return std::wstring(L"面板还没配置支付方式。请到后台「支付方式」添加通道，通知地址用 ") +
         kPaymentNotifyUrl;
}

// The value of a key at the top level, else inside the data object.
std::string StringHereOrInData(const std::string& response, std::string_view hereKey,
                               std::string_view dataKey) {
  std::string value = JsonString(response, hereKey);
  return value.empty() ? JsonString(JsonDataObject(response), dataKey) : value;
}

std::int64_t OrderType(const std::string& response) {
  const std::int64_t type = JsonInt(response, "type", kNoType);
  return type == kNoType ? JsonInt(JsonDataObject(response), "type", kNoType) : type;
}

// An empty number is none. The outcome is not looked at.
void CancelOrder(const PanelClient& panel, const std::string& tradeNo) {
  if (!tradeNo.empty()) {
    (void)panel.post(L"/api/v1/user/order/cancel", JsonBody().addUtf8("trade_no", tradeNo).str());
  }
}

void CancelOrdersIn(const PanelReply& list, const PanelClient& panel, bool onlyOpen) {
  for (const std::string& order : JsonObjectArray(list.ok() ? list.body : "", "data")) {
    if (!onlyOpen || JsonInt(order, "status", -1) == 0) {
      CancelOrder(panel, JsonString(order, "trade_no"));
    }
  }
}

// Cancels the orders that an earlier attempt left open. A panel that knows no filter is asked to
// cancel everything it lists, and refuses what is not open; one that filters differently gets a
// second chance with the whole list.
void CancelOpenOrders(const PanelClient& panel) {
  CancelOrdersIn(panel.get(L"/api/v1/user/order/fetch?status=0"), panel, false);
  CancelOrdersIn(panel.get(L"/api/v1/user/order/fetch"), panel, true);
}

// `tradeNo` is the panel's order number, in UTF-8.
Status PlaceOrder(const PanelClient& panel, std::int32_t planId, const std::wstring& period,
                  std::string& tradeNo) {
  const PanelReply reply =
      panel.post(L"/api/v1/user/order/save",
                 JsonBody().addNumber("plan_id", planId).addText("period", period).str());
  if (!reply.ok()) {
    return Status::failure(FirstText({MessageIn(reply.body), reply.error}));
  }
  tradeNo = StringHereOrInData(reply.body, "data", "trade_no");
  return tradeNo.empty() ? Status::failure(L"下单失败，未返回订单号") : Status::success();
}

// Id of the first payment method that the panel lists, 0 when there is none.
std::int64_t FirstPaymentMethod(const PanelClient& panel) {
  const PanelReply reply = panel.get(L"/api/v1/user/order/getPaymentMethod");
  if (!reply.ok()) {
    return 0;
  }
  const std::vector<std::string> methods = JsonObjectArray(reply.body, "data");
  return methods.empty() ? 0 : JsonInt(methods.front(), "id", 0);
}

}  // namespace

bool XboardControlPlane::purchasePlan(std::int32_t planId, const std::wstring& period,
                                      PurchaseResult& result, std::wstring& error) {
  result = PurchaseResult();
  if (!Succeeded(requireSignIn(), error)) {
    return false;
  }
  CancelOpenOrders(panel_);
  std::string tradeNo;
  Status placed = PlaceOrder(panel_, planId, period, tradeNo);
  if (IsPendingOrderError(placed.text())) {
    CancelOpenOrders(panel_);
    error.clear();
    placed = PlaceOrder(panel_, planId, period, tradeNo);
    if (IsPendingOrderError(placed.text())) {
      placed =
          Status::failure(L"上一笔订单还在处理。未付款可再点一次购买；若已付款请关闭后刷新会员");
    }
  }
  return Succeeded(placed.andThen([&] { return checkOut(tradeNo, result); }), error);
}

Status XboardControlPlane::checkOut(const std::string& tradeNo, PurchaseResult& result) const {
  result.tradeNo = Utf8ToWide(tradeNo);
  const std::int64_t method = FirstPaymentMethod(panel_);
  JsonBody body;
  body.addUtf8("trade_no", tradeNo);
  if (method > 0) {
    body.addNumber("method", method);
  }
  const PanelReply reply = panel_.post(L"/api/v1/user/order/checkout", body.str());
  const std::wstring failure =
      reply.ok() ? std::wstring() : FirstText({MessageIn(reply.body), reply.error});
  if (reply.ok() && OrderType(reply.body) == kNothingToPay) {
    result.activated = true;
    result.message = L"套餐已开通";
    return Status::success();
  }
  if (!reply.ok() || method <= 0) {
    CancelOrder(panel_, tradeNo);
    const bool needsSetup =
        method <= 0 || Contains(failure, L"Payment method") || Contains(failure, L"not available");
    return Status::failure(needsSetup ? PaymentSetupText() : failure);
  }
  result.payUrl = Utf8ToWide(StringHereOrInData(reply.body, "data", "data"));
  result.message = result.payUrl.empty() ? L"请到面板完成支付" : L"已打开支付页面";
  return Status::success();
}

bool XboardControlPlane::checkOrderPaid(const std::wstring& tradeNo, bool& paid,
                                        std::wstring& error) {
  paid = false;
  if (tradeNo.empty()) {
    error = L"请先登录";  // an empty number is answered like a missing sign-in
    return false;
  }
  std::string response;
  const std::wstring path =
      L"/api/v1/user/order/check?trade_no=" + Utf8ToWide(UrlEncode(WideToUtf8(tradeNo)));
  if (!Succeeded(fetch(path, response), error)) {
    return false;
  }
  const std::int64_t state =
      JsonInt(JsonDataObject(response), "data", JsonInt(response, "data", 0));
  paid = state == 1 || state == 3;
  return true;
}

}  // namespace vpn
