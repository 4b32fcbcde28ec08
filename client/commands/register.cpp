#include "client/commands/commands.h"
#include "client/commands/signing_in.h"

namespace vpn {
namespace {

// What the panel wants besides an e-mail and a password.
bool GiveWhatIsWanted(const CommandLine& line, SigningIn& signIn) {
  RegisterConfig wanted;
  if (!signIn.run([&](ControlPlane& plane, std::wstring& error) {
        return plane.fetchRegisterConfig(wanted, error);
      })) {
    return false;
  }
  if (wanted.recaptcha) {
    return signIn.over(
        signIn.account().fail(L"The panel wants a captcha, which only its own page can show",
                              L"register on the panel's web page, then run tavrinctl login"));
  }
  signIn.inviteCode = line.inviteCode;
  const bool isInvited = !wanted.inviteForce || !line.inviteCode.empty() || signIn.askInviteCode();
  if (!isInvited || !signIn.askPassword(true)) {
    return false;
  }
  return !wanted.emailVerify || (signIn.run([&](ControlPlane& plane, std::wstring& error) {
    return plane.sendEmailCode(line.email, error);
  }) && signIn.askMailCode());
}

}  // namespace

int RunRegister(const CommandLine& line, Screen& screen) {
  SigningIn signIn(line, screen);
  const bool isRegistered =
      signIn.begin() && GiveWhatIsWanted(line, signIn) &&
      signIn.run([&](ControlPlane& plane, std::wstring& error) {
        return plane.registerAccount(line.email, signIn.password, signIn.inviteCode,
                                     signIn.mailCode, error);
      });
  return isRegistered ? signIn.prove() : signIn.exitCode;
}

}  // namespace vpn
