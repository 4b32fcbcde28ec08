#include "client/commands/commands.h"
#include "client/commands/signing_in.h"

namespace vpn {

int RunLogin(const CommandLine& line, Screen& screen) {
  SigningIn signIn(line, screen);
  const bool isSignedIn = signIn.begin() && signIn.askPassword(false) &&
                          signIn.run([&](ControlPlane& plane, std::wstring& error) {
                            return plane.login(line.email, signIn.password, error);
                          });
  return isSignedIn ? signIn.prove() : signIn.exitCode;
}

}  // namespace vpn
