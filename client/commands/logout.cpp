#include <windows.h>

#include "client/account/new_session.h"
#include "client/commands/account_run.h"
#include "client/commands/commands.h"

namespace vpn {

int RunLogout(const CommandLine& line, Screen& screen) {
  AccountRun run(line, screen);
  const std::wstring& path = run.credentialPath;
  const NewSession leftover(path + kNewSessionEnding, path);  // of a sign-in that was ended
  const bool wasSignedIn = GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES;
  if (wasSignedIn && !run.plane->logout()) {
    return run.failWriting(L"session.json can't be deleted");
  }
  if (!line.json) {
    screen.out.line(wasSignedIn ? L"Signed out." : L"Nobody was signed in.");
  }
  Json answer = GoodJson();
  PutFlag(answer, "wasSignedIn", wasSignedIn);
  return run.done(answer);
}

}  // namespace vpn
