// Open orders and the placing of a new one.
#include <string>

#include "tests/unit/account/xboard_order_test.h"

namespace vpn {
namespace {

class Orders : public OrderTest {};

TEST_F(Orders, APurchaseMakesItsRequestsInOrderEachWithTheCredential) {
  OnOpenOrders(R"({"data":[{"trade_no":"old"}]})");
  OnCancel();
  OnAllOrders(R"({"data":[]})");
  OnSave(Ok(R"({"data":"2025061500000000000000001"})"));
  OnMethods(R"({"data":[{"id":3,"name":"x"},{"id":4}]})");
  OnCheckOut(Ok(R"({"type":1,"data":"https:\/\/pay.example\/x"})"));
  EXPECT_TRUE(Buy());
  EXPECT_EQ(Sent(), (Texts{SignedGet("user/order/fetch?status=0"),
                           SignedPost("user/order/cancel", R"({"trade_no":"old"})"),
                           SignedGet("user/order/fetch"),
                           SignedPost("user/order/save", R"({"plan_id":7,"period":"month_price"})"),
                           SignedGet("user/order/getPaymentMethod"),
                           SignedPost("user/order/checkout",
                                      R"({"trade_no":"2025061500000000000000001","method":3})")}));
  EXPECT_EQ(error, L"");
  EXPECT_FALSE(result.activated);
  EXPECT_EQ(result.tradeNo, L"2025061500000000000000001");
  EXPECT_EQ(result.payUrl, L"https://pay.example/x");
  EXPECT_EQ(result.message, L"已打开支付页面");
}

TEST_F(Orders, SignedOutNothingIsAskedAndTheResultIsEmpty) {
  SignOut();
  result = {true, L"a", L"b", L"c"};
  EXPECT_FALSE(Buy());
  EXPECT_EQ(error, L"请先登录");
  ExpectEmptyResult();
  EXPECT_EQ(machine.http.Lines(), Texts());
}

TEST_F(Orders, PlanAndPeriodReachThePanelUnchanged) {
  OnSave(Refusal(500));
  EXPECT_FALSE(panel().purchasePlan(-2147483647, L"中\"\\x", result, error));
  EXPECT_EQ(machine.http.Requests().back().body,
            "{\"plan_id\":-2147483647,\"period\":\"中\\\"\\\\x\"}");
}

TEST_F(Orders, EveryOrderOfTheFilteredListIsCancelledWhateverItsStatus) {
  OnOpenOrders(R"({"data":[{"trade_no":"a","status":0},{"status":0},{"trade_no":""},)"
               R"({"trade_no":"b","status":3},{"trade_no":"c"}]})");
  EXPECT_FALSE(Buy());
  EXPECT_EQ(Cancelled(),
            (Texts{R"({"trade_no":"a"})", R"({"trade_no":"b"})", R"({"trade_no":"c"})"}));
}

TEST_F(Orders, OfTheWholeListOnlyThoseWithStatus0AreCancelled) {
  OnAllOrders(R"({"data":[{"trade_no":"a","status":0},{"trade_no":"b","status":1},)"
              R"({"trade_no":"c"},{"trade_no":"d","status":-1},{"trade_no":"e","status":"0"},)"
              R"({"status":0},{"trade_no":"f","status":null}]})");
  EXPECT_FALSE(Buy());
  // A status that holds no number reads as 0, a missing one does not.
  EXPECT_EQ(Cancelled(),
            (Texts{R"({"trade_no":"a"})", R"({"trade_no":"e"})", R"({"trade_no":"f"})"}));
}

TEST_F(Orders, AnOrderInBothListsIsCancelledTwice) {
  OnOpenOrders(R"({"data":[{"trade_no":"a","status":0}]})");
  OnAllOrders(R"({"data":[{"trade_no":"a","status":0}]})");
  EXPECT_FALSE(Buy());
  EXPECT_EQ(Cancelled(), (Texts{R"({"trade_no":"a"})", R"({"trade_no":"a"})"}));
}

TEST_F(Orders, AnOrderNumberIsEscaped) {
  OnOpenOrders(R"({"data":[{"trade_no":"a\"\\\u4e2d"}]})");
  EXPECT_FALSE(Buy());
  EXPECT_EQ(Cancelled(), Texts{R"({"trade_no":"a\"\\中"})"});
}

