#include "client/console/input.h"

#include <windows.h>

#include "tests/unit/client/client_test.h"

namespace vpn {
namespace {

class InputTest : public unit::ClientTest {
 protected:
  InputTest() {
    UseTerminal();
    machine.console.hasKeyboard = true;
  }
  Answer Ask(Echo echo) {
    const InterruptGuard guard;
    const InterruptWatch interrupt;
    Output err(STD_ERROR_HANDLE);
    return AskPerson(L"Password: ", echo, interrupt, err);
  }
};

TEST_F(InputTest, AHiddenAnswerIsNotOnTheScreenAndTheModeIsBack) {
  machine.console.typed = {L"p\"ss \\ wörd 密"};
  const Answer answer = Ask(Echo::kHidden);
  EXPECT_EQ(answer.kind, Answer::Kind::kLine);
  EXPECT_EQ(answer.text, L"p\"ss \\ wörd 密");
  EXPECT_EQ(machine.console.terminal.Lines(), (std::vector<std::string>{"Password:", ""}));
  EXPECT_EQ(machine.console.inputMode, 7u);
}

TEST_F(InputTest, AShownOneIs) {
  machine.console.typed = {L"123456"};
  EXPECT_EQ(Ask(Echo::kShown).text, L"123456");
  EXPECT_EQ(machine.console.terminal.Lines(), (std::vector<std::string>{"Password: 123456", ""}));
}

TEST_F(InputTest, CtrlCIsAnAnswerOfItsOwn) {
  machine.console.typed = {L"\x03"};
  EXPECT_EQ(Ask(Echo::kHidden).kind, Answer::Kind::kInterrupted);
  EXPECT_EQ(machine.console.inputMode, 7u);
}

TEST_F(InputTest, TheEndOfTheInputIsToldFromAnEmptyLine) {
  EXPECT_EQ(Ask(Echo::kHidden).kind, Answer::Kind::kEnd);
  machine.console.typed = {L""};
  const Answer empty = Ask(Echo::kHidden);
  EXPECT_EQ(empty.kind, Answer::Kind::kLine);
  EXPECT_EQ(empty.text, L"");
}

TEST_F(InputTest, AThousandCharactersAreTaken) {
  machine.console.typed = {std::wstring(1000, L'密')};
  EXPECT_EQ(Ask(Echo::kHidden).text, std::wstring(1000, L'密'));
  machine.console.input = std::string(1000, 'x');
  EXPECT_EQ(ReadInputLine().text, std::wstring(1000, L'x'));
}

TEST_F(InputTest, AFileOrPipeIsNoKeyboard) {
  EXPECT_TRUE(HasKeyboard());
  machine.console.hasKeyboard = false;
  EXPECT_FALSE(HasKeyboard());
}

TEST_F(InputTest, LinesOfAPipeComeOneByOne) {
  machine.console.input = "\xEF\xBB\xBFp\"ss \\ wörd 密 \r\n123456\n\nend";
  EXPECT_EQ(ReadInputLine().text, L"p\"ss \\ wörd 密 ");
  EXPECT_EQ(machine.console.input, "123456\n\nend");
  EXPECT_EQ(ReadInputLine().text, L"123456");
  const Answer empty = ReadInputLine();
  EXPECT_EQ(empty.kind, Answer::Kind::kLine);
  EXPECT_EQ(empty.text, L"");
  EXPECT_EQ(ReadInputLine().text, L"end");
  EXPECT_EQ(ReadInputLine().kind, Answer::Kind::kEnd);
}

}  // namespace
}  // namespace vpn
