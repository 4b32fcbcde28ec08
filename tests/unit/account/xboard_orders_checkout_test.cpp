// The check-out of a placed order, and whether an order is paid.
#include <string>
#include <utility>

#include "tests/unit/account/xboard_order_test.h"

namespace vpn {
namespace {

constexpr char kMethod[] = R"({"data":[{"id":3}]})";
constexpr wchar_t kSetup[] =
    L"面板还没配置支付方式。请到后台「支付方式」添加通道，通知地址用 https://api.panel.example";

class CheckOut : public OrderTest {
 protected:
  void SetUp() override {
    OrderTest::SetUp();
    machine.http.On("POST", kApi + "user/order/save", Ok(R"({"data":"n"})"));
  }
  // Fails with this text; the order is cancelled and its number stays in the result.
  void ExpectFailure(const std::wstring& text) {
    EXPECT_FALSE(Buy());
    EXPECT_EQ(error, text);
    EXPECT_EQ(Cancelled(), Texts{R"({"trade_no":"n"})"});
    EXPECT_FALSE(result.activated);
    EXPECT_EQ(result.tradeNo, L"n");
    EXPECT_EQ(result.payUrl + result.message, L"");
  }
  std::string CheckOutBody() { return Bodies("user/order/checkout").at(0); }
};

TEST_F(CheckOut, AFreePlanTakesEffectAtOnceWithAndWithoutMethods) {
  for (const char* methods : {R"({"data":[]})", kMethod}) {
    SCOPED_TRACE(methods);
    machine.http.Forget();
    OnMethods(methods);
    OnCheckOut(Ok(R"({"type":-1,"data":true})"));
    EXPECT_TRUE(Buy());
    EXPECT_TRUE(result.activated);
    EXPECT_EQ(result.tradeNo, L"n");
    EXPECT_EQ(result.payUrl, L"");
    EXPECT_EQ(result.message, L"套餐已开通");
    EXPECT_EQ(Cancelled(), Texts());
  }
}

TEST_F(CheckOut, TheTypeMayStandInTheData) {
  OnMethods(R"({"data":[]})");
  OnCheckOut(Ok(R"({"data":{"type":-1}})"));
  EXPECT_TRUE(Buy());
  EXPECT_TRUE(result.activated);
}

TEST_F(CheckOut, TheFirstMethodOfTheListIsTaken) {
  OnMethods(R"({"data":[{"id":5,"name":"a"},{"id":4}]})");
  OnCheckOut(Ok(R"({"type":1,"data":"u"})"));
  EXPECT_TRUE(Buy());
  EXPECT_EQ(CheckOutBody(), R"({"trade_no":"n","method":5})");
}

TEST_F(CheckOut, WithoutAKnownMethodNoneIsSent) {
  const sim::HttpAnswer lists[] = {Ok(R"({"data":[]})"),
                                   Ok("<html></html>"),
                                   Refusal(500, kMethod),
                                   Unreachable(12002),
                                   Ok(R"({"data":[{"id":0},{"id":4}]})"),
                                   Ok(R"({"data":[{"id":-4}]})"),
                                   Ok(R"({"data":[{"name":"x"}]})")};
  for (const sim::HttpAnswer& list : lists) {
    machine.http.Forget();
    OnGet("user/order/getPaymentMethod", list);
    OnCheckOut(Ok(R"({"type":-1})"));
    EXPECT_TRUE(Buy());
    EXPECT_EQ(CheckOutBody(), R"({"trade_no":"n"})");
  }
}

TEST_F(CheckOut, TheAddressBesideTheTypeComesBeforeOneBelowIt) {
  OnMethods(R"({"data":[{"id":3}]})");
  OnCheckOut(Ok(R"({"type":1,"data":"u","more":{"data":"no"}})"));
  EXPECT_TRUE(Buy());
  EXPECT_EQ(result.payUrl, L"u");
}

TEST_F(CheckOut, TheFirstMethodIdIs1) {
  OnMethods(R"({"data":[{"id":1}]})");
  OnCheckOut(Ok(R"({"type":1,"data":"u"})"));
  EXPECT_TRUE(Buy());
  EXPECT_EQ(CheckOutBody(), R"({"trade_no":"n","method":1})");
}

TEST_F(CheckOut, AMethodIdIsNotCutTo32Bits) {
  OnMethods(R"({"data":[{"id":4294967296}]})");
  OnCheckOut(Ok(R"({"type":1,"data":"u"})"));
  EXPECT_TRUE(Buy());
  EXPECT_EQ(CheckOutBody(), R"({"trade_no":"n","method":4294967296})");
}

TEST_F(CheckOut, AnOrderNumberIsEscaped) {
  OnSave(Ok(R"({"data":"a\"\\b"})"));
  EXPECT_FALSE(Buy());
  EXPECT_EQ(CheckOutBody(), R"({"trade_no":"a\"\\b"})");
  EXPECT_EQ(Cancelled(), Texts{R"({"trade_no":"a\"\\b"})"});
  EXPECT_EQ(result.tradeNo, L"a\"\\b");
}

TEST_F(CheckOut, WithoutAMethodAnAcceptedOrderIsThrownAway) {
  for (const char* answer :
       {R"({"type":1,"data":"https:\/\/pay.example"})", R"({"type":0,"data":"q"})",
        R"({"data":"u"})", "{}", R"({"type":-2})"}) {
    machine.http.Forget();
    OnMethods(R"({"data":[]})");
    OnCheckOut(Ok(answer));
    error.clear();
    ExpectFailure(kSetup);
  }
}

TEST_F(CheckOut, ARefusalShowsThePanelsMessageAndCancelsTheOrder) {
  OnMethods(kMethod);
  OnCheckOut(Refusal(400, R"({"message":"\u652f\u4ed8\u65b9\u5f0f\u4e0d\u53ef\u7528"})"));
  ExpectFailure(L"支付方式不可用");
}

TEST_F(CheckOut, WithoutAMessageTheTransportsTextIsShown) {
  OnMethods(kMethod);
  OnCheckOut(Unreachable(12152));
  error = L"earlier";
  ExpectFailure(L"面板返回了无法识别的内容。");
}

TEST_F(CheckOut, ARefusalForTheLackOfAMethodIsToldThePanelsOperator) {
  const std::pair<const char*, const char*> rows[] = {{R"({"data":[]})", "支付方式不可用"},
                                                      {kMethod, "Payment method is not there"},
                                                      {kMethod, "The way is not available"}};
  for (const auto& [methods, message] : rows) {
    SCOPED_TRACE(message);
    machine.http.Forget();
    OnMethods(methods);
    OnCheckOut(Refusal(400, R"({"message":")" + std::string(message) + "\"}"));
    ExpectFailure(kSetup);
  }
}

