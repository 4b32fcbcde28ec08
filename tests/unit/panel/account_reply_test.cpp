// Expiry and dates in the panel's account reply.
#include "src/panel/account_reply.h"

#include <string>
#include <utility>

#include "tests/sim/fixture.h"

namespace vpn {
namespace {

class Expiry : public sim::MachineTest {
 protected:
  // Of an object with this value.
  static std::int64_t Of(const std::string& value) {
    return ParseExpiredAt(R"({"expired_at":)" + value + "}");
  }
};

TEST_F(Expiry, SecondsAreTakenAsTheyAre) {
  EXPECT_EQ(Of("1700000000"), 1700000000);
  EXPECT_EQ(Of(" \t1700000000"), 1700000000);
  EXPECT_EQ(Of("1700000000.9"), 1700000000);
}

TEST_F(Expiry, MillisecondsBecomeSeconds) {
  EXPECT_EQ(Of("1700000000000"), 1700000000);
  EXPECT_EQ(Of("1700000000999"), 1700000000);
}

TEST_F(Expiry, ANumberIsInMillisecondsAbove100000000000) {
  EXPECT_EQ(Of("100000000000"), 100000000000);
  EXPECT_EQ(Of("100000000001"), 0);  // one hundred million seconds, which is no plausible date
  EXPECT_EQ(Of("999999999999"), 0);
  EXPECT_EQ(Of("1000000000000"), 1000000000);
}

TEST_F(Expiry, SecondsBelowOneThousandMillionAreNoDate) {
  EXPECT_EQ(Of("1"), 0);
  EXPECT_EQ(Of("5"), 0);
  EXPECT_EQ(Of("999999999"), 0);
  EXPECT_EQ(Of("1000000000"), 1000000000);
}

TEST_F(Expiry, ZeroNullAndNonsenseAreNoExpiry) {
  for (const char* value : {"0", "null", "true", "", "[1700000000]", "{\"a\":1700000000}"}) {
    EXPECT_EQ(Of(value), 0) << value;
  }
}

TEST_F(Expiry, ANegativeNumberStaysNegative) {
  EXPECT_EQ(Of("-1"), -1);
  EXPECT_EQ(Of("-1700000000000"), -1700000000000);
}

TEST_F(Expiry, TheTextMayEndAnywhere) {
  for (const char* text : {"", "{}", "\"expired_at\"", "\"expired_at\":", "\"expired_at\": \t",
                           "\"expired_at\":\"", "expired_at:1700000000"}) {
    EXPECT_EQ(ParseExpiredAt(text), 0) << text;
  }
  EXPECT_EQ(ParseExpiredAt("\"expired_at\":1700000000"), 1700000000);
  EXPECT_EQ(ParseExpiredAt("\"expired_at\":\"1700000000"), 1700000000);
}

TEST_F(Expiry, TheColonIsTheNextOneBehindTheKey) {
  EXPECT_EQ(ParseExpiredAt("\"expired_at\"  , \"b\" : 1700000000"), 1700000000);
}

// Only blanks and tabs are passed over; behind a line break strtoll skips by itself, but a quote is
// not seen as one.
TEST_F(Expiry, ALineBreakInFrontHidesAQuoteButNoNumber) {
  EXPECT_EQ(Of("\n1700000000"), 1700000000);
  EXPECT_EQ(Of("\n\"1700000000\""), 0);
}

TEST_F(Expiry, ADateIncludesItsWholeLastDay) {
  EXPECT_EQ(Of("\"2027-03-01\""), 1803945599);
  EXPECT_EQ(Of("\"2027-03-01 10:00:00\""), 1803945599);
  EXPECT_EQ(Of("\"2027-3-1\""), 1803945599);
  EXPECT_EQ(Of("\"2027-03-01T10:00:00+08:00\""), 1803945599);
}

TEST_F(Expiry, MonthAndDayOverflowAreNormalised) {
  EXPECT_EQ(Of("\"2024-02-30\""), 1709337599);   // 1 March
  EXPECT_EQ(Of("\"2024-14-01\""), 1738454399);   // 1 February of the next year
  EXPECT_EQ(Of("\"2024-00-01\""), 1701475199);   // 1 December of the year before
  EXPECT_EQ(Of("\"2024-01-400\""), 1738627199);  // 3 February of the next year
}

TEST_F(Expiry, ADateBefore1971IsReadAsANumber) {
  EXPECT_EQ(Of("\"1970-01-01\""), 1970);
  EXPECT_EQ(Of("\"1971-01-01\""), 31622399);
  EXPECT_EQ(Of("\"0-01-01\""), 0);
}

TEST_F(Expiry, ADateThatThePlatformCanNotExpressIsNoExpiry) {
  EXPECT_EQ(Of("\"3000-12-31\""), 32535215999);
  EXPECT_EQ(Of("\"3001-01-01\""), 0);
  EXPECT_EQ(Of("\"99999-01-01\""), 0);
  EXPECT_EQ(Of("\"1971-01--900\""), 0);
  EXPECT_EQ(Of("\"1971--2147483648-01\""), 0);
}

TEST_F(Expiry, AnIncompleteDateIsReadAsANumber) {
  EXPECT_EQ(Of("\"2027-03\""), 2027);
  EXPECT_EQ(Of("\"2027/03/01\""), 2027);
  EXPECT_EQ(Of("\"2027-03-x\""), 2027);
}

TEST_F(Expiry, ANumberInQuotesHasNeitherOfTheTwoRules) {
  EXPECT_EQ(Of("\"1700000000\""), 1700000000);
  EXPECT_EQ(Of("\"5\""), 5);
  EXPECT_EQ(Of("\"1700000000000\""), 1700000000000);
  EXPECT_EQ(Of("\"-5\""), -5);
}

TEST_F(Expiry, EmptyAndWordyTextsInQuotesAreNoExpiry) {
  EXPECT_EQ(Of("\"\""), 0);
  EXPECT_EQ(Of("\"never\""), 0);
}

TEST_F(Expiry, AnEscapedQuoteDoesNotEndTheText) {
  EXPECT_EQ(Of(R"("\"2027-03-01")"), 0);
  EXPECT_EQ(Of(R"("2027-03-01\"x")"), 1803945599);
}

TEST_F(Expiry, DateTextsAreOfTheUtcDay) {
  EXPECT_EQ(DateText(1803945599), L"2027-03-01");
  EXPECT_EQ(DateText(1803945600), L"2027-03-02");
  EXPECT_EQ(DateText(1), L"1970-01-01");
  EXPECT_EQ(DateText(32535215999), L"3000-12-31");
}

TEST_F(Expiry, WithoutAnExpiryThereIsNoDateText) {
  EXPECT_EQ(DateText(0), L"");
  EXPECT_EQ(DateText(-1), L"");
  EXPECT_EQ(DateText(INT64_MIN), L"");
}

TEST_F(Expiry, TheLastSecondOfAFileTimeIsTheLastWithADateText) {
  EXPECT_EQ(DateText(910692730085), L"30828-09-14");
  EXPECT_EQ(DateText(910692730086), L"");
  EXPECT_EQ(DateText(1700000000000), L"");
  EXPECT_EQ(DateText(INT64_MAX), L"");
}

TEST_F(Expiry, ADateThatThePlatformRefusesHasNoText) {
  machine.faults.Fail("FileTimeToSystemTime");
  EXPECT_EQ(DateText(1700000000), L"");
}

TEST_F(Expiry, NowIsTheMachinesTimeInWholeSeconds) {
  machine.clock.SetDate(2025, 6, 15, 12, 0, 0);
  EXPECT_EQ(NowSeconds(), 1749988800);
  machine.clock.Advance(999);
  EXPECT_EQ(NowSeconds(), 1749988800);
  machine.clock.Advance(1);
  EXPECT_EQ(NowSeconds(), 1749988801);
}

}  // namespace
}  // namespace vpn
