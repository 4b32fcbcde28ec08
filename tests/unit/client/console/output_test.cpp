#include "client/console/output.h"

#include "client/console/moving_line.h"
#include "tests/unit/client/client_test.h"

namespace vpn {
namespace {

class OutputTest : public unit::ClientTest {};

TEST_F(OutputTest, AFileGetsUtf8AndNoMovingLine) {
  Output out(STD_OUTPUT_HANDLE);
  {
    MovingLine moving(out);
    moving.show(L"turning");
  }
  out.line(L"以太网", Ink::kBad);
  EXPECT_FALSE(out.isLively());
  EXPECT_EQ(out.columns(), 80u);
  EXPECT_EQ(Out(), "以太网\n");
}

TEST_F(OutputTest, ErrorsGoToTheirOwnStream) {
  Output err(STD_ERROR_HANDLE);
  err.line(L"wrong");
  EXPECT_EQ(Out(), "");
  EXPECT_EQ(Err(), "wrong\n");
}

TEST_F(OutputTest, AConsoleGetsColoursAndItsOwnBack) {
  UseTerminal();
  Output out(STD_OUTPUT_HANDLE);
  out.write(L"good ", Ink::kGood);
  out.write(L"bad ", Ink::kBad);
  out.write(L"careful ", Ink::kCaution);
  out.write(L"faint ", Ink::kFaint);
  out.line(L"plain");
  const sim::Terminal& terminal = machine.console.terminal;
  EXPECT_EQ(terminal.ColourOf(L"good"), 0x0A);
  EXPECT_EQ(terminal.ColourOf(L"bad"), 0x0C);
  EXPECT_EQ(terminal.ColourOf(L"careful"), 0x0E);
  EXPECT_EQ(terminal.ColourOf(L"faint"), 0x08);
  EXPECT_EQ(terminal.ColourOf(L"plain"), 0x07);
}

TEST_F(OutputTest, NoColorMeansNeitherColoursNorMovingLines) {
  UseTerminal();
  machine.environment.Set(L"NO_COLOR", L"1");
  Output out(STD_OUTPUT_HANDLE);
  MovingLine moving(out);
  moving.show(L"turning");
  out.line(L"bad", Ink::kBad);
  EXPECT_EQ(machine.console.terminal.ColourOf(L"bad"), 0x07);
  EXPECT_EQ(machine.console.terminal.Lines(), (std::vector<std::string>{"bad", ""}));
}

TEST_F(OutputTest, AMovingLineLeavesNoCharactersBehind) {
  UseTerminal();
  Output out(STD_OUTPUT_HANDLE);
  MovingLine moving(out);
  moving.show(L"a long line that moves");
  EXPECT_FALSE(machine.console.terminal.cursorVisible);
  moving.show(L"short");
  EXPECT_EQ(machine.console.terminal.Lines(), std::vector<std::string>{"short"});
  moving.clear();
  out.line(L"done");
  EXPECT_TRUE(machine.console.terminal.cursorVisible);
  EXPECT_EQ(machine.console.terminal.Lines(), (std::vector<std::string>{"done", ""}));
}

TEST_F(OutputTest, AMovingLineIsCutToTheWindow) {
  UseTerminal(20);
  Output out(STD_OUTPUT_HANDLE);
  MovingLine moving(out);
  moving.show(L"a line that is far too long for it");
  EXPECT_EQ(machine.console.terminal.Lines(), std::vector<std::string>{"a line that is far…"});
}

TEST_F(OutputTest, WhatStandsThereIsNotWrittenAgain) {
  UseTerminal();
  Output out(STD_OUTPUT_HANDLE);
  MovingLine moving(out);
  moving.show(L"same");
  const size_t calls = machine.calls.Count("WriteConsoleW");
  moving.show(L"same");
  EXPECT_EQ(machine.calls.Count("WriteConsoleW"), calls);
}

TEST_F(OutputTest, ALongTextGoesToTheConsoleInPieces) {
  UseTerminal();
  Output out(STD_OUTPUT_HANDLE);
  out.write(std::wstring(8001, L'x'));
  EXPECT_EQ(machine.calls.Count("WriteConsoleW"), 2u);
}

TEST_F(OutputTest, AStreamThatCantBeWrittenIsGivenUp) {
  machine.faults.Fail("WriteFile", {.nth = 1, .code = ERROR_NO_DATA});
  Output out(STD_OUTPUT_HANDLE);
  out.line(L"lost");
  EXPECT_EQ(Out(), "");
}

TEST(Wheel, TurnsEvery80Milliseconds) {
  EXPECT_EQ(WheelAt(0), L'⠋');
  EXPECT_EQ(WheelAt(79), L'⠋');
  EXPECT_EQ(WheelAt(80), L'⠙');
  EXPECT_EQ(WheelAt(800), L'⠋');
}

}  // namespace
}  // namespace vpn
