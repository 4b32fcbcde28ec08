// Buying a plan and following the payment.
#include "tests/e2e/panel/account/account_test.h"
#include "tests/standins/text.h"

namespace e2e {
namespace {

constexpr char kOpen[] = "GET /api/v1/user/order/fetch?status=0";
constexpr char kAll[] = "GET /api/v1/user/order/fetch";
constexpr char kSave[] = R"(POST /api/v1/user/order/save {"plan_id":2,"period":"month_price"})";
constexpr char kMethods[] = "GET /api/v1/user/order/getPaymentMethod";
constexpr wchar_t kSetupText[] =
    L"面板还没配置支付方式。请到后台「支付方式」添加通道，通知地址用 https://api.panel.example";
constexpr wchar_t kStillPending[] =
    L"上一笔订单还在处理。未付款可再点一次购买；若已付款请关闭后刷新会员";
constexpr int kOpenState = 0;
constexpr int kCancelledState = 2;
constexpr int kDoneState = 3;

class Orders : public AccountTest {
 protected:
  bool Buy(std::int32_t plan = 2, const wchar_t* period = L"month_price") {
    error.clear();
    vpn::XboardControlPlane plane = SignedIn();
    return plane.purchasePlan(plan, period, result, error);
  }

  // True when the panel has answered and says so.
  bool IsPaid() {
    bool paid = false;
    vpn::XboardControlPlane plane = SignedIn();
    EXPECT_TRUE(plane.checkOrderPaid(result.tradeNo, paid, error)) << standins::ToUtf8(error);
    return paid;
  }

  std::string TradeNo() const { return standins::ToUtf8(result.tradeNo); }
  std::string Cancel(const std::string& tradeNo) const {
    return R"(POST /api/v1/user/order/cancel {"trade_no":")" + tradeNo + "\"}";
  }
  std::string Checkout(const std::string& rest) const {
    return R"(POST /api/v1/user/order/checkout {"trade_no":")" + TradeNo() + "\"" + rest + "}";
  }
  Json Order(std::size_t index) const { return panel.State()["orders"].at(index); }

  // An order of this user in some state.
  void LeaveOrder(int state) const {
    panel.Set({{"orders",
                {{{"id", 1},
                  {"user_id", 1},
                  {"plan_id", 3},
                  {"type", 1},
                  {"period", "onetime_price"},
                  {"trade_no", "2025000000000000000000001"},
                  {"total_amount", 9900},
                  {"status", state}}}}});
  }

  vpn::PurchaseResult result;
};

TEST_F(Orders, FreePlanIsOpenedAtOnce) {
  ASSERT_TRUE(Buy(1)) << standins::ToUtf8(error);
  EXPECT_TRUE(result.activated);
  EXPECT_EQ(result.message, L"套餐已开通");
  EXPECT_EQ(result.payUrl, L"");
  EXPECT_EQ(TradeNo(), Order(0)["trade_no"]);
  EXPECT_EQ(result.tradeNo.size(), 25U);
  ExpectLines(panel.Sequence(),
              {kOpen, kAll, R"(POST /api/v1/user/order/save {"plan_id":1,"period":"month_price"})",
               kMethods, Checkout(R"(,"method":7)")});
  EXPECT_EQ(panel.User()["plan_id"], 1);
  EXPECT_TRUE(IsPaid());
}

TEST_F(Orders, FreePlanNeedsNoPaymentMethod) {
  panel.Set({{"paymentMethods", Json::array()}});
  ASSERT_TRUE(Buy(1)) << standins::ToUtf8(error);
  EXPECT_TRUE(result.activated);
  EXPECT_EQ(panel.Sequence().back(), Checkout(""));
  EXPECT_EQ(Order(0)["status"], kDoneState);
}

TEST_F(Orders, PaidPlanGivesAPageAndThePaymentIsFollowed) {
  ASSERT_TRUE(Buy()) << standins::ToUtf8(error);
  EXPECT_FALSE(result.activated);
  EXPECT_EQ(result.payUrl, L"https://pay.panel.example/submit.php?pid=7&type=alipay");
  EXPECT_EQ(result.message, L"已打开支付页面");
  ExpectLines(panel.Sequence(), {kOpen, kAll, kSave, kMethods, Checkout(R"(,"method":7)")});
  EXPECT_EQ(Order(0)["total_amount"], 1989);
  panel.ForgetRequests();
  EXPECT_FALSE(IsPaid());
  panel.Pay(TradeNo());
  EXPECT_TRUE(IsPaid());
  const std::string check = "GET /api/v1/user/order/check?trade_no=" + TradeNo();
  ExpectLines(panel.Sequence(), {check, check});
}

TEST_F(Orders, OpenOrderLeftOverIsCancelledFirst) {
  LeaveOrder(kOpenState);
  ASSERT_TRUE(Buy()) << standins::ToUtf8(error);
  ExpectLines(panel.Sequence(), {kOpen, Cancel("2025000000000000000000001"), kAll, kSave, kMethods,
                                 Checkout(R"(,"method":7)")});
  EXPECT_EQ(Order(0)["status"], kCancelledState);
  EXPECT_EQ(Order(1)["status"], kOpenState);
}

TEST_F(Orders, OrderThatIsBeingOpenedStandsInTheWay) {
  LeaveOrder(1);
  EXPECT_FALSE(Buy());
  EXPECT_EQ(error, kStillPending);
  ExpectLines(panel.Sequence(), {kOpen, kAll, kSave, kOpen, kAll, kSave});
}

// The plan's text stands in every row of its orders.
TEST_F(Orders, StrayBraceInAPlansTextHidesTheOpenOrder) {
  Json plans = panel.State()["plans"];
  plans[2]["content"] = "见 { 说明";
  panel.Set({{"plans", plans}});
  LeaveOrder(kOpenState);
  EXPECT_FALSE(Buy());
  EXPECT_EQ(error, kStillPending);
  EXPECT_EQ(Order(0)["status"], kOpenState);
}

