#include "tests/sim/text.h"

#include <gtest/gtest.h>

#include <vector>

#include "tests/sim/fixture.h"

#include <windows.h>

namespace sim {
namespace {

TEST(Text, PairsOfSurrogatesAreOneCharacterInUtf8) {
  EXPECT_EQ(Widen("\xF0\x9F\x98\x80"), (std::wstring{0xD83D, 0xDE00}));
  EXPECT_EQ(Narrow(std::wstring{0xD83D, 0xDE00}), "\xF0\x9F\x98\x80");
}

TEST(Text, ALoneSurrogateBecomesTheReplacementCharacter) {
  EXPECT_EQ(Narrow(std::wstring{L'a', 0xD83D, L'b'}),
            "a\xEF\xBF\xBD"
            "b");
  EXPECT_EQ(Narrow(std::wstring{0xDE00}), "\xEF\xBF\xBD");
}

TEST(Text, IllFormedBytesBecomeReplacements) {
  EXPECT_EQ(Widen("a\xFF"
                  "b"),
            (std::wstring{L'a', 0xFFFD, L'b'}));
  EXPECT_EQ(Widen("\xE4\xB8"), (std::wstring{0xFFFD}));
  EXPECT_EQ(Widen("\xE4\xB8"
                  "A"),
            (std::wstring{0xFFFD, L'A'}));
  EXPECT_EQ(Widen("\xC0\x80"), (std::wstring{0xFFFD, 0xFFFD}));
  EXPECT_EQ(Widen("\xED\xA0\x80"), (std::wstring{0xFFFD, 0xFFFD}));
}

TEST(Text, WildcardsIgnoreCase) {
  EXPECT_TRUE(MatchesWildcards(L"tun2socks*.exe", L"TUN2SOCKS-windows-amd64.EXE"));
  EXPECT_TRUE(MatchesWildcards(L"tun2socks*.exe", L"tun2socks.exe"));
  EXPECT_FALSE(MatchesWildcards(L"tun2socks*.exe", L"tun2socks.exe.bak"));
  EXPECT_TRUE(MatchesWildcards(L"a?c", L"abc"));
}

class TextCalls : public MachineTest {};

TEST_F(TextCalls, SizeQueryCountsTheTerminatorOnlyWhenTheTextIsReadToIt) {
  EXPECT_EQ(MultiByteToWideChar(CP_UTF8, 0, "ab", -1, nullptr, 0), 3);
  EXPECT_EQ(MultiByteToWideChar(CP_UTF8, 0, "ab", 2, nullptr, 0), 2);
  EXPECT_EQ(WideCharToMultiByte(CP_UTF8, 0, L"\u4e2d", -1, nullptr, 0, nullptr, nullptr), 4);
}

TEST_F(TextCalls, ABufferThatIsTooSmallFailsWith122) {
  wchar_t buffer[2] = {};
  EXPECT_EQ(MultiByteToWideChar(CP_UTF8, 0, "abc", 3, buffer, 2), 0);
  EXPECT_EQ(GetLastError(), 122u);
}

}  // namespace
}  // namespace sim
