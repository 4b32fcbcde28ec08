#include "src/common/number_text.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <random>
#include <string>
#include <utility>

namespace vpn {
namespace {

std::wstring Widened(const std::string& text) {
  return {text.begin(), text.end()};
}

std::wstring Printed(double number, size_t decimals) {
  char text[64] = {};
  (void)std::snprintf(text, sizeof(text), "%.*f", static_cast<int>(decimals), number);
  return Widened(text);
}

std::optional<std::array<int, 3>> Scanned(const std::string& text) {
  std::array<int, 3> date{};
  const int count = std::sscanf(text.c_str(), "%d-%d-%d", date.data(), &date[1], &date[2]);
  return count == 3 ? std::optional(date) : std::nullopt;
}

TEST(DecimalTextTest, DigitsWithNothingInFront) {
  EXPECT_EQ(DecimalText(0), L"0");
  EXPECT_EQ(DecimalText(1234567890), L"1234567890");
  EXPECT_EQ(DecimalText(UINT64_MAX), L"18446744073709551615");
}

TEST(DecimalTextTest, IsFilledUpToItsWidthAndNeverCut) {
  EXPECT_EQ(DecimalText(7, 2), L"07");
  EXPECT_EQ(DecimalText(2026, 4), L"2026");
  EXPECT_EQ(DecimalText(30827, 4), L"30827");
  EXPECT_EQ(DecimalText(12, 5, L' '), L"   12");
  EXPECT_EQ(DecimalText(123456, 5, L' '), L"123456");
}

TEST(FixedTextTest, DecimalsAreWrittenOut) {
  EXPECT_EQ(FixedText(19.9, 2), L"19.90");
  EXPECT_EQ(FixedText(0.05, 2), L"0.05");
  EXPECT_EQ(FixedText(0, 2), L"0.00");
  EXPECT_EQ(FixedText(100, 0), L"100");
  EXPECT_EQ(FixedText(-5, 0), L"-5");
}

TEST(FixedTextTest, TheMiddleGoesToTheEvenDigit) {
  EXPECT_EQ(FixedText(0.125, 2), L"0.12");
  EXPECT_EQ(FixedText(0.375, 2), L"0.38");
  EXPECT_EQ(FixedText(2.5, 0), L"2");
  EXPECT_EQ(FixedText(3.5, 0), L"4");
  EXPECT_EQ(FixedText(0.5, 0), L"0");
}

TEST(FixedTextTest, TheValueThatTheNumberReallyHasDecides) {
  EXPECT_EQ(FixedText(1.005, 2), L"1.00") << "1.00499999999999989...";
  EXPECT_EQ(FixedText(8.575, 2), L"8.57") << "8.57499999999999928...";
  EXPECT_EQ(FixedText(9.995, 2), L"9.99") << "9.99499999999999921...";
  EXPECT_EQ(FixedText(0.999, 2), L"1.00");
}

TEST(FixedTextTest, SmallestAndLargest) {
  EXPECT_EQ(FixedText(1e-300, 2), L"0.00");
  EXPECT_EQ(FixedText(0.004999, 2), L"0.00");
  EXPECT_EQ(FixedText(9223372036854775808.0, 0), L"9223372036854775808");
  EXPECT_EQ(FixedText(92233720368547760.0, 2), L"92233720368547760.00");
}

TEST(FixedTextTest, IsWhatPrintfWrites) {
  std::mt19937_64 random(20260101);
  for (int i = 0; i < 10000; ++i) {
    const auto cents = static_cast<double>(random() >> (1 + random() % 63));
    const double price = cents / 100;
    for (const double number : {price, price / 30, price / 365, std::ldexp(cents, -20) / 1e6}) {
      ASSERT_EQ(FixedText(number, 2), Printed(number, 2)) << number;
    }
    for (const double number : {cents, -cents, cents / 1073741824, cents / 8}) {
      ASSERT_EQ(FixedText(number, 0), Printed(number, 0)) << number;
    }
    ASSERT_EQ(FixedText(cents / 16, 1), Printed(cents / 16, 1)) << cents / 16;
  }
}

TEST(ReadDateTest, ThreeNumbersWithADashBetween) {
  const std::pair<const char*, std::array<int, 3>> cases[] = {{"2026-12-31", {2026, 12, 31}},
                                                              {"2026-1-2 03:04", {2026, 1, 2}},
                                                              {" 2026- 01-\t02x", {2026, 1, 2}},
                                                              {"+1--2-+3", {1, -2, 3}},
                                                              {"0-99-0012", {0, 99, 12}}};
  for (const auto& [text, date] : cases) {
    EXPECT_EQ(ReadDate(text), date) << text;
  }
}

TEST(ReadDateTest, AnythingElseIsNone) {
  for (const char* text : {"", "x", "2026", "2026-", "2026-12", "2026-12-", "2026-12-x",
                           "2026 -1-1", "2026/12/31", "-", "--1-1", "+ 1-2-3"}) {
    EXPECT_EQ(ReadDate(text), std::nullopt) << text;
  }
}

TEST(ReadDateTest, IsWhatSscanfReads) {
  constexpr char kBytes[] = "0123456789-- +\tx";
  std::mt19937 random(20260101);
  int read = 0;
  for (int i = 0; i < 20000; ++i) {
    std::string text;
    for (std::uint32_t length = random() % 10; length > 0; --length) {
      text += kBytes[random() % (sizeof(kBytes) - 1)];
    }
    ASSERT_EQ(ReadDate(text), Scanned(text)) << text;
    read += ReadDate(text) ? 1 : 0;
  }
  EXPECT_GT(read, 100);
}

}  // namespace
}  // namespace vpn