TEST_F(Orders, EnglishComplaintAboutAnOpenOrderIsUnderstood) {
  panel.Behave({{"path", "/api/v1/user/order/save"},
                {"do", "answer"},
                {"status", 500},
                {"body", R"({"message":"You have an unpaid order"})"},
                {"times", 1}});
  ASSERT_TRUE(Buy()) << standins::ToUtf8(error);
  ExpectLines(panel.Sequence(),
              {kOpen, kAll, kSave, kOpen, kAll, kSave, kMethods, Checkout(R"(,"method":7)")});
}

TEST_F(Orders, RefusedForAnotherReason) {
  EXPECT_FALSE(Buy(2, L"half_year_price"));
  EXPECT_EQ(error, L"该订阅周期无法进行购买，请选择其他周期");
  EXPECT_FALSE(Buy(77));
  EXPECT_EQ(error, L"该订阅不存在");
  EXPECT_EQ(result.tradeNo, L"");
}

TEST_F(Orders, NumberInsideAnObject) {
  panel.Set({{"orderNumberInObject", true}});
  ASSERT_TRUE(Buy()) << standins::ToUtf8(error);
  EXPECT_EQ(TradeNo(), Order(0)["trade_no"]);
}

TEST_F(Orders, NoNumberAtAll) {
  panel.Answer("/api/v1/user/order/save", 200, R"({"data":true})");
  EXPECT_FALSE(Buy());
  EXPECT_EQ(error, L"下单失败，未返回订单号");
}

TEST_F(Orders, NoPaymentMethodIsToldToTheOperatorAndTheOrderCancelled) {
  panel.Set({{"paymentMethods", Json::array()}});
  EXPECT_FALSE(Buy());
  EXPECT_EQ(error, kSetupText);
  ExpectLines(panel.Sequence(), {kOpen, kAll, kSave, kMethods, Checkout(""), Cancel(TradeNo())});
  EXPECT_EQ(Order(0)["status"], kCancelledState);
}

TEST_F(Orders, CheckOutThatIsAcceptedWithoutAMethodIsThrownAway) {
  panel.Set({{"checkoutNeedsMethod", false}});
  panel.Answer("/api/v1/user/order/getPaymentMethod", 500);
  EXPECT_FALSE(Buy());
  EXPECT_EQ(error, kSetupText);
  EXPECT_EQ(result.payUrl, L"");
  EXPECT_EQ(Order(0)["status"], kCancelledState);
}

TEST_F(Orders, MethodThatThePanelRefusesIsExplainedByThePanel) {
  panel.Answer("/api/v1/user/order/getPaymentMethod", 200, R"({"data":[{"id":99}]})");
  EXPECT_FALSE(Buy());
  EXPECT_EQ(error, L"支付方式不可用");
  ExpectLines(panel.Sequence(),
              {kOpen, kAll, kSave, kMethods, Checkout(R"(,"method":99)"), Cancel(TradeNo())});
}

TEST_F(Orders, EnglishRefusalOfTheMethodMeansThatNoneIsSetUp) {
  panel.Answer("/api/v1/user/order/checkout", 500,
               R"({"message":"Payment method is not available"})");
  EXPECT_FALSE(Buy());
  EXPECT_EQ(error, kSetupText);
  EXPECT_EQ(Order(0)["status"], kCancelledState);
}

TEST_F(Orders, PaymentThatWasChargedAlreadyHasNoPage) {
  panel.Set({{"checkoutType", 2}, {"checkoutData", true}});
  ASSERT_TRUE(Buy());
  EXPECT_EQ(result.payUrl, L"");
  EXPECT_EQ(result.message, L"请到面板完成支付");
}

TEST_F(Orders, CheckOutThatBreaksOffCancelsTheOrder) {
  panel.Behave({{"path", "/api/v1/user/order/checkout"}, {"do", "garbage"}});
  EXPECT_FALSE(Buy());
  EXPECT_EQ(error, L"面板返回了无法识别的内容。");
  EXPECT_EQ(Order(0)["status"], kCancelledState);
}

TEST_F(Orders, UnknownNumberIsNoAnswer) {
  bool paid = true;
  vpn::XboardControlPlane plane = SignedIn();
  EXPECT_FALSE(plane.checkOrderPaid(L"7 &密", paid, error));
  EXPECT_EQ(error, L"面板 HTTP 400");
  EXPECT_FALSE(paid);
  ExpectLines(panel.Sequence(), {"GET /api/v1/user/order/check?trade_no=7%20%26%E5%AF%86"});
}

TEST_F(Orders, CancelledOrderIsNotPaid) {
  LeaveOrder(kCancelledState);
  result.tradeNo = L"2025000000000000000000001";
  EXPECT_FALSE(IsPaid());
}

TEST_F(Orders, SignedOut) {
  bool paid = true;
  vpn::XboardControlPlane plane = Restart();
  EXPECT_FALSE(plane.purchasePlan(1, L"month_price", result, error));
  EXPECT_EQ(error, L"请先登录");
  error.clear();
  EXPECT_FALSE(plane.checkOrderPaid(L"1", paid, error));
  EXPECT_EQ(error, L"请先登录");
  EXPECT_TRUE(panel.Requests().empty());
}

TEST_F(Orders, SessionThatThePanelDroppedIsExplainedByThePanel) {
  panel.SetUser({{"sessions", Json::array()}});
  EXPECT_FALSE(Buy());
  EXPECT_EQ(error, L"未登录或登陆已过期");
}

}  // namespace
}  // namespace e2e
