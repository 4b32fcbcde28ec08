// The rows of the price table.
#include "src/account/plan_options.h"

#include <string>
#include <vector>

#include "tests/sim/fixture.h"

namespace vpn {
namespace {

class PlanRows : public sim::MachineTest {
 protected:
  static std::vector<PlanOption> Of(const std::string& fields) {
    std::vector<PlanOption> plans;
    AddPlan(R"({"id":1,)" + fields + "}", plans);
    return plans;
  }
  static PlanOption One(const std::string& fields) {
    const std::vector<PlanOption> plans = Of(fields);
    EXPECT_EQ(plans.size(), 1u) << fields;
    return plans.empty() ? PlanOption() : plans[0];
  }
};

TEST_F(PlanRows, EachOfTheSevenPeriodsGivesARowInTheOrderOfTheTable) {
  struct Row {
    const wchar_t* period;
    const wchar_t* label;
    int days;
    const wchar_t* duration;
    const wchar_t* price;
    const wchar_t* daily;
  };
  const Row rows[] = {
      {L"month_price", L"月付", 30, L"1 个月", L"¥10.00", L"¥0.33/天"},
      {L"quarter_price", L"季付", 90, L"3 个月", L"¥20.00", L"¥0.22/天"},
      {L"half_year_price", L"半年付", 180, L"6 个月", L"¥30.00", L"¥0.17/天"},
      {L"year_price", L"年付", 365, L"1 年", L"¥40.00", L"¥0.11/天"},
      {L"two_year_price", L"两年", 730, L"2 年", L"¥50.00", L"¥0.07/天"},
      {L"three_year_price", L"三年", 1095, L"3 年", L"¥60.00", L"¥0.05/天"},
      {L"onetime_price", L"一次性", 0, L"一次性", L"¥70.00", L""},
  };
  const std::vector<PlanOption> plans =
      Of(R"("onetime_price":7000,"three_year_price":6000,"two_year_price":5000,"year_price":4000,)"
         R"("half_year_price":3000,"quarter_price":2000,"month_price":1000,"name":"\u6807\u51c6",)"
         R"("transfer_enable":100,"device_limit":3)");
  ASSERT_EQ(plans.size(), 7u);
  for (size_t i = 0; i < 7; ++i) {
    SCOPED_TRACE(i);
    EXPECT_EQ(plans[i].planId, 1);
    EXPECT_EQ(plans[i].name, L"标准");
    EXPECT_EQ(plans[i].trafficText, L"100 GB");
    EXPECT_EQ(plans[i].deviceLimit, 3);
    EXPECT_EQ(plans[i].period, rows[i].period);
    EXPECT_EQ(plans[i].periodLabel, rows[i].label);
    EXPECT_EQ(plans[i].days, rows[i].days);
    EXPECT_EQ(plans[i].durationLabel, rows[i].duration);
    EXPECT_EQ(plans[i].priceText, rows[i].price);
    EXPECT_EQ(plans[i].dailyPrice, rows[i].daily);
    EXPECT_EQ(plans[i].priceCents, static_cast<std::int64_t>((i + 1) * 1000));
    EXPECT_EQ(plans[i].tag, L"");
  }
}

TEST_F(PlanRows, APriceThatIsAbsentNullOrNegativeGivesNoRow) {
  EXPECT_TRUE(Of(R"("name":"A")").empty());
  EXPECT_TRUE(Of(R"("month_price":null,"quarter_price":-1,"reset_price":100)").empty());
  EXPECT_EQ(One(R"("month_price":null,"year_price":12000)").period, L"year_price");
}

TEST_F(PlanRows, AYearFor120HasItsDailyPrice) {
  const PlanOption option = One(R"("month_price":null,"year_price":12000)");
  EXPECT_EQ(option.priceText, L"¥120.00");
  EXPECT_EQ(option.dailyPrice, L"¥0.33/天");
}

TEST_F(PlanRows, APriceOf0IsFreeWithoutADailyPrice) {
  const PlanOption option = One(R"("month_price":0)");
  EXPECT_EQ(option.priceText, L"免费");
  EXPECT_EQ(option.dailyPrice, L"");
  EXPECT_EQ(option.priceCents, 0);
  EXPECT_EQ(option.days, 30);
}

TEST_F(PlanRows, AOneTimePriceHasNoDailyPrice) {
  const PlanOption option = One(R"("onetime_price":990)");
  EXPECT_EQ(option.priceText, L"¥9.90");
  EXPECT_EQ(option.dailyPrice, L"");
  EXPECT_EQ(option.days, 0);
}

TEST_F(PlanRows, PricesHaveTwoDecimals) {
  EXPECT_EQ(One(R"("month_price":1)").priceText, L"¥0.01");
  EXPECT_EQ(One(R"("month_price":1)").dailyPrice, L"¥0.00/天");
  EXPECT_EQ(One(R"("month_price":1234567)").priceText, L"¥12345.67");
  EXPECT_EQ(One(R"("month_price":1234567)").dailyPrice, L"¥411.52/天");
}

// The panel makes cents by multiplying a binary fraction; what it charges is cut off the same way.
TEST_F(PlanRows, AFractionOfACentIsCutOff) {
  const PlanOption option = One(R"("month_price":1989.9999999999998)");
  EXPECT_EQ(option.priceText, L"¥19.89");
  EXPECT_EQ(option.priceCents, 1989);
}

TEST_F(PlanRows, APriceInQuotesReadsAs0AndIsShownAsFree) {
  EXPECT_EQ(One(R"("month_price":"1990")").priceText, L"免费");
}

TEST_F(PlanRows, ALargePriceIsShownWhole) {
  EXPECT_EQ(One(R"("month_price":9223372036854775807)").priceCents, INT64_MAX);
  EXPECT_EQ(One(R"("month_price":9223372036854775807)").priceText, L"¥92233720368547760.00");
}

TEST_F(PlanRows, TrafficIsInBytesFrom2ToThe30OnAndElseInGigabytes) {
  const std::pair<const char*, const wchar_t*> rows[] = {
      {"100", L"100 GB"},      {"107374182400", L"100 GB"}, {"1073741823", L"1073741823 GB"},
      {"1073741824", L"1 GB"}, {"1610612735", L"1 GB"},     {"1610612737", L"2 GB"},
      {"0", L"0 GB"},          {"null", L"0 GB"},           {"-5", L"-5 GB"},
      {"\"200\"", L"200 GB"}};
  for (const auto& [value, text] : rows) {
    EXPECT_EQ(One(R"("month_price":1,"transfer_enable":)" + std::string(value)).trafficText, text)
        << value;
  }
}

TEST_F(PlanRows, APlanWithoutTrafficReadsAs0) {
  EXPECT_EQ(One(R"("month_price":1)").trafficText, L"0 GB");
}

TEST_F(PlanRows, APlanWithoutAPositiveIdIsSkippedWhateverItHolds) {
  std::vector<PlanOption> plans;
  for (const char* plan :
       {R"({"id":0,"month_price":1})", R"({"id":-1,"month_price":1})", R"({"month_price":1})",
        R"({"id":null,"month_price":1})", R"({"id":4294967296,"month_price":1})"}) {
    AddPlan(plan, plans);
    EXPECT_TRUE(plans.empty()) << plan;
  }
  AddPlan(R"({"id":4294967297,"month_price":1})", plans);
  ASSERT_EQ(plans.size(), 1u);
  EXPECT_EQ(plans[0].planId, 1);
}

TEST_F(PlanRows, AreAppended) {
  std::vector<PlanOption> plans(1);
  AddPlan(R"({"id":2,"month_price":1})", plans);
  ASSERT_EQ(plans.size(), 2u);
  EXPECT_EQ(plans[1].planId, 2);
}

class Tags : public sim::MachineTest {
 protected:
  using Offers = std::vector<std::pair<int, std::int64_t>>;  // days, cents
  static std::vector<std::wstring> Of(const Offers& offers) {
    std::vector<PlanOption> plans;
    for (const auto& [days, cents] : offers) {
      PlanOption option;
      option.days = days;
      option.priceCents = cents;
      plans.push_back(option);
    }
    TagBestOffers(plans);
    std::vector<std::wstring> tags;
    for (const PlanOption& option : plans) {
      tags.push_back(option.tag);
    }
    return tags;
  }
  using Texts = std::vector<std::wstring>;
  const wchar_t* const kBest = L"超值套餐";
  const wchar_t* const kSecond = L"最受欢迎";
};

TEST_F(Tags, FallOnTheTwoLowestPricesPerDay) {
  EXPECT_EQ(Of({{30, 300}, {30, 100}, {30, 200}}), (Texts{L"", kBest, kSecond}));
  EXPECT_EQ(Of({{30, 100}, {30, 200}, {30, 300}}), (Texts{kBest, kSecond, L""}));
  EXPECT_EQ(Of({{30, 300}, {30, 200}, {30, 100}}), (Texts{L"", kSecond, kBest}));
  EXPECT_EQ(Of({{30, 200}, {30, 100}, {30, 150}}), (Texts{L"", kBest, kSecond}));
}

TEST_F(Tags, AreAQuestionOfThePricePerDayAndNotOfThePrice) {
  EXPECT_EQ(Of({{30, 1000}, {365, 2000}, {90, 1200}}), (Texts{L"", kBest, kSecond}));
}

TEST_F(Tags, AFractionOfACentPerDayDecides) {
  EXPECT_EQ(Of({{30, 119}, {30, 100}, {30, 95}}), (Texts{L"", kSecond, kBest}));
}

TEST_F(Tags, OfTwoEqualOffersTheEarlierIsAhead) {
  EXPECT_EQ(Of({{30, 100}, {30, 100}}), (Texts{kBest, kSecond}));
  EXPECT_EQ(Of({{30, 100}, {30, 100}, {30, 100}}), (Texts{kBest, kSecond, L""}));
  EXPECT_EQ(Of({{30, 100}, {60, 200}}), (Texts{kBest, kSecond}));
  EXPECT_EQ(Of({{30, 200}, {30, 100}, {30, 200}}), (Texts{kSecond, kBest, L""}));
}

TEST_F(Tags, ASingleOfferHasTheFirstAlone) {
  EXPECT_EQ(Of({{30, 100}}), Texts{kBest});
}

TEST_F(Tags, FreeAndOneTimeOffersTakeNoPart) {
  EXPECT_EQ(Of({{30, 0}, {0, 1}, {30, 100}}), (Texts{L"", L"", kBest}));
  EXPECT_EQ(Of({{30, 0}, {0, 1}}), (Texts{L"", L""}));
  EXPECT_EQ(Of({{30, -5}, {-1, 5}}), (Texts{L"", L""}));
  EXPECT_EQ(Of({}), Texts());
}

TEST_F(Tags, TheDearestPossibleOfferIsStillTheBestOfOne) {
  EXPECT_EQ(Of({{30, INT64_MAX}}), Texts{kBest});
}

}  // namespace
}  // namespace vpn
