// Buying a plan. An order left open by an earlier attempt makes the panel refuse a new one, so open
// orders are cancelled first, and once more when the panel complains all the same.
#include <algorithm>

#include "src/account/panel_session.h"
#include "src/account/xboard_control_plane.h"
#include "src/common/deployment.h"
#include "src/common/text.h"
#include "src/panel/json_reader.h"
#include "src/panel/panel_call.h"

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
  return std::any_of(std::begin(kPendingWords), std::end(kPendingWords),
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

}  // namespace

void XboardControlPlane::CancelOrder(const std::string& tradeNo) {
  if (tradeNo.empty()) {
    return;
  }
  std::string response;
  std::wstring ignored;
  (void)PostToPanel(apiBase + L"/api/v1/user/order/cancel", authData,
                    R"({"trade_no":")" + JsonEscape(tradeNo) + R"("})", response, ignored);
}

void XboardControlPlane::CancelOpenOrders() {
  std::string open;
  std::wstring ignored;
  if (GetFromPanel(apiBase + L"/api/v1/user/order/fetch?status=0", authData, open, ignored)) {
    for (const std::string& order : JsonObjectArray(open, "data")) {
      CancelOrder(JsonString(order, "trade_no"));
    }
  }
  // A panel that knows no filter was asked to cancel everything it listed, and refuses what is not
  // open; one that filters differently gets a second chance here.
  std::string all;
  if (GetFromPanel(apiBase + L"/api/v1/user/order/fetch", authData, all, ignored)) {
    for (const std::string& order : JsonObjectArray(all, "data")) {
      if (JsonInt(order, "status", -1) == 0) {
        CancelOrder(JsonString(order, "trade_no"));
      }
    }
  }
}

bool XboardControlPlane::PlaceOrder(std::int32_t planId, const std::wstring& period,
                                    std::string& tradeNo, std::wstring& error) {
  const std::string body = R"({"plan_id":)" + std::to_string(planId) + R"(,"period":")" +
                           JsonEscape(WideToUtf8(period)) + R"("})";
  std::string response;
  if (!PostToPanel(apiBase + L"/api/v1/user/order/save", authData, body, response, error)) {
    PreferPanelMessage(response, error);
    return false;
  }
  tradeNo = StringHereOrInData(response, "data", "trade_no");
  if (tradeNo.empty()) {
    error = L"下单失败，未返回订单号";
    return false;
  }
  return true;
}

bool XboardControlPlane::purchasePlan(std::int32_t planId, const std::wstring& period,
                                      PurchaseResult& result, std::wstring& error) {
  result = PurchaseResult();
  if (!requireSignIn(error)) {
    return false;
  }
  CancelOpenOrders();
  std::string tradeNo;
  if (!PlaceOrder(planId, period, tradeNo, error)) {
    if (!IsPendingOrderError(error)) {
      return false;
    }
    CancelOpenOrders();
    error.clear();
    if (!PlaceOrder(planId, period, tradeNo, error)) {
      if (IsPendingOrderError(error)) {
        error = L"上一笔订单还在处理。未付款可再点一次购买；若已付款请关闭后刷新会员";
      }
      return false;
    }
  }
  return CheckOut(tradeNo, result, error);
}

std::int64_t XboardControlPlane::FirstPaymentMethod() {
  std::string response;
  std::wstring ignored;
  if (!GetFromPanel(apiBase + L"/api/v1/user/order/getPaymentMethod", authData, response,
                    ignored)) {
    return 0;
  }
  const std::vector<std::string> methods = JsonObjectArray(response, "data");
  return methods.empty() ? 0 : JsonInt(methods.front(), "id", 0);
}

bool XboardControlPlane::CheckOut(const std::string& tradeNo, PurchaseResult& result,
                                  std::wstring& error) {
  result.tradeNo = Utf8ToWide(tradeNo);
  const std::int64_t method = FirstPaymentMethod();
  std::string body = R"({"trade_no":")" + JsonEscape(tradeNo) + '"';
  if (method > 0) {
    body += R"(,"method":)" + std::to_string(method);
  }
  std::string response;
  std::wstring failure;
  if (!PostToPanel(apiBase + L"/api/v1/user/order/checkout", authData, body + "}", response,
                   failure)) {
    PreferPanelMessage(response, failure);
    const bool needsSetup =
        method <= 0 || Contains(failure, L"Payment method") || Contains(failure, L"not available");
    error = needsSetup ? PaymentSetupText() : failure;
    CancelOrder(tradeNo);
    return false;
  }
  if (OrderType(response) == kNothingToPay) {
    result.activated = true;
    result.message = L"套餐已开通";
    return true;
  }
  if (method <= 0) {
    error = PaymentSetupText();
    CancelOrder(tradeNo);
    return false;
  }
  result.payUrl = Utf8ToWide(StringHereOrInData(response, "data", "data"));
  result.message = result.payUrl.empty() ? L"请到面板完成支付" : L"已打开支付页面";
  return true;
}

bool XboardControlPlane::checkOrderPaid(const std::wstring& tradeNo, bool& paid,
                                        std::wstring& error) {
  paid = false;
  if (authData.empty() || tradeNo.empty()) {
    error = L"请先登录";
    return false;
  }
  const std::wstring url =
      apiBase + L"/api/v1/user/order/check?trade_no=" + Utf8ToWide(UrlEncode(WideToUtf8(tradeNo)));
  std::string response;
  if (!GetFromPanel(url, authData, response, error)) {
    return false;
  }
  const std::int64_t state =
      JsonInt(JsonDataObject(response), "data", JsonInt(response, "data", 0));
  paid = state == 1 || state == 3;
  return true;
}

}  // namespace vpn
