#include "src/common/text.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/sim/fixture.h"

namespace vpn {
namespace {

using std::string_literals::operator""s;

// UTF-16 units, written as numbers, since a character literal of this host may hold 32 bits.
std::wstring Units(std::vector<unsigned> values) {
  return std::wstring(values.begin(), values.end());
}

class Utf8ToWideTest : public sim::MachineTest {};
class WideToUtf8Test : public sim::MachineTest {};

TEST_F(Utf8ToWideTest, EmptyTextMakesNoPlatformCall) {
  EXPECT_EQ(Utf8ToWide(""), L"");
  EXPECT_EQ(machine.calls.Count("MultiByteToWideChar"), 0u);
}

TEST_F(Utf8ToWideTest, EachSequenceLengthGivesItsUnits) {
  EXPECT_EQ(Utf8ToWide("\x7F"), Units({0x7F}));
  EXPECT_EQ(Utf8ToWide("\xC2\x80\xDF\xBF"), Units({0x80, 0x7FF}));
  EXPECT_EQ(Utf8ToWide("\xE0\xA0\x80\xE4\xB8\xAD\xEF\xBF\xBF"), Units({0x800, 0x4E2D, 0xFFFF}));
  EXPECT_EQ(Utf8ToWide("\xF0\x90\x80\x80"), Units({0xD800, 0xDC00}));
  EXPECT_EQ(Utf8ToWide("\xF4\x8F\xBF\xBF"), Units({0xDBFF, 0xDFFF}));
}

TEST_F(Utf8ToWideTest, NulBytesAreConvertedLikeAllOthers) {
  EXPECT_EQ(Utf8ToWide("a\0b\0"s), Units({'a', 0, 'b', 0}));
  EXPECT_EQ(Utf8ToWide("\0"s), Units({0}));
}

TEST_F(Utf8ToWideTest, IllFormedBytesBecomeReplacementCharacters) {
  const struct {
    std::string bytes;
    std::wstring text;
  } rows[] = {
      {"\xFF", Units({0xFFFD})},
      {"a\x80z", Units({'a', 0xFFFD, 'z'})},                  // a continuation on its own
      {"\xC3", Units({0xFFFD})},                              // cut short at the end
      {"\xC3(", Units({0xFFFD, '('})},                        // cut short by a character
      {"\xE4\xB8", Units({0xFFFD})},                          // one maximal part, one replacement
      {"\xC0\xAF", Units({0xFFFD, 0xFFFD})},                  // overlong
      {"\xED\xA0\x80", Units({0xFFFD, 0xFFFD})},              // an encoded surrogate
      {"\xF4\x90\x80\x80", Units({0xFFFD, 0xFFFD, 0xFFFD})},  // above U+10FFFF
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(::testing::PrintToString(row.bytes));
    EXPECT_EQ(Utf8ToWide(row.bytes), row.text);
  }
}

TEST_F(Utf8ToWideTest, OneCallIsEnoughForTextsOfEveryLength) {
  for (const std::string& bytes : {"a"s, "\xE4\xB8\xAD"s, std::string(70'000, 'a')}) {
    machine.calls.Clear();
    (void)Utf8ToWide(bytes);
    EXPECT_EQ(machine.calls.Count("MultiByteToWideChar"), 1u);
  }
}

TEST_F(Utf8ToWideTest, FailureGivesTheEmptyText) {
  machine.faults.Fail("MultiByteToWideChar");
  EXPECT_EQ(Utf8ToWide("text"), L"");
}

TEST_F(WideToUtf8Test, EmptyTextMakesNoPlatformCall) {
  EXPECT_EQ(WideToUtf8(L""), "");
  EXPECT_EQ(machine.calls.Count("WideCharToMultiByte"), 0u);
}

TEST_F(WideToUtf8Test, EachRangeGivesItsSequenceLength) {
  EXPECT_EQ(WideToUtf8(Units({0x41, 0x7F})), "A\x7F");
  EXPECT_EQ(WideToUtf8(Units({0x80, 0x7FF})), "\xC2\x80\xDF\xBF");
  EXPECT_EQ(WideToUtf8(Units({0x800, 0x4E2D, 0xFFFF})), "\xE0\xA0\x80\xE4\xB8\xAD\xEF\xBF\xBF");
  EXPECT_EQ(WideToUtf8(Units({0xD83D, 0xDE00})), "\xF0\x9F\x98\x80");
}

TEST_F(WideToUtf8Test, UnpairedSurrogatesBecomeReplacementCharacters) {
  EXPECT_EQ(WideToUtf8(Units({0xD83D})), "\xEF\xBF\xBD");
  EXPECT_EQ(WideToUtf8(Units({0xDE00, 'a'})),
            "\xEF\xBF\xBD"
            "a");
  EXPECT_EQ(WideToUtf8(Units({0xD83D, 'a'})),
            "\xEF\xBF\xBD"
            "a");
  EXPECT_EQ(WideToUtf8(Units({0xDE00, 0xD83D})), "\xEF\xBF\xBD\xEF\xBF\xBD");
}

TEST_F(WideToUtf8Test, NulUnitsAreConvertedLikeAllOthers) {
  EXPECT_EQ(WideToUtf8(Units({'a', 0, 'b'})), "a\0b"s);
}

TEST_F(WideToUtf8Test, FailureOfEitherCallGivesTheEmptyText) {
  for (const std::uint64_t nth : {1u, 2u}) {
    machine.faults.Clear();
    machine.faults.Fail("WideCharToMultiByte", {.nth = nth});
    EXPECT_EQ(WideToUtf8(L"text"), "") << "call " << nth;
  }
}

TEST(ToLowerText, LowersTheLettersOfAsciiOnly) {
  EXPECT_EQ(ToLowerText(L"TUN2Socks [\\]^_` @AZ"), L"tun2socks [\\]^_` @az");
  EXPECT_EQ(ToLowerText(L"ÄÉΩЖ以太网"), L"ÄÉΩЖ以太网");
  EXPECT_EQ(ToLowerText(L""), L"");
}

TEST(ToLowerText, WorksOnACopy) {
  const std::wstring text = L"ABC";
  EXPECT_EQ(ToLowerText(text), L"abc");
  EXPECT_EQ(text, L"ABC");
}

TEST(ContainsNoCase, IgnoresTheCaseOfBothTexts) {
  EXPECT_TRUE(ContainsNoCase(L"Wintun Userspace Tunnel", L"wintun"));
  EXPECT_TRUE(ContainsNoCase(L"my tun2socks adapter", L"TUN2SOCKS"));
  EXPECT_FALSE(ContainsNoCase(L"tun 2socks", L"tun2socks"));
}

TEST(ContainsNoCase, EmptyNeedleIsInEverything) {
  EXPECT_TRUE(ContainsNoCase(L"text", L""));
  EXPECT_TRUE(ContainsNoCase(L"", L""));
}

TEST(ContainsNoCase, NeedleLongerThanTheTextIsInNothing) {
  EXPECT_FALSE(ContainsNoCase(L"tap", L"tapx"));
  EXPECT_FALSE(ContainsNoCase(L"", L"t"));
}

TEST(EscapeQuotes, PutsABackslashInFrontOfQuotesAndBackslashesOnly) {
  EXPECT_EQ(EscapeQuotes(R"(a"b\c)"), R"(a\"b\\c)");
  EXPECT_EQ(EscapeQuotes("\x01\n\r\t\x7F/'"), "\x01\n\r\t\x7F/'");
  EXPECT_EQ(EscapeQuotes("\xE4\xB8\xAD"), "\xE4\xB8\xAD");
  EXPECT_EQ(EscapeQuotes("\0\"\0"s), "\0\\\"\0"s);
  EXPECT_EQ(EscapeQuotes(""), "");
}

class AssignIfGivenTest : public sim::MachineTest {};

TEST_F(AssignIfGivenTest, GivenBytesReplaceTheFieldAndNoBytesLeaveIt) {
  std::wstring field = L"chrome";
  AssignIfGiven("", field);
  EXPECT_EQ(field, L"chrome");
  AssignIfGiven("firefox 中", field);
  EXPECT_EQ(field, L"firefox 中");
}

TEST_F(AssignIfGivenTest, BytesThatCannotBeConvertedCountAsGiven) {
  machine.faults.Fail("MultiByteToWideChar");
  std::wstring field = L"chrome";
  AssignIfGiven("firefox", field);
  EXPECT_EQ(field, L"");
}

TEST(HexDigitValue, KnowsTheDigitsOfBothCases) {
  const std::string lower = "0123456789abcdef";
  const std::string upper = "0123456789ABCDEF";
  for (int value = 0; value < 16; ++value) {
    EXPECT_EQ(HexDigitValue(lower[static_cast<size_t>(value)]), value);
    EXPECT_EQ(HexDigitValue(upper[static_cast<size_t>(value)]), value);
  }
}

TEST(HexDigitValue, AnyOtherByteIsNone) {
  const std::string digits = "0123456789abcdefABCDEF";
  for (int byte = 0; byte < 256; ++byte) {
    const char text = static_cast<char>(byte);
    if (digits.find(text) == std::string::npos) {
      EXPECT_EQ(HexDigitValue(text), -1) << byte;
    }
  }
}

TEST(HasDottedQuadShape, WantsDigitsAndExactlyThreeDots) {
  const struct {
    const char* text;
    bool shaped;
  } rows[] = {
      {"192.168.1.1", true}, {"...", true},      {"999.1.1.99999", true}, {"1.2.3.", true},
      {"", false},           {"1.2.3", false},   {"1.2.3.4.5", false},    {"1.2.3.x", false},
      {" 1.2.3.4", false},   {"1.2.3/4", false}, {"1.2.3.:", false},      {"-1.2.3.4", false},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.text);
    const std::string narrow = row.text;
    const std::wstring wide(narrow.begin(), narrow.end());
    EXPECT_EQ(IsIpv4Literal(std::string_view(narrow)), row.shaped);
    EXPECT_EQ(IsIpv4Literal(std::wstring_view(wide)), row.shaped);
  }
}

TEST(HasDottedQuadShape, TakesNoDigitsOfOtherScripts) {
  EXPECT_FALSE(IsIpv4Literal(std::wstring_view(L"１.2.3.4")));
}

}  // namespace
}  // namespace vpn
