// One run of a command of the account: its backend, and the ways in which it ends.
#ifndef TAVRIN_CLIENT_COMMANDS_ACCOUNT_RUN_H_
#define TAVRIN_CLIENT_COMMANDS_ACCOUNT_RUN_H_

#include <memory>
#include <string>

#include "client/account/backend.h"
#include "client/cli/command_line.h"
#include "client/console/moving_line.h"
#include "client/console/output.h"
#include "client/json/json_text.h"

namespace vpn {

class AccountRun {
 public:
  // The name of the credential file that it uses has this ending.
  AccountRun(const CommandLine& theLine, Screen& theScreen, const wchar_t* ending = L"");
  ~AccountRun();
  AccountRun(const AccountRun&) = delete;
  AccountRun& operator=(const AccountRun&) = delete;

  // An operation of the account's side, with its failure in `error`. The screen says meanwhile that
  // the answer takes its time.
  template <class Operation>
  bool ask(Operation operation) {
    showWaiting();
    const bool isDone = operation(*plane, error);
    moving_.clear();
    return isDone;
  }

  // What the client itself looks at, with the complaint in `complaint`; true when there is none.
  template <class Look>
  bool look(Look look) {
    showWaiting();
    complaint = look();
    moving_.clear();
    return !complaint;
  }

  // The ends, with the exit code: the failure of the last `ask` or `look`, with what to do, on
  // stderr, and with --json as the answer too.
  int fail();
  int fail(std::wstring text, std::wstring whatToDo);
  // A file that can't be written.
  int failWriting(std::wstring text);
  // What is missing on the command line or on the standard input.
  int wrongUse(const std::wstring& sentence);
  int interrupted();
  // With `answer` for --json.
  int done(const Json& answer);

  const CommandLine& line;
  Screen& screen;
  const Backend backend;
  const std::wstring credentialPath;
  const std::unique_ptr<ControlPlane> plane;
  std::wstring error;
  Complaint complaint;

 private:
  void showWaiting();

  MovingLine moving_;
};

// An object of a command that has done what it was told.
Json GoodJson();

// "标准版, until 2099-12-31".
std::wstring PlanText(const AccountSession& session);

// The keys of the account itself, behind those that are there.
void PutAccount(Json& object, const AccountSession& session);

}  // namespace vpn

#endif  // TAVRIN_CLIENT_COMMANDS_ACCOUNT_RUN_H_
