#include "tests/e2e/panel/account/account_test.h"
#include "tests/standins/text.h"

namespace e2e {
namespace {

class Plans : public AccountTest {
 protected:
  bool Fetch() {
    error.clear();
    vpn::XboardControlPlane plane = SignedIn();
    return plane.fetchPlans(plans, error);
  }

  void SetPlan(std::size_t index, const Json& fields) const {
    Json all = panel.State()["plans"];
    for (const auto& [name, value] : fields.items()) all[index].at(name) = value;
    panel.Set({{"plans", all}});
  }

  Lines Rows() const {
    Lines lines;
    for (const vpn::PlanOption& plan : plans) {
      lines.push_back(standins::ToUtf8(
          std::to_wstring(plan.planId) + L" " + plan.name + L", " + plan.period + L" " +
          plan.periodLabel + L" " + std::to_wstring(plan.days) + L" " + plan.durationLabel + L", " +
          std::to_wstring(plan.priceCents) + L" " + plan.priceText + L" " + plan.dailyPrice +
          L", " + plan.trafficText + L", " + std::to_wstring(plan.deviceLimit) + L", " + plan.tag));
    }
    return lines;
  }

  std::vector<vpn::PlanOption> plans;
};

// The fraction of a cent is the panel's: what it cuts off there is what it charges.
TEST_F(Plans, EachPeriodThatIsSoldIsARow) {
  ASSERT_TRUE(Fetch());
  ExpectLines(Rows(), {"1 体验版, month_price 月付 30 1 个月, 0 免费 , 10 GB, 1, ",
                       "2 标准版, month_price 月付 30 1 个月, 1989 ¥19.89 ¥0.66/天, 200 GB, 3, ",
                       "2 标准版, quarter_price 季付 90 3 个月, 5500 ¥55.00 ¥0.61/天, 200 GB, 3, "
                       "最受欢迎",
                       "2 标准版, year_price 年付 365 1 年, 12000 ¥120.00 ¥0.33/天, 200 GB, 3, "
                       "超值套餐",
                       "3 流量包, onetime_price 一次性 0 一次性, 9900 ¥99.00 , 500 GB, 0, "});
}

TEST_F(Plans, QuotedPricesOfOldPanelsReadAsFree) {
  panel.Set({{"family", "v2board"}, {"quotedNumbers", true}});
  ASSERT_TRUE(Fetch());
  ASSERT_EQ(plans.size(), 5U);
  // A price with a fraction is no whole number, so it stays as it was.
  EXPECT_EQ(plans[1].priceText, L"¥19.89");
  for (const std::size_t quoted : {0U, 2U, 3U, 4U}) EXPECT_EQ(plans[quoted].priceText, L"免费");
  EXPECT_EQ(plans[2].planId, 2);
}

TEST_F(Plans, HiddenPlansAreNotListed) {
  SetPlan(1, {{"show", false}});
  ASSERT_TRUE(Fetch());
  ASSERT_EQ(plans.size(), 2U);
  EXPECT_EQ(plans[1].name, L"流量包");
}

TEST_F(Plans, NothingForSale) {
  panel.Set({{"plans", Json::array()}});
  plans.resize(2);
  EXPECT_FALSE(Fetch());
  EXPECT_EQ(error, L"面板没有可购买的套餐");
  EXPECT_TRUE(plans.empty());
}

TEST_F(Plans, FailedRequestLeavesTheListAlone) {
  panel.Answer("/api/v1/user/plan/fetch", 500);
  plans.resize(2);
  EXPECT_FALSE(Fetch());
  EXPECT_EQ(error, L"面板 HTTP 500");
  EXPECT_EQ(plans.size(), 2U);
}

TEST_F(Plans, SignedOut) {
  vpn::XboardControlPlane plane = Restart();
  EXPECT_FALSE(plane.fetchPlans(plans, error));
  EXPECT_EQ(error, L"请先登录");
  EXPECT_TRUE(panel.Requests().empty());
}

// The text in front of the prices decides how far a plan's object seems to reach.
TEST_F(Plans, StrayClosingBraceHidesItsPlan) {
  SetPlan(0, {{"content", "不含 } 流量"}});
  ASSERT_TRUE(Fetch());
  EXPECT_EQ(plans.size(), 4U);
  EXPECT_EQ(plans[0].planId, 2);
}

TEST_F(Plans, StrayOpeningBraceHidesItsPlanAndThoseBehind) {
  SetPlan(1, {{"content", "见 { 说明"}});
  ASSERT_TRUE(Fetch());
  ASSERT_EQ(plans.size(), 1U);
  EXPECT_EQ(plans[0].name, L"体验版");
}

TEST_F(Plans, StrayClosingBracketCutsTheListThere) {
  SetPlan(0, {{"content", "见附注 1]"}});
  EXPECT_FALSE(Fetch());
  EXPECT_EQ(error, L"面板没有可购买的套餐");
}

// The two halves of such a character are decoded each by itself; what is left of them is the
// platform's affair, the rest of the name is whole.
TEST_F(Plans, EmojiInANameIsLostAlone) {
  SetPlan(1, {{"name", "\U0001F680 标准版"}});
  ASSERT_TRUE(Fetch());
  const std::wstring name = plans.at(1).name;
  ASSERT_GT(name.size(), 4U);
  EXPECT_EQ(name.substr(name.size() - 4), L" 标准版");
  EXPECT_EQ(name.find_first_not_of(L'\uFFFD'), name.size() - 4);
}

}  // namespace
}  // namespace e2e
