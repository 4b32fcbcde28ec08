// Plans, purchases and orders.
#include "tests/unit/client/panel_account_test.h"

#include <windows.h>

namespace vpn {
namespace {

constexpr char kOrders[] = "/api/v1/user/order/fetch";
constexpr char kCheck[] = "/api/v1/user/order/check?trade_no=2026001";

class ShopTest : public unit::PanelAccountTest {
 protected:
  ShopTest() {
    Get("/api/v1/user/plan/fetch", {.body = unit::kPlans});
    Get(kOrders, {.body = R"({"data":[]})"});
    Get(std::string(kOrders) + "?status=0", {.body = R"({"data":[]})"});
    Get("/api/v1/user/order/getPaymentMethod", {.body = R"({"data":[{"id":7}]})"});
    Post("/api/v1/user/order/save", {.body = R"({"data":"2026001"})"});
    Post("/api/v1/user/order/cancel", {.body = R"({"data":true})"});
    Post("/api/v1/user/order/checkout",
         {.body = R"({"type":1,"data":"https:\/\/pay.example\/submit?pid=7&n=1"})"});
  }
  void OneOrderIsOpen() {
    Get(kOrders,
        {.body =
             R"({"data":[{"trade_no":"2025777","period":"year_price","total_amount":12000,"status":0,"plan":{"id":2,"name":"标准版"}},{"trade_no":"2024111","status":3}]})"});
  }
  bool WasOrdered() const {
    for (const std::string& line : machine.http.Lines()) {
      if (line == "POST https://panel.example/api/v1/user/order/save") {
        return true;
      }
    }
    return false;
  }
};

TEST_F(ShopTest, PlansAreATableWithTagsAndPrices) {
  EXPECT_EQ(Run({L"plans"}), 0);
  EXPECT_EQ(
      Out(),
      "Plan   Name     Period          Length    Price    Per day   Traffic   Devices\n"
      "   1   体验版   month_price     1 个月     免费                10 GB         1\n"
      "   2   标准版   month_price     1 个月   ¥19.90   ¥0.66/天    200 GB         3   最受欢迎\n"
      "   2   标准版   quarter_price   3 个月   ¥55.00   ¥0.61/天    200 GB         3   超值套餐\n"
      "   3   流量包   onetime_price   一次性   ¥99.00               500 GB         –\n");
}

TEST_F(ShopTest, APurchaseByAScript) {
  EXPECT_EQ(Run({L"buy", L"2", L"month_price", L"--yes"}), 0);
  EXPECT_EQ(Err(), "标准版, 1 个月 (month_price): ¥19.90\n");
  EXPECT_EQ(Out(),
            "Order    2026001\n"
            "Pay at   https://pay.example/submit?pid=7&n=1\n"
            "已打开支付页面\n"
            "  What to do: pay on the page; this is no error.\n"
            "  Then: tavrinctl order 2026001 --wait\n");
}

TEST_F(ShopTest, APlanByNameAndAPeriodByItsShortName) {
  EXPECT_EQ(Run({L"buy", L"标准版", L"quarter", L"--yes"}), 0);
  EXPECT_EQ(Run({L"buy", L"2", L"季付", L"--yes"}), 0);
  EXPECT_EQ(Err(),
            "标准版, 3 个月 (quarter_price): ¥55.00\n标准版, 3 个月 (quarter_price): ¥55.00\n");
}

TEST_F(ShopTest, AsJson) {
  OneOrderIsOpen();
  EXPECT_EQ(Run({L"buy", L"2", L"month_price", L"--yes", L"--json"}), 0);
  EXPECT_EQ(Out(), R"({
  "schema": 1,
  "ok": true,
  "plan": {
    "plan": 2,
    "name": "标准版",
    "period": "month_price",
    "periodLabel": "月付",
    "duration": "1 个月",
    "days": 30,
    "price": "¥19.90",
    "priceCents": 1990,
    "dailyPrice": "¥0.66/天",
    "traffic": "200 GB",
    "deviceLimit": 3,
    "tag": "最受欢迎"
  },
  "cancelled": [
    "2025777"
  ],
  "activated": false,
  "tradeNo": "2026001",
  "payUrl": "https://pay.example/submit?pid=7&n=1",
  "message": "已打开支付页面"
}
)");
}

TEST_F(ShopTest, OpenOrdersAreShownBeforeTheQuestion) {
  UseTerminal();
  OneOrderIsOpen();
  Type({L"n"});
  EXPECT_EQ(Run({L"buy", L"2", L"month_price"}), 1);
  EXPECT_EQ(machine.console.terminal.Lines(),
            (std::vector<std::string>{
                "标准版, 1 个月 (month_price): ¥19.90",
                "This cancels the open order 2025777 (标准版, year_price, ¥120.00).",
                "Buy it? [y/N] n", "Nothing is bought.", ""}));
  EXPECT_FALSE(WasOrdered());
}

TEST_F(ShopTest, AYesBuys) {
  for (const wchar_t* yes : {L"y", L"Y", L"yes"}) {
    Type({yes});
    EXPECT_EQ(Run({L"buy", L"2", L"month_price"}), 0);
  }
  EXPECT_TRUE(WasOrdered());
}

TEST_F(ShopTest, WithoutAConsoleAndWithoutAYesNothingIsBought) {
  EXPECT_EQ(Run({L"buy", L"2", L"month_price"}), 3);
  EXPECT_EQ(Err(),
            "标准版, 1 个月 (month_price): ¥19.90\n"
            "tavrinctl: there is no console to ask on; buy without a question with --yes\n");
  EXPECT_FALSE(WasOrdered());
}

TEST_F(ShopTest, CtrlCAtTheQuestionBuysNothing) {
  Type({L"\x03"});
  EXPECT_EQ(Run({L"buy", L"2", L"month_price"}), 130);
  EXPECT_FALSE(WasOrdered());
}

TEST_F(ShopTest, OrdersThatThePanelDoesNotTellAreMentioned) {
  Get(kOrders, {.status = 500});
  EXPECT_EQ(Run({L"buy", L"2", L"month_price", L"--yes"}), 0);
  EXPECT_EQ(Err(),
            "标准版, 1 个月 (month_price): ¥19.90\n"
            "The panel does not tell which orders are open; this cancels them.\n");
}

TEST_F(ShopTest, WhatIsNotForSale) {
  EXPECT_EQ(Run({L"buy", L"2", L"year_price", L"--yes"}), 1);
  EXPECT_EQ(Run({L"buy", L"9", L"month_price", L"--yes"}), 1);
  EXPECT_EQ(Err(),
            "There is no plan 2 with the period year_price\n"
            "  What to do: choose a plan and a period that tavrinctl plans shows.\n"
            "There is no plan 9 with the period month_price\n"
            "  What to do: choose a plan and a period that tavrinctl plans shows.\n");
  EXPECT_FALSE(WasOrdered());
}

TEST_F(ShopTest, NothingToPay) {
  Post("/api/v1/user/order/checkout", {.body = R"({"type":-1,"data":true})"});
  EXPECT_EQ(Run({L"buy", L"1", L"month_price", L"--yes"}), 0);
  EXPECT_EQ(Out(), "Order    2026001\n套餐已开通\n");
}

TEST_F(ShopTest, NoAddressToPayAt) {
  Post("/api/v1/user/order/checkout", {.body = R"({"type":2,"data":true})"});
  EXPECT_EQ(Run({L"buy", L"2", L"month_price", L"--yes"}), 0);
  EXPECT_EQ(Out(),
            "Order    2026001\n"
            "请到面板完成支付\n"
            "  What to do: look at the order's state on the panel first; if it is open, pay "
            "there.\n"
            "  Then: tavrinctl order 2026001 --wait\n");
}

TEST_F(ShopTest, APurchaseThatThePanelRefuses) {
  Post("/api/v1/user/order/save",
       {.status = 422,
        .body = R"({"message":"The given data was invalid.","errors":{"period":["周期有误"]}})"});
  EXPECT_EQ(Run({L"buy", L"2", L"month_price", L"--yes", L"--json"}), 1);
  EXPECT_EQ(Out(),
            "{\n  \"schema\": 1,\n  \"ok\": false,\n"
            "  \"error\": \"The given data was invalid.\"\n}\n");
}

TEST_F(ShopTest, AnOrdersState) {
  Get(kCheck, {.body = R"({"data":0})"});
  EXPECT_EQ(Run({L"order", L"2026001"}), 1);
  Get(kCheck, {.body = R"({"data":3})"});
  EXPECT_EQ(Run({L"order", L"2026001"}), 0);
  Get(kCheck, {.body = R"({"data":2})"});
  EXPECT_EQ(Run({L"order", L"2026001"}), 1);
  EXPECT_EQ(Out(), "The order is not paid yet.\nThe order is paid.\nThe order is cancelled.\n");
  EXPECT_EQ(Err(), "");
}

TEST_F(ShopTest, AnOrdersStateAsJson) {
  Get(kCheck, {.body = R"({"data":1})"});
  EXPECT_EQ(Run({L"order", L"2026001", L"--json"}), 0);
  EXPECT_EQ(Out(),
            "{\n  \"schema\": 1,\n  \"ok\": true,\n  \"tradeNo\": \"2026001\",\n"
            "  \"paid\": true,\n  \"cancelled\": false\n}\n");
}

TEST_F(ShopTest, AnEmptyNumberIsNotAsked) {
  EXPECT_EQ(Run({L"order", L""}), 1);
  EXPECT_EQ(Err(), "请先登录\n  What to do: sign in.\n");
  EXPECT_TRUE(machine.http.Requests().empty());
}

TEST_F(ShopTest, AWaitEndsWithThePayment) {
  Get(kCheck, {.body = R"({"data":0})"});
  machine.clock.After(60'000, [&] { Get(kCheck, {.body = R"({"data":3})"}); });
  EXPECT_EQ(Run({L"order", L"2026001", L"--wait"}), 0);
  EXPECT_EQ(Out(), "The order is paid.\n");
  EXPECT_EQ(Err(), "Not paid yet; waiting for 15 minutes at most.\n");
}

TEST_F(ShopTest, TheWaitCountsDownOnAConsole) {
  UseTerminal();
  Get(kCheck, {.body = R"({"data":0})"});
  std::vector<std::string> during;
  machine.clock.After(10'050, [&] { during = machine.console.terminal.Lines(); });
  machine.clock.After(60'000, [&] { Get(kCheck, {.body = R"({"data":3})"}); });
  EXPECT_EQ(Run({L"order", L"2026001", L"--wait"}), 0);
  ASSERT_EQ(during.size(), 1u);
  EXPECT_EQ(during[0].substr(3), " Not paid yet; waiting for another 14 min 50 s …");
  EXPECT_EQ(machine.console.terminal.Lines().at(0), "The order is paid.");
}

TEST_F(ShopTest, AWaitBearsAPanelThatFailsForAMoment) {
  Get(kCheck, {.body = R"({"data":0})"});
  machine.clock.After(5000, [&] { Get(kCheck, {.status = 502}); });
  machine.clock.After(11'000, [&] { Get(kCheck, {.body = R"({"data":3})"}); });
  EXPECT_EQ(Run({L"order", L"2026001", L"--wait"}), 0);
  EXPECT_EQ(Out(), "The order is paid.\n");
}

TEST_F(ShopTest, AWaitEndsWithAPanelThatKeepsFailing) {
  Get(kCheck, {.body = R"({"data":0})"});
  machine.clock.After(5000, [&] { Get(kCheck, {.status = 502}); });
  const std::uint64_t start = machine.clock.Now();
  EXPECT_EQ(Run({L"order", L"2026001", L"--wait"}), 1);
  EXPECT_EQ(machine.clock.Now() - start, 12'000u);
  EXPECT_TRUE(Err().starts_with("Not paid yet; waiting for 15 minutes at most.\n面板 HTTP 502\n"));
}

TEST_F(ShopTest, AWaitEndsWithTheTime) {
  Get(kCheck, {.body = R"({"data":0})"});
  const std::uint64_t start = machine.clock.Now();
  EXPECT_EQ(Run({L"order", L"2026001", L"--wait"}), 1);
  EXPECT_EQ(Out(), "The order is not paid yet.\n");
  EXPECT_EQ(machine.clock.Now() - start, 900'000u);
}

TEST_F(ShopTest, AWaitEndsWithACancelledOrder) {
  Get(kCheck, {.body = R"({"data":0})"});
  machine.clock.After(5000, [&] { Get(kCheck, {.body = R"({"data":2})"}); });
  EXPECT_EQ(Run({L"order", L"2026001", L"--wait"}), 1);
  EXPECT_EQ(Out(), "The order is cancelled.\n");
}

TEST_F(ShopTest, CtrlCEndsAWait) {
  Get(kCheck, {.body = R"({"data":0})"});
  machine.clock.After(5000, [&] { machine.console.Send(CTRL_C_EVENT); });
  EXPECT_EQ(Run({L"order", L"2026001", L"--wait"}), 130);
  EXPECT_EQ(Out(), "");
}

}  // namespace
}  // namespace vpn
