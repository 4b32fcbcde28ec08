#include "client/text/amounts.h"

#include <gtest/gtest.h>

namespace vpn {
namespace {

TEST(GroupedNumber, HasABlankBeforeEachThreeDigits) {
  EXPECT_EQ(GroupedNumber(0), L"0");
  EXPECT_EQ(GroupedNumber(999), L"999");
  EXPECT_EQ(GroupedNumber(5004), L"5 004");
  EXPECT_EQ(GroupedNumber(1234567), L"1 234 567");
}

TEST(SecondsText, RoundsToWhatTheSizeDeserves) {
  EXPECT_EQ(SecondsText(0), L"0.00 s");
  EXPECT_EQ(SecondsText(612), L"0.61 s");
  EXPECT_EQ(SecondsText(9994), L"9.99 s");
  EXPECT_EQ(SecondsText(12340), L"12.3 s");
  EXPECT_EQ(SecondsText(59940), L"59.9 s");
  EXPECT_EQ(SecondsText(59960), L"1 min 0 s");
  EXPECT_EQ(SecondsText(125000), L"2 min 5 s");
}

TEST(DurationText, NamesTheTwoLargestUnits) {
  EXPECT_EQ(DurationText(0), L"0 s");
  EXPECT_EQ(DurationText(59), L"59 s");
  EXPECT_EQ(DurationText(60), L"1 min");
  EXPECT_EQ(DurationText(8040), L"2 h 14 min");
  EXPECT_EQ(DurationText(86399), L"23 h 59 min");
  EXPECT_EQ(DurationText(273600), L"3 d 4 h");
}

TEST(CountText, ChoosesTheWord) {
  EXPECT_EQ(CountText(1, L"problem", L"problems"), L"1 problem");
  EXPECT_EQ(CountText(0, L"problem", L"problems"), L"0 problems");
}

TEST(MillisecondsText, GroupsItsNumber) {
  EXPECT_EQ(MillisecondsText(5004), L"5 004 ms");
}

TEST(Amounts, Money) {
  EXPECT_EQ(MoneyText(0), L"¥0.00");
  EXPECT_EQ(MoneyText(5), L"¥0.05");
  EXPECT_EQ(MoneyText(1250), L"¥12.50");
  EXPECT_EQ(MoneyText(-1250), L"-¥12.50");
  EXPECT_EQ(MoneyText(INT64_MIN), L"-¥92233720368547758.08");
}

TEST(Amounts, Gigabytes) {
  EXPECT_EQ(GigabytesText(0), L"0.0 GB");
  EXPECT_EQ(GigabytesText(-1), L"0.0 GB");
  EXPECT_EQ(GigabytesText(53'687'091), L"0.1 GB");
  EXPECT_EQ(GigabytesText(1'073'741'824), L"1.0 GB");
  EXPECT_EQ(GigabytesText(10'737'418'240), L"10.0 GB");
  EXPECT_EQ(GigabytesText(214'748'364'800), L"200.0 GB");
}

TEST(Amounts, ABarIsNeverLongerThanItsWidth) {
  EXPECT_EQ(BarText(0, 100, 4), L"░░░░");
  EXPECT_EQ(BarText(50, 100, 4), L"██░░");
  EXPECT_EQ(BarText(100, 100, 4), L"████");
  EXPECT_EQ(BarText(101, 100, 4), L"████");
  EXPECT_EQ(BarText(-1, 100, 4), L"░░░░");
  EXPECT_EQ(BarText(1, 0, 4), L"░░░░");
}

}  // namespace
}  // namespace vpn
