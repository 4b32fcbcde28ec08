// What the commands have in common that end signed in.
#ifndef TAVRIN_CLIENT_COMMANDS_SIGNING_IN_H_
#define TAVRIN_CLIENT_COMMANDS_SIGNING_IN_H_

#include <string>

#include "client/account/new_session.h"
#include "client/commands/account_run.h"
#include "client/console/input.h"
#include "client/console/interrupt.h"

namespace vpn {

// The steps of a sign-in. A step that gives false has told why; `exitCode` is the command's then.
class SigningIn {
 public:
  SigningIn(const CommandLine& line, Screen& screen);

  // The e-mail is one, and the new session can be written.
  bool begin();

  // By the prepared answers, or else from the person, who gives a new one twice.
  bool askPassword(bool isNew);
  bool askMailCode();
  bool askInviteCode();

  // An operation of the account's side.
  template <class Operation>
  bool run(Operation operation) {
    return run_.ask(operation) || over(run_.fail());
  }

  // Behind the operation that signs in: fetches the account with the new session, which only then
  // takes the place of the old one. Gives the command's exit code.
  int prove();

  // Keeps the exit code; always false.
  bool over(int code);
  AccountRun& account() { return run_; }

  std::wstring password;
  std::wstring mailCode;
  std::wstring inviteCode;
  int exitCode = 0;

 private:
  bool answer(const wchar_t* question, Echo echo, std::wstring& text);
  bool wrongUse(const std::wstring& sentence) { return over(run_.wrongUse(sentence)); }
  int tell(const AccountSession& session, bool isFetched);

  AccountRun run_;
  const NewSession session_;
  const InterruptWatch interrupt_;
};

}  // namespace vpn

#endif  // TAVRIN_CLIENT_COMMANDS_SIGNING_IN_H_
