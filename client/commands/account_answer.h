// What the account's commands have in common.
#ifndef TAVRIN_CLIENT_COMMANDS_ACCOUNT_ANSWER_H_
#define TAVRIN_CLIENT_COMMANDS_ACCOUNT_ANSWER_H_

#include <string>

#include "client/account/backend.h"
#include "client/console/moving_line.h"
#include "client/console/output.h"
#include "client/json/json_text.h"

namespace vpn {

// Calls `operation` while the screen says that the answer takes its time.
template <class Operation>
auto WhileAsking(Screen& screen, Operation operation) {
  MovingLine moving(screen.err);
  moving.show(L"The account's side is being asked …");
  return operation();
}

// An object of a command that has done what it was told.
Json GoodJson();

// The text of a failure with what to do, on stderr, and with `json` as the answer too. Gives the
// exit code.
int FailAccount(const Complaint& complaint, bool json, Screen& screen);
// With what the table says is to do.
int FailAccount(const std::wstring& error, bool json, Screen& screen);

// What is missing on the command line or on the standard input. Gives the exit code.
int WrongUse(const std::wstring& sentence, Screen& screen);

// After Ctrl+C. Gives the exit code.
int TellInterrupted(Screen& screen);

// What to do when a file beside the session can't be written.
std::wstring ElevationAdvice(const std::wstring& runtimeDir);

// "标准版, until 2099-12-31".
std::wstring PlanText(const AccountSession& session);

// The keys of the account itself, behind those that are there.
void AddAccount(const AccountSession& session, Json& object);

}  // namespace vpn

#endif  // TAVRIN_CLIENT_COMMANDS_ACCOUNT_ANSWER_H_