TEST_F(Orders, FailedListsAreNotReadAndNeitherTheyNorFailedCancelsStopThePurchase) {
  machine.http.OnNext("GET", kApi + "user/order/fetch?status=0",
                      Refusal(500, R"({"data":[{"trade_no":"x"}]})"));
  OnAllOrders(R"({"data":[{"trade_no":"a","status":0}]})");
  machine.http.OnNext("POST", kApi + "user/order/cancel", Refusal(500, R"({"message":"no"})"));
  OnFreePurchase();
  EXPECT_TRUE(Buy());
  EXPECT_EQ(Cancelled(), Texts{R"({"trade_no":"a"})"});
  EXPECT_EQ(error, L"");
}

TEST_F(Orders, WithBothListsUnreachableThePurchaseGoesOn) {
  OnFreePurchase();
  EXPECT_TRUE(Buy());
  EXPECT_EQ(Paths(),
            (Texts{"GET user/order/fetch?status=0", "GET user/order/fetch", "POST user/order/save",
                   "GET user/order/getPaymentMethod", "POST user/order/checkout"}));
}

// An order row holds the plan's text, whose braces are counted like all others.
TEST_F(Orders, AStrayBraceInAPlansTextHidesOpenOrders) {
  const std::string orders =
      R"({"data":[{"trade_no":"a","status":0,"plan":{"content":"{"}},{"trade_no":"b","status":0}]})";
  OnOpenOrders(orders);
  OnAllOrders(orders);
  OnSave(Refusal(400, kPending));
  OnOpenOrders(orders);
  OnAllOrders(orders);
  OnSave(Refusal(400, kPending));
  EXPECT_FALSE(Buy());
  EXPECT_EQ(Cancelled(), Texts());
  EXPECT_EQ(error, L"上一笔订单还在处理。未付款可再点一次购买；若已付款请关闭后刷新会员");
}

TEST_F(Orders, ThePanelsOrderRowsAreRead) {
  OnOpenOrders(
      R"({"status":"success","message":"\u64cd\u4f5c\u6210\u529f","data":[{"invite_user_id":)"
      R"(null,"plan_id":1,"period":"month_price","trade_no":"2025061511111111111111111",)"
      R"("total_amount":1990,"status":0,"commission_status":0,"commission_balance":0,)"
      R"("plan":{"id":1,"content":"a {b} c"}}],"error":null})");
  EXPECT_FALSE(Buy());
  EXPECT_EQ(Cancelled(), Texts{R"({"trade_no":"2025061511111111111111111"})"});
}

TEST_F(Orders, ARefusalShowsThePanelsMessageAndEndsThePurchase) {
  OnSave(Refusal(400, R"({"message":"\u8be5\u8ba2\u9605\u5df2\u552e\u7f44"})"));
  EXPECT_FALSE(Buy());
  EXPECT_EQ(error, L"该订阅已售罄");
  ExpectEmptyResult();
  EXPECT_EQ(Paths(), (Texts{"GET user/order/fetch?status=0", "GET user/order/fetch",
                            "POST user/order/save"}));
}

TEST_F(Orders, WithoutAMessageTheTransportsTextIsShown) {
  OnSave(Refusal(500, R"({"message": ""})"));
  EXPECT_FALSE(Buy());
  EXPECT_EQ(error, L"面板 HTTP 500");
  OnSave(Unreachable(12002));
  EXPECT_FALSE(Buy());
  EXPECT_EQ(error, L"连接面板超时。请检查网络，或稍后再试。");
}

TEST_F(Orders, ASessionThatHasEndedIsToldByThePanel) {
  OnSave(Refusal(403, R"({"message":"\u672a\u767b\u5f55\u6216\u767b\u9646\u5df2\u8fc7\u671f"})"));
  EXPECT_FALSE(Buy());
  EXPECT_EQ(error, L"未登录或登陆已过期");
}

TEST_F(Orders, AnAnswerWithoutANumberIsAFailure) {
  for (const char* body : {"{}", "", R"({"data":true})", R"({"data":null})", R"({"data":17})",
                           R"({"data":{"id":1}})", "<html></html>"}) {
    OnSave(Ok(body));
    EXPECT_FALSE(Buy()) << body;
    EXPECT_EQ(error, L"下单失败，未返回订单号") << body;
  }
  ExpectEmptyResult();
}

TEST_F(Orders, TheNumberMayStandInAnObject) {
  OnSave(Ok(R"({"data":{"id":5,"trade_no":"n"}})"));
  OnMethods(R"({"data":[]})");
  OnCheckOut(Ok(R"({"type":-1})"));
  EXPECT_TRUE(Buy());
  EXPECT_EQ(result.tradeNo, L"n");
}

TEST_F(Orders, EachOfTheEightPendingWordsLeadsToASecondAttempt) {
  for (const char* word :
       {"有未完成订单", "订单未支付！", "未付款", "请先处理待支付订单", "套餐开通中",
        "请先将其取消", "You have an unpaid order", "There is a pending order"}) {
    SCOPED_TRACE(word);
    machine.http.Forget();
    OnSave(Refusal(400, R"({"message":")" + std::string(word) + "\"}"));
    OnOpenOrders(R"({"data":[]})");
    OnAllOrders(R"({"data":[{"trade_no":"left","status":0}]})");
    OnFreePurchase();
    // The first cleaning finds nothing.
    EXPECT_TRUE(Buy());
    EXPECT_EQ(error, L"");
    EXPECT_EQ(Saves(), 2u);
  }
}

