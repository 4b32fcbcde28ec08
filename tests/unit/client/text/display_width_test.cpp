#include "client/text/display_width.h"

#include <gtest/gtest.h>

namespace vpn {
namespace {

TEST(DisplayWidth, AsciiTakesOneColumnEach) {
  EXPECT_EQ(DisplayWidth(L"Tokyo 01"), 8u);
  EXPECT_EQ(DisplayWidth(L""), 0u);
}

TEST(DisplayWidth, ChineseTakesTwoColumnsEach) {
  EXPECT_EQ(DisplayWidth(L"以太网"), 6u);
  EXPECT_EQ(DisplayWidth(L"香港 BGP 02"), 11u);
  EXPECT_EQ(DisplayWidth(L"（）"), 4u);
}

TEST(DisplayWidth, MarksOfTheScreenTakeOne) {
  EXPECT_EQ(DisplayWidth(L"✓✗⠹█▏–…◄"), 8u);
}

TEST(DisplayWidth, CombiningMarksTakeNone) {
  EXPECT_EQ(DisplayWidth(L"e\x0301"), 1u);
  EXPECT_EQ(DisplayWidth(L"\xFEFF"), 0u);
}

TEST(DisplayWidth, ASurrogatePairIsOneWideCharacter) {
  EXPECT_EQ(DisplayWidth(std::wstring{wchar_t(0xD83C), wchar_t(0xDDEF)}), 2u);  // a flag's letter
  EXPECT_EQ(DisplayWidth(std::wstring{wchar_t(0xD842), wchar_t(0xDFB7)}), 2u);  // a rare ideograph
}

TEST(DisplayWidth, HalfAPairCountsAsOneColumn) {
  EXPECT_EQ(DisplayWidth(std::wstring{wchar_t(0xD83C), L'a'}), 2u);
  EXPECT_EQ(DisplayWidth(std::wstring{L'a', wchar_t(0xD83C)}), 2u);
}

TEST(PadRight, FillsUpToTheColumns) {
  EXPECT_EQ(PadRight(L"以太网", 8), L"以太网  ");
  EXPECT_EQ(PadRight(L"long enough", 4), L"long enough");
}

TEST(PadLeft, FillsUpToTheColumns) {
  EXPECT_EQ(PadLeft(L"5 ms", 7), L"   5 ms");
  EXPECT_EQ(PadLeft(L"网", 1), L"网");
}

TEST(CutToWidth, LeavesWhatFits) {
  EXPECT_EQ(CutToWidth(L"以太网", 6), L"以太网");
}

TEST(CutToWidth, NeverCutsAWideCharacterInHalf) {
  EXPECT_EQ(CutToWidth(L"以太网", 5), L"以太…");
  EXPECT_EQ(CutToWidth(L"以太网", 4), L"以…");
  EXPECT_EQ(CutToWidth(L"abc", 1), L"…");
  EXPECT_EQ(CutToWidth(L"abc", 0), L"");
}

TEST(WrapText, BreaksAtBlanksAndHangs) {
  EXPECT_EQ(
      WrapText(L"  What to do: end that program, then connect", 20, 4),
      (std::vector<std::wstring>{L"  What to do: end", L"    that program,", L"    then connect"}));
  EXPECT_EQ(WrapText(L"short", 20, 4), std::vector<std::wstring>{L"short"});
  EXPECT_EQ(WrapText(L"", 20, 4), std::vector<std::wstring>{L""});
}

TEST(WrapText, AWordThatIsTooLongStandsAlone) {
  EXPECT_EQ(WrapText(L"see C:\\a\\very\\long\\path now", 10, 2),
            (std::vector<std::wstring>{L"see", L"  C:\\a\\very\\long\\path", L"  now"}));
  EXPECT_EQ(WrapText(L"请先登录请先登录", 6, 2), std::vector<std::wstring>{L"请先登录请先登录"});
}

TEST(PlainLine, ControlCharactersBecomeBlanks) {
  EXPECT_EQ(PlainLine(L"a\x1B[31mb\nc\x7F"), L"a [31mb c ");
}

}  // namespace
}  // namespace vpn
