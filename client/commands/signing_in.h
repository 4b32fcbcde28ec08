// What the commands have in common that end signed in.
#ifndef TAVRIN_CLIENT_COMMANDS_SIGNING_IN_H_
#define TAVRIN_CLIENT_COMMANDS_SIGNING_IN_H_

#include <memory>
#include <string>

#include "client/account/new_session.h"
#include "client/advice/advice.h"
#include "client/cli/command_line.h"
#include "client/commands/account_answer.h"
#include "client/console/input.h"
#include "client/console/interrupt.h"
#include "client/console/output.h"

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

  // An operation of the plane, with the text of its failure.
  template <class Operation>
  bool run(Operation operation) {
    std::wstring error;
    const bool isDone = WhileAsking(screen_, [&] { return operation(*plane_, error); });
    return isDone || fail({error, WhatToDo(error)});
  }

  // Behind the operation that signs in: fetches the account with the new session, which only then
  // takes the place of the old one. Gives the command's exit code.
  int prove();

  bool fail(const Complaint& complaint);
  bool wrongUse(const std::wstring& sentence);

  const std::wstring& password() const { return password_; }
  const std::wstring& mailCode() const { return mailCode_; }
  const std::wstring& inviteCode() const { return inviteCode_; }

  int exitCode = 0;

 private:
  bool ask(const std::wstring& question, Echo echo, std::wstring& text);
  bool checkPassword(bool isNew);
  int tell(const AccountSession& session, const std::wstring& warning);

  const CommandLine& line_;
  Screen& screen_;
  const Backend backend_;
  const NewSession session_;
  const std::unique_ptr<ControlPlane> plane_;
  const InterruptWatch interrupt_;
  std::wstring password_;
  std::wstring mailCode_;
  std::wstring inviteCode_;
};

}  // namespace vpn

#endif  // TAVRIN_CLIENT_COMMANDS_SIGNING_IN_H_