TEST_F(Orders, OtherWordsLeadToNone) {
  for (const char* word : {"Unpaid", "PENDING ORDER", "pending", "未完", "取消", ""}) {
    machine.http.Forget();
    OnSave(Refusal(400, R"({"message":")" + std::string(word) + "\"}"));
    EXPECT_FALSE(Buy());
    EXPECT_EQ(Saves(), 1u) << word;
  }
}

TEST_F(Orders, TheSecondAttemptCancelsOpenOrdersOnceMore) {
  OnOpenOrders(R"({"data":[{"trade_no":"a"}]})");
  OnAllOrders(R"({"data":[]})");
  OnSave(Refusal(400, kPending));
  OnOpenOrders(R"({"data":[]})");
  OnAllOrders(R"({"data":[{"trade_no":"b","status":0}]})");
  OnFreePurchase();
  EXPECT_TRUE(Buy());
  EXPECT_EQ(Cancelled(), (Texts{R"({"trade_no":"a"})", R"({"trade_no":"b"})"}));
  EXPECT_EQ(error, L"");
}

TEST_F(Orders, TheSecondAttemptBeginsWithoutTheTextOfAnEarlierFailure) {
  error = L"of an earlier call";
  OnSave(Refusal(400, kPending));
  OnFreePurchase();
  EXPECT_TRUE(Buy());
  EXPECT_EQ(error, L"");
}

TEST_F(Orders, ASecondPendingRefusalHasALineOfItsOwnAndThereIsNoThirdAttempt) {
  OnSave(Refusal(400, kPending));
  OnSave(Refusal(400, kPending));
  EXPECT_FALSE(Buy());
  EXPECT_EQ(error, L"上一笔订单还在处理。未付款可再点一次购买；若已付款请关闭后刷新会员");
  EXPECT_EQ(Saves(), 2u);
  ExpectEmptyResult();
}

TEST_F(Orders, ASecondRefusalOfAnotherKindIsShownAsItIs) {
  OnSave(Refusal(400, kPending));
  OnSave(Refusal(400, R"({"message":"no"})"));
  EXPECT_FALSE(Buy());
  EXPECT_EQ(error, L"no");
  OnSave(Refusal(400, kPending));
  OnSave(Ok("{}"));
  EXPECT_FALSE(Buy());
  EXPECT_EQ(error, L"下单失败，未返回订单号");
}

}  // namespace
}  // namespace vpn