TEST_F(CheckOut, OtherSpellingsOfThatAreShownAsTheyAre) {
  OnMethods(kMethod);
  OnCheckOut(Refusal(400, R"({"message":"payment method Not Available"})"));
  ExpectFailure(L"payment method Not Available");
}

TEST_F(CheckOut, WithAMethodThePayPageIsHandedOn) {
  const std::pair<const char*, const wchar_t*> rows[] = {
      {R"({"type":1,"data":"https:\/\/pay.example\/p?a=1"})", L"https://pay.example/p?a=1"},
      {R"({"type":0,"data":"weixin:\/\/wxpay\/x"})", L"weixin://wxpay/x"},
      {R"({"type":-2,"data":"u"})", L"u"},
      {R"({"data":"u"})", L"u"},
      {R"({"data":{"type":1,"data":"u"}})", L"u"}};
  for (const auto& [answer, url] : rows) {
    SCOPED_TRACE(answer);
    machine.http.Forget();
    OnMethods(kMethod);
    OnCheckOut(Ok(answer));
    EXPECT_TRUE(Buy());
    EXPECT_FALSE(result.activated);
    EXPECT_EQ(result.payUrl, url);
    EXPECT_EQ(result.message, L"已打开支付页面");
    EXPECT_EQ(Cancelled(), Texts());
  }
}

