// The price table of one panel.
#include <string>
#include <vector>

#include "tests/unit/account/xboard_test.h"

namespace vpn {
namespace {

class Plans : public XboardTest {
 protected:
  bool Fetch(const std::string& body) {
    OnGet("user/plan/fetch", body);
    return panel().fetchPlans(plans, error);
  }
  // `id:period:tag` of each row.
  std::vector<std::wstring> Rows() const {
    std::vector<std::wstring> rows;
    for (const PlanOption& option : plans) {
      rows.push_back(std::to_wstring(option.planId) + L":" + option.period + L":" + option.tag);
    }
    return rows;
  }
  using Lines = std::vector<std::wstring>;

  std::vector<PlanOption> plans = std::vector<PlanOption>(3);
};

TEST_F(Plans, StandInTheOrderOfThePanelAndOfThePeriods) {
  EXPECT_TRUE(Fetch(R"({"data":[{"id":2,"year_price":12000,"month_price":2000},)"
                    R"({"id":1,"month_price":1000,"onetime_price":500}]})"));
  EXPECT_EQ(Rows(), (Lines{L"2:month_price:", L"2:year_price:超值套餐", L"1:month_price:最受欢迎",
                           L"1:onetime_price:"}));
  EXPECT_EQ(Sent(), Texts{SignedGet("user/plan/fetch")});
  EXPECT_EQ(error, L"");
}

TEST_F(Plans, SignedOutNothingIsAskedAndTheListStays) {
  SignOut();
  EXPECT_FALSE(panel().fetchPlans(plans, error));
  EXPECT_EQ(error, L"请先登录");
  EXPECT_EQ(plans.size(), 3u);
  EXPECT_EQ(machine.http.Lines(), Texts());
}

TEST_F(Plans, AFailedRequestLeavesTheListAndTellsTheTransportsText) {
  OnGet("user/plan/fetch", Refusal(403, R"({"message":"no"})"));
  EXPECT_FALSE(panel().fetchPlans(plans, error));
  EXPECT_EQ(error, L"面板 HTTP 403");
  EXPECT_EQ(plans.size(), 3u);
  OnGet("user/plan/fetch", Unreachable(12002));
  EXPECT_FALSE(panel().fetchPlans(plans, error));
  EXPECT_EQ(error, L"连接面板超时。请检查网络，或稍后再试。");
  EXPECT_EQ(plans.size(), 3u);
}

TEST_F(Plans, NoRowIsAFailureWithAnEmptyList) {
  for (const char* body :
       {R"({"data":[]})", "", "<html></html>", R"({"data":[{"id":0,"month_price":1}]})",
        R"({"data":[{"id":1,"month_price":null}]})"}) {
    plans.resize(2);
    EXPECT_FALSE(Fetch(body));
    EXPECT_EQ(error, L"面板没有可购买的套餐");
    EXPECT_TRUE(plans.empty());
  }
}

TEST_F(Plans, AllFreeOrOneTimeIsFineWithoutTags) {
  EXPECT_TRUE(Fetch(R"({"data":[{"id":1,"month_price":0},{"id":2,"onetime_price":100}]})"));
  EXPECT_EQ(Rows(), (Lines{L"1:month_price:", L"2:onetime_price:"}));
}

TEST_F(Plans, TwoPlansOfOnePriceAreTaggedInThePanelsOrder) {
  EXPECT_TRUE(Fetch(R"({"data":[{"id":5,"month_price":100},{"id":4,"month_price":100}]})"));
  EXPECT_EQ(Rows(), (Lines{L"5:month_price:超值套餐", L"4:month_price:最受欢迎"}));
}

TEST_F(Plans, APanelsOrdinaryReplyIsRead) {
  EXPECT_TRUE(Fetch(
      R"({"status":"success","message":"\u64cd\u4f5c\u6210\u529f","data":[{"id":1,"group_id":1,)"
      R"("name":"\u57fa\u7840\u7248","tags":null,"content":"[{\"feature\":\"\\u4e0d\\u9650\"}]",)"
      R"("month_price":1990,"quarter_price":null,"half_year_price":null,"year_price":19900,)"
      R"("two_year_price":null,"three_year_price":null,"onetime_price":null,"reset_price":500,)"
      R"("capacity_limit":null,"transfer_enable":100,"speed_limit":null,"device_limit":3,)"
      R"("show":true,"sell":true,"renew":true,"created_at":1700000000}],"error":null})"));
  ASSERT_EQ(plans.size(), 2u);
  EXPECT_EQ(Rows(), (Lines{L"1:month_price:最受欢迎", L"1:year_price:超值套餐"}));
  EXPECT_EQ(plans[1].name, L"基础版");
  EXPECT_EQ(plans[1].priceText, L"¥199.00");
  EXPECT_EQ(plans[1].dailyPrice, L"¥0.55/天");
  EXPECT_EQ(plans[1].trafficText, L"100 GB");
  EXPECT_EQ(plans[1].deviceLimit, 3);
}

// The list is cut by counting braces and brackets, in texts like everywhere.
TEST_F(Plans, StrayBracesAndBracketsInAPlansTextCostPlans) {
  const auto list = [](const std::string& content) {
    return R"({"data":[{"id":1,"month_price":1},{"id":2,"content":")" + content +
           R"(","month_price":2},{"id":3,"month_price":3}]})";
  };
  EXPECT_TRUE(Fetch(list("a}b")));
  EXPECT_EQ(Rows(), (Lines{L"1:month_price:超值套餐", L"3:month_price:最受欢迎"}));
  EXPECT_TRUE(Fetch(list("a{b")));
  EXPECT_EQ(Rows(), Lines{L"1:month_price:超值套餐"});
  EXPECT_TRUE(Fetch(list("a]b")));
  EXPECT_EQ(Rows(), Lines{L"1:month_price:超值套餐"});
  EXPECT_TRUE(Fetch(list("a[b")));
  EXPECT_EQ(Rows().size(), 3u);
  EXPECT_TRUE(Fetch(list("a{b}[c]")));
  EXPECT_EQ(Rows().size(), 3u);
}

TEST_F(Plans, AStrayBracketInTheFirstPlansTextLeavesNone) {
  EXPECT_FALSE(Fetch(R"({"data":[{"id":2,"content":"]","month_price":2}]})"));
  EXPECT_EQ(error, L"面板没有可购买的套餐");
}

TEST_F(Plans, ThePeriodOfARowReachesThePanelUnchanged) {
  EXPECT_TRUE(Fetch(R"({"data":[{"id":2,"half_year_price":100}]})"));
  machine.http.Forget();
  PurchaseResult result;
  OnPost("user/order/save", Refusal(500));
  EXPECT_FALSE(panel().purchasePlan(plans[0].planId, plans[0].period, result, error));
  EXPECT_EQ(machine.http.Requests().back().body, R"({"plan_id":2,"period":"half_year_price"})");
}

}  // namespace
}  // namespace vpn
