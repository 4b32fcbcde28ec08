#include "client/commands/commands.h"
#include "client/commands/signing_in.h"

namespace vpn {

int RunResetPassword(const CommandLine& line, Screen& screen) {
  SigningIn signIn(line, screen);
  const bool isReset =
      signIn.begin() && signIn.run([&](ControlPlane& plane, std::wstring& error) {
        return plane.sendEmailCode(line.email, error);
      }) &&
      signIn.askPassword(true) && signIn.askMailCode() &&
      signIn.run([&](ControlPlane& plane, std::wstring& error) {
        return plane.resetPassword(line.email, signIn.mailCode, signIn.password, error);
      });
  return isReset ? signIn.prove() : signIn.exitCode;
}

}  // namespace vpn
