#include "client/commands/signing_in.h"

#include <algorithm>

#include "client/commands/asking.h"
#include "client/exit_codes.h"
#include "client/service/presence.h"
#include "client/text/display_width.h"

namespace vpn {
namespace {

constexpr wchar_t kNotReplaced[] = L"session.json can't be replaced.";

bool IsControl(wchar_t unit) {
  return unit < L' ' || unit == 0x7F;
}

// One sign in the middle, and nothing that would break the file of the session.
bool LooksLikeEmail(const std::wstring& text) {
  const size_t sign = text.find(L'@');
  return sign != std::wstring::npos && sign > 0 && sign + 1 < text.size() &&
         text.find(L'@', sign + 1) == std::wstring::npos &&
         std::none_of(text.begin(), text.end(), [](wchar_t unit) {
           return unit == L' ' || unit == L'"' || unit == L'\\' || IsControl(unit);
         });
}

}  // namespace

SigningIn::SigningIn(const CommandLine& line, Screen& screen)
    : line_(line),
      screen_(screen),
      backend_(FindBackend(FindServicePlace(line.runtimeDir).runtimeDir)),
      session_(backend_),
      plane_(MakeControlPlane(backend_, session_.path())) {}

bool SigningIn::begin() {
  if (backend_.isPanel() && !LooksLikeEmail(line_.email)) {
    return wrongUse(L"\"" + line_.email + L"\" is no e-mail address");
  }
  const Status written = session_.tryWriting(backend_);
  return written || fail({written.text(), ElevationAdvice(backend_.runtimeDir)});
}

bool SigningIn::ask(const std::wstring& question, Echo echo, std::wstring& text) {
  if (!line_.passwordStdin && !HasKeyboard()) {
    return wrongUse(
        L"there is no console to ask for the password; give it on the standard input with "
        L"--password-stdin");
  }
  Answer answer =
      line_.passwordStdin ? ReadInputLine() : AskPerson(question, echo, interrupt_, screen_.err);
  if (answer.kind == Answer::Kind::kInterrupted) {
    exitCode = TellInterrupted(screen_);
    return false;
  }
  text = std::move(answer.text);
  return answer.kind == Answer::Kind::kLine || wrongUse(L"the input ended before: " + question);
}

bool SigningIn::checkPassword(bool isNew) {
  if (password_.empty()) {
    return wrongUse(L"the password is empty");
  }
  // Panels drop a request whose text holds one.
  if (isNew && std::any_of(password_.begin(), password_.end(), IsControl)) {
    return wrongUse(L"the password holds a control character, which panels do not take");
  }
  return true;
}

bool SigningIn::askPassword(bool isNew) {
  if (!ask(isNew ? L"New password: " : L"Password: ", Echo::kHidden, password_) ||
      !checkPassword(isNew)) {
    return false;
  }
  if (!isNew || line_.passwordStdin) {
    return true;
  }
  std::wstring again;
  if (!ask(L"The same again: ", Echo::kHidden, again)) {
    return false;
  }
  return again == password_ || wrongUse(L"the two passwords differ");
}

bool SigningIn::askMailCode() {
  screen_.err.line(L"A code has been mailed to " + PlainLine(line_.email) + L".");
  return ask(L"Code from the mail: ", Echo::kShown, mailCode_);
}

bool SigningIn::askInviteCode() {
  inviteCode_ = line_.inviteCode;
  if (!inviteCode_.empty()) {
    return true;
  }
  if (line_.passwordStdin || !HasKeyboard()) {
    return wrongUse(L"the panel wants an invite code; give it with --invite CODE");
  }
  return ask(L"Invite code: ", Echo::kShown, inviteCode_);
}

int SigningIn::prove() {
  AccountSession session;
  std::wstring warning;
  bool isFetched = false;
  Complaint complaint = WhileAsking(screen_, [&] {
    isFetched = MakeControlPlane(backend_, session_.path())->fetchAccount(session, warning);
    return isFetched || session.loggedIn ? LookAtAccount(backend_, session_.path())
                                         : Complaint{warning, WhatToDo(warning)};
  });
  if (complaint) {
    (void)fail(complaint);
    return exitCode;
  }
  if (interrupt_.wasInterrupted()) {
    return TellInterrupted(screen_);
  }
  if (!session_.takePlace()) {
    (void)fail({kNotReplaced, ElevationAdvice(backend_.runtimeDir)});
    return exitCode;
  }
  return tell(session, isFetched ? L"" : warning);
}

int SigningIn::tell(const AccountSession& session, const std::wstring& warning) {
  if (line_.json) {
    Json object = GoodJson();
    AddAccount(session, object);
    screen_.out.write(JsonText(object));
  } else {
    screen_.out.line(L"Signed in as " + PlainLine(session.email) + L". Plan: " + PlanText(session) +
                     L".");
  }
  if (!warning.empty()) {
    TellRefusal(warning, screen_);
  }
  return kExitDone;
}

bool SigningIn::fail(const Complaint& complaint) {
  exitCode = FailAccount(complaint, line_.json, screen_);
  return false;
}

bool SigningIn::wrongUse(const std::wstring& sentence) {
  exitCode = WrongUse(sentence, screen_);
  return false;
}

}  // namespace vpn
