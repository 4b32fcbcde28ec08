// Text conversion, numbers in text, variables.
#include <climits>
#include <string>
#include <utility>

#include "tests/contract/world.h"

namespace contract {
namespace {

using Text = ContractTest;

std::wstring ToWide(const std::string& bytes) {
  std::wstring text(64, L'\0');
  const int size = static_cast<int>(bytes.size());
  const int wanted = MultiByteToWideChar(CP_UTF8, 0, bytes.data(), size, nullptr, 0);
  const int count = MultiByteToWideChar(CP_UTF8, 0, bytes.data(), size, text.data(), 64);
  EXPECT_EQ(wanted, count);
  text.resize(static_cast<size_t>(count));
  return text;
}

std::string ToUtf8(const std::wstring& text) {
  std::string bytes(64, '\0');
  const int size = static_cast<int>(text.size());
  const int wanted =
      WideCharToMultiByte(CP_UTF8, 0, text.data(), size, nullptr, 0, nullptr, nullptr);
  const int count =
      WideCharToMultiByte(CP_UTF8, 0, text.data(), size, bytes.data(), 64, nullptr, nullptr);
  EXPECT_EQ(wanted, count);
  bytes.resize(static_cast<size_t>(count));
  return bytes;
}

std::wstring Units(std::initializer_list<unsigned> units) {
  std::wstring text;
  for (const unsigned unit : units) {
    text += static_cast<wchar_t>(unit);
  }
  return text;
}

TEST_F(Text, WellFormedTextGoesBothWays) {
  const std::pair<std::string, std::wstring> cases[] = {
      {"abc", L"abc"},
      {"\xC3\xA4", Units({0xE4})},
      {"\xE4\xB8\xAD\xE6\x96\x87", Units({0x4E2D, 0x6587})},
      {"\xF0\x9F\x98\x80", Units({0xD83D, 0xDE00})},
      {"\xF4\x8F\xBF\xBF", Units({0xDBFF, 0xDFFF})},
      {"\xEF\xBF\xBF", Units({0xFFFF})},
      {std::string("a\0b", 3), std::wstring(L"a\0b", 3)}};
  for (const auto& [bytes, text] : cases) {
    EXPECT_EQ(ToWide(bytes), text);
    EXPECT_EQ(ToUtf8(text), bytes);
  }
}

TEST_F(Text, EachIllFormedPartBecomesOneReplacement) {
  const std::pair<std::string, std::wstring> cases[] = {
      {"\xFF", Units({0xFFFD})},
      {"a\x80"
       "b",
       Units({L'a', 0xFFFD, L'b'})},
      {"\xC3", Units({0xFFFD})},
      {"\xC3"
       "A",
       Units({0xFFFD, L'A'})},
      {"\xE4\xB8", Units({0xFFFD})},
      {"\xE4\xB8"
       "A",
       Units({0xFFFD, L'A'})},
      {"\xF0\x9F\x98", Units({0xFFFD})},
      {"\xF0\x9F\x98"
       "A",
       Units({0xFFFD, L'A'})},
      {"\xC0\x80", Units({0xFFFD, 0xFFFD})},
      {"\xE0\x80\x80", Units({0xFFFD, 0xFFFD})},
      {"\xED\xA0\x80", Units({0xFFFD, 0xFFFD})},
      {"\xF4\x90\x80\x80", Units({0xFFFD, 0xFFFD, 0xFFFD})},
      {"\xF0\x80\x80\x80", Units({0xFFFD, 0xFFFD, 0xFFFD})},
      {"\xF0\x9F\x98\xF0\x9F\x98\x80", Units({0xFFFD, 0xD83D, 0xDE00})},
      {"\xF5\x80\x80\x80", Units({0xFFFD, 0xFFFD, 0xFFFD, 0xFFFD})},
      {"\xF8\x88", Units({0xFFFD, 0xFFFD})}};
  for (const auto& [bytes, text] : cases) {
    EXPECT_EQ(ToWide(bytes), text) << testing::PrintToString(bytes);
  }
}

TEST_F(Text, ALoneSurrogateBecomesTheReplacementsBytes) {
  EXPECT_EQ(ToUtf8(Units({L'a', 0xD83D, L'b'})),
            "a\xEF\xBF\xBD"
            "b");
  EXPECT_EQ(ToUtf8(Units({0xDE00, 0xD83D})), "\xEF\xBF\xBD\xEF\xBF\xBD");
}

TEST_F(Text, ATerminatedTextIsCountedWithItsTerminator) {
  EXPECT_EQ(WideCharToMultiByte(CP_UTF8, 0, L"", -1, nullptr, 0, nullptr, nullptr), 1);
  EXPECT_EQ(WideCharToMultiByte(CP_UTF8, 0, L"ab\0c", -1, nullptr, 0, nullptr, nullptr), 3);
  EXPECT_EQ(MultiByteToWideChar(CP_UTF8, 0, "ab", -1, nullptr, 0), 3);
}

TEST_F(Text, NoTextAtAllAndTooLittleRoomFail) {
  wchar_t units[2] = {};
  EXPECT_EQ(MultiByteToWideChar(CP_UTF8, 0, "abc", 0, nullptr, 0), 0);
  EXPECT_EQ(GetLastError(), 87u);
  EXPECT_EQ(MultiByteToWideChar(CP_UTF8, 0, "abc", 3, units, 2), 0);
  EXPECT_EQ(GetLastError(), 122u);
}

TEST_F(Text, NumbersAreReadAsFarAsTheyGo) {
  const std::pair<const wchar_t*, int> cases[] = {{L"123", 123},
                                                  {L" \t12", 12},
                                                  {L"12x", 12},
                                                  {L"abc", 0},
                                                  {L"", 0},
                                                  {L"-5", -5},
                                                  {L"+5", 5},
                                                  {L"- 5", 0},
                                                  {L"007", 7},
                                                  {L"0x10", 0},
                                                  {L"2147483647", INT_MAX},
                                                  {L"99999999999", INT_MAX},
                                                  {L"-99999999999", INT_MIN}};
  for (const auto& [text, number] : cases) {
    EXPECT_EQ(_wtoi(text), number);
  }
}

using Variable = ContractTest;

TEST_F(Variable, AValueThatFitsGivesItsLength) {
  SetVariable(L"TAVRIN_CONTRACT", L"1234");
  wchar_t buffer[5] = {};
  EXPECT_EQ(GetEnvironmentVariableW(L"tavrin_contract", buffer, 5), 4u);
  EXPECT_EQ(std::wstring(buffer), L"1234");
}

TEST_F(Variable, AValueThatDoesNotFitGivesTheSizeWithItsTerminator) {
  SetVariable(L"TAVRIN_CONTRACT", L"12345");
  wchar_t buffer[5] = {};
  EXPECT_EQ(GetEnvironmentVariableW(L"TAVRIN_CONTRACT", buffer, 5), 6u);
  EXPECT_EQ(std::wstring(buffer), L"") << "the buffer is left alone";
}

TEST_F(Variable, AnEmptyValueGives0AndLeavesTheErrorAsItWas) {
  SetVariable(L"TAVRIN_CONTRACT", L"");
  wchar_t buffer[5] = {};
  SetLastError(77);
  EXPECT_EQ(GetEnvironmentVariableW(L"TAVRIN_CONTRACT", buffer, 5), 0u);
  EXPECT_EQ(GetLastError(), 77u);
}

TEST_F(Variable, AnUnsetNameGives0And203) {
  wchar_t buffer[5] = {};
  EXPECT_EQ(GetEnvironmentVariableW(L"TAVRIN_CONTRACT_NONE", buffer, 5), 0u);
  EXPECT_EQ(GetLastError(), 203u);
}

}  // namespace
}  // namespace contract
