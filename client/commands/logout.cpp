#include <windows.h>

#include "client/account/new_session.h"
#include "client/commands/account_answer.h"
#include "client/commands/commands.h"
#include "client/exit_codes.h"
#include "client/service/presence.h"

namespace vpn {

int RunLogout(const CommandLine& line, Screen& screen) {
  const Backend backend = FindBackend(FindServicePlace(line.runtimeDir).runtimeDir);
  const NewSession leftover(backend);  // of a sign-in that was ended; goes too
  const std::wstring path = backend.sessionPath();
  const bool wasSignedIn = GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES;
  if (wasSignedIn && !MakeControlPlane(backend, path)->logout()) {
    return FailAccount(
        Complaint{L"session.json can't be deleted.", ElevationAdvice(backend.runtimeDir)},
        line.json, screen);
  }
  if (line.json) {
    Json object = GoodJson();
    object["wasSignedIn"] = wasSignedIn;
    screen.out.write(JsonText(object));
  } else {
    screen.out.line(wasSignedIn ? L"Signed out." : L"Nobody was signed in.");
  }
  return kExitDone;
}

}  // namespace vpn
