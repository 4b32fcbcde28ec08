// What the tests of orders and of their payment share: the panel's shop by request.
#ifndef TAVRIN_TESTS_UNIT_ACCOUNT_XBOARD_ORDER_TEST_H_
#define TAVRIN_TESTS_UNIT_ACCOUNT_XBOARD_ORDER_TEST_H_

#include <algorithm>
#include <string>
#include <utility>

#include "tests/unit/account/xboard_test.h"

namespace vpn {

class OrderTest : public XboardTest {
 protected:
  bool Buy() { return panel().purchasePlan(7, L"month_price", result, error); }

  // What is not scripted can't be reached, which the lists and cancels may well be.
  void OnOpenOrders(const std::string& body) { OnGet("user/order/fetch?status=0", body); }
  void OnAllOrders(const std::string& body) { OnGet("user/order/fetch", body); }
  void OnCancel() { OnPost("user/order/cancel", R"({"data":true})"); }
  void OnSave(sim::HttpAnswer answer) { OnPost("user/order/save", std::move(answer)); }
  void OnMethods(const std::string& body) { OnGet("user/order/getPaymentMethod", body); }
  void OnCheckOut(sim::HttpAnswer answer) { OnPost("user/order/checkout", std::move(answer)); }
  void OnFreePurchase() {
    OnSave(Ok(R"({"data":"n"})"));
    OnMethods(R"({"data":[]})");
    OnCheckOut(Ok(R"({"type":-1,"data":true})"));
  }

  // Bodies of every request of one path.
  Texts Bodies(const std::string& path) {
    Texts bodies;
    for (const sim::HttpRequestRecord& request : machine.http.Requests()) {
      if (request.url == kApi + path) {
        bodies.push_back(request.body);
      }
    }
    return bodies;
  }
  Texts Cancelled() { return Bodies("user/order/cancel"); }
  size_t Saves() { return Bodies("user/order/save").size(); }

  void ExpectEmptyResult() {
    EXPECT_FALSE(result.activated);
    EXPECT_EQ(result.tradeNo + result.payUrl + result.message, L"");
  }

  const std::string kPending =
      R"({"message":"\u60a8\u6709\u672a\u4ed8\u6b3e\u6216\u5f00\u901a\u4e2d\u7684\u8ba2\u5355"})";
  PurchaseResult result;
};

}  // namespace vpn

#endif  // TAVRIN_TESTS_UNIT_ACCOUNT_XBOARD_ORDER_TEST_H_
