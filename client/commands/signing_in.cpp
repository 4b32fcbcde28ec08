#include "client/commands/signing_in.h"

#include <algorithm>

#include "client/commands/asking.h"
#include "client/exit_codes.h"
#include "client/text/display_width.h"

namespace vpn {
namespace {

bool IsControl(wchar_t unit) {
  return unit < L' ' || unit == 0x7F;
}

bool HasControl(const std::wstring& text) {
  return std::any_of(text.begin(), text.end(), IsControl);
}

// One sign in the middle, and nothing that would break the file of the session.
bool LooksLikeEmail(const std::wstring& text) {
  const size_t sign = text.find(L'@');
  return sign != std::wstring::npos && sign > 0 && sign + 1 < text.size() &&
         text.find(L'@', sign + 1) == std::wstring::npos &&
         text.find_first_of(L" \"\\") == std::wstring::npos && !HasControl(text);
}

}  // namespace

SigningIn::SigningIn(const CommandLine& line, Screen& screen)
    : run_(line, screen, kNewSessionEnding),
      session_(run_.credentialPath, run_.backend.sessionPath()) {}

bool SigningIn::begin() {
  const std::wstring& email = run_.line.email;
  if (run_.backend.isPanel() && !LooksLikeEmail(email)) {
    return wrongUse(L"\"" + email + L"\" is no e-mail address");
  }
  const Status written = session_.tryWriting(run_.backend.isPanel());
  return written || over(run_.failWriting(written.text()));
}

bool SigningIn::answer(const wchar_t* question, Echo echo, std::wstring& text) {
  const bool isPrepared = run_.line.passwordStdin;
  if (!isPrepared && !HasKeyboard()) {
    return wrongUse(
        L"there is no console to ask for the password; give it on the standard input with "
        L"--password-stdin");
  }
  Answer given =
      isPrepared ? ReadInputLine() : AskPerson(question, echo, interrupt_, run_.screen.err);
  if (given.kind == Answer::Kind::kInterrupted) {
    return over(run_.interrupted());
  }
  text = std::move(given.text);
  return given.kind == Answer::Kind::kLine ||
         wrongUse(L"the input ended before the answer to: " + std::wstring(question));
}

bool SigningIn::askPassword(bool isNew) {
  if (!answer(isNew ? L"New password: " : L"Password: ", Echo::kHidden, password)) {
    return false;
  }
  if (password.empty()) {
    return wrongUse(L"the password is empty");
  }
  if (!isNew) {
    return true;
  }
  if (HasControl(password)) {  // panels drop a request whose text holds one
    return wrongUse(L"the password holds a control character, which panels do not take");
  }
  std::wstring again = password;
  if (!run_.line.passwordStdin && !answer(L"The same again: ", Echo::kHidden, again)) {
    return false;
  }
  return again == password || wrongUse(L"the two passwords differ");
}

bool SigningIn::askMailCode() {
  run_.screen.err.line(L"A code has been mailed to " + PlainLine(run_.line.email) + L".");
  return answer(L"Code from the mail: ", Echo::kShown, mailCode);
}

bool SigningIn::askInviteCode() {
  if (run_.line.passwordStdin || !HasKeyboard()) {
    return wrongUse(L"the panel wants an invite code; give it with --invite CODE");
  }
  return answer(L"Invite code: ", Echo::kShown, inviteCode);
}

int SigningIn::prove() {
  AccountSession session;
  run_.error.clear();
  const bool isFetched = run_.ask([&](ControlPlane&, std::wstring& error) {
    return MakeControlPlane(run_.backend, run_.credentialPath)->fetchAccount(session, error);
  });
  const bool isProven = (isFetched || session.loggedIn) &&
                        run_.look([&] { return LookAtAccount(run_.backend, run_.credentialPath); });
  if (!isProven) {
    return run_.fail();
  }
  if (interrupt_.wasInterrupted()) {
    return run_.interrupted();
  }
  if (!session_.takePlace()) {
    return run_.failWriting(L"session.json can't be replaced");
  }
  return tell(session, isFetched);
}

int SigningIn::tell(const AccountSession& session, bool isFetched) {
  Json object = GoodJson();
  PutAccount(object, session);
  if (!run_.line.json) {
    run_.screen.out.line(L"Signed in as " + PlainLine(session.email) + L". Plan: " +
                         PlanText(session) + L".");
  }
  if (!isFetched) {
    TellRefusal(run_.error, run_.screen);  // no reason against the session, but against a connect
  }
  return run_.done(object);
}

bool SigningIn::over(int code) {
  exitCode = code;
  return false;
}

}  // namespace vpn
