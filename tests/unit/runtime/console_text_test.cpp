#include "src/runtime/console_text.h"

#include <windows.h>

#include "tests/unit/product_state.h"

namespace vpn {
namespace {

using std::string_literals::operator""s;

class ConsoleText : public unit::ProductTest {};

TEST_F(ConsoleText, CodePageComesFirstThenBothStreamsTakeUtf8) {
  UseUtf8Console();
  EXPECT_EQ(machine.calls.Sequence({"SetConsoleOutputCP", "_setmode"}),
            (std::vector<std::string>{"SetConsoleOutputCP 65001", "_setmode 1, 262144",
                                      "_setmode 2, 262144"}));
}

TEST_F(ConsoleText, TextOutsideAsciiArrivesAsUtf8) {
  UseUtf8Console();
  WriteConsoleText(stdout, L"Tavrin连接\n");
  WriteConsoleText(stderr, L"错误\n");
  EXPECT_EQ(machine.console.Output(), "Tavrin连接\n");
  EXPECT_EQ(machine.console.Errors(), "错误\n");
}

TEST_F(ConsoleText, CharacterOfTwoUnitsStaysWhole) {
  UseUtf8Console();
  std::wstring text;
  text += static_cast<wchar_t>(0xD83D);
  text += static_cast<wchar_t>(0xDE00);
  WriteConsoleText(stdout, text);
  EXPECT_EQ(machine.console.Output(), "\xF0\x9F\x98\x80");
}

TEST_F(ConsoleText, NulUnitsAreWrittenToo) {
  UseUtf8Console();
  WriteConsoleText(stdout, L"a\0b"s);
  EXPECT_EQ(machine.console.Output(), "a\0b"s);
}

TEST_F(ConsoleText, EmptyTextWritesNothing) {
  UseUtf8Console();
  WriteConsoleText(stdout, L"");
  EXPECT_EQ(machine.console.Output(), "");
}

TEST_F(ConsoleText, WithoutAConsoleNothingHappens) {
  machine.console.attached = false;
  UseUtf8Console();
  WriteConsoleText(stdout, L"text");
  EXPECT_EQ(machine.console.Output(), "");
}

TEST_F(ConsoleText, RefusedCodePageIsNoHindrance) {
  machine.faults.Fail("SetConsoleOutputCP");
  UseUtf8Console();
  WriteConsoleText(stdout, L"连接");
  EXPECT_EQ(machine.console.Output(), "连接");
}

}  // namespace
}  // namespace vpn