TEST_F(CheckOut, WithoutAPayPageTheUserIsSentToThePanel) {
  for (const char* answer : {R"({"type":1,"data":""})", R"({"type":2,"data":true})", "{}"}) {
    machine.http.Forget();
    OnMethods(kMethod);
    OnCheckOut(Ok(answer));
    EXPECT_TRUE(Buy());
    EXPECT_EQ(result.tradeNo, L"n");
    EXPECT_EQ(result.payUrl, L"");
    EXPECT_EQ(result.message, L"请到面板完成支付");
  }
}

class OrderState : public XboardTest {
 protected:
  // `paid` starts with the opposite of what is expected.
  void ExpectState(const std::string& body, bool expected) {
    OnGet("user/order/check?trade_no=n", body);
    bool paid = !expected;
    EXPECT_TRUE(panel().checkOrderPaid(L"n", paid, error)) << body;
    EXPECT_EQ(paid, expected) << body;
  }
};

TEST_F(OrderState, IsAskedForWithTheCredential) {
  ExpectState(R"({"data":3})", true);
  EXPECT_EQ(Sent(), Texts{SignedGet("user/order/check?trade_no=n")});
  EXPECT_EQ(error, L"");
}

TEST_F(OrderState, Only1And3ArePaid) {
  for (const int state : {1, 3}) {
    ExpectState(R"({"data":)" + std::to_string(state) + "}", true);
  }
  for (const int state : {0, 2, 4, -1, 13, 31}) {
    ExpectState(R"({"data":)" + std::to_string(state) + "}", false);
  }
}

TEST_F(OrderState, MayStandInAnObject) {
  ExpectState(R"({"data":{"data":3}})", true);
  ExpectState(R"({"data":{"data":2}})", false);
}

TEST_F(OrderState, InQuotesIsUnderstood) {
  ExpectState(R"({"data":"1"})", true);
}

TEST_F(OrderState, OfAnythingElseIsNotPaid) {
  for (const char* body : {"", "{}", "<html></html>", R"({"data":null})", R"({"data":true})",
                           R"({"data":{"status":1}})"}) {
    ExpectState(body, false);
  }
}

// The object that stands behind the state is taken for the data, and the state is looked for again.
TEST_F(OrderState, IsAlsoFoundInFrontOfAnObject) {
  ExpectState(R"({"data":3,"meta":{"page":1}})", true);
  ExpectState(R"({"data":2,"meta":{"page":1}})", false);
}

TEST_F(OrderState, TheNumberIsPercentEncoded) {
  bool paid = true;
  EXPECT_FALSE(panel().checkOrderPaid(L"a b&中/@", paid, error));
  EXPECT_EQ(Paths(), Texts{"GET user/order/check?trade_no=a%20b%26%E4%B8%AD%2F@"});
}

TEST_F(OrderState, SignedOutOrWithoutANumberNothingIsAsked) {
  bool paid = true;
  EXPECT_FALSE(panel().checkOrderPaid(L"", paid, error));
  EXPECT_EQ(error, L"请先登录");
  EXPECT_FALSE(paid);
  SignOut();
  error.clear();
  paid = true;
  EXPECT_FALSE(panel().checkOrderPaid(L"n", paid, error));
  EXPECT_EQ(error, L"请先登录");
  EXPECT_FALSE(paid);
  EXPECT_EQ(machine.http.Lines(), Texts());
}

TEST_F(OrderState, AFailedRequestTellsTheTransportsTextAndNotPaid) {
  OnGet("user/order/check?trade_no=n", Refusal(403, R"({"message":"no","data":1})"));
  bool paid = true;
  EXPECT_FALSE(panel().checkOrderPaid(L"n", paid, error));
  EXPECT_EQ(error, L"面板 HTTP 403");
  EXPECT_FALSE(paid);
}

}  // namespace
}  // namespace vpn
