#include "client/commands/account_answer.h"
#include "client/commands/asking.h"
#include "client/commands/commands.h"
#include "client/exit_codes.h"
#include "client/service/presence.h"
#include "client/text/amounts.h"
#include "client/text/display_width.h"

namespace vpn {
namespace {

constexpr size_t kBarWidth = 20;

std::wstring DevicesText(const AccountSession& session) {
  const std::wstring limit = std::to_wstring(session.deviceLimit);
  if (session.deviceLimit <= 0) {
    return L"no limit";
  }
  return session.deviceUsed > 0 ? std::to_wstring(session.deviceUsed) + L" of " + limit
                                : limit + L" at most";
}

void ShowAccount(const AccountSession& session, Output& out) {
  out.line(L"Account   " + PlainLine(session.email));
  out.line(L"Plan      " + PlanText(session));
  if (session.transferEnable > 0) {
    out.line(L"Traffic   " + BarText(session.transferUsed, session.transferEnable, kBarWidth) +
             L"  " + GigabytesText(session.transferUsed) + L" of " +
             GigabytesText(session.transferEnable));
  }
  out.line(L"Devices   " + DevicesText(session));
  out.line(L"Nodes     " + std::to_wstring(session.nodes.size()));
}

// The account, and below it why it is of no use for a connect.
int TellAccount(const AccountSession& session, const std::wstring& error, bool json,
                Screen& screen) {
  if (json) {
    Json object = GoodJson();
    object["ok"] = error.empty();
    AddAccount(session, object);
    if (!error.empty()) {
      object["error"] = JsonValue(error);
    }
    screen.out.write(JsonText(object));
  } else {
    ShowAccount(session, screen.out);
  }
  if (error.empty()) {
    return kExitDone;
  }
  TellRefusal(error, screen);
  return kExitRefused;
}

}  // namespace

int RunAccount(const CommandLine& line, Screen& screen) {
  const Backend backend = FindBackend(FindServicePlace(line.runtimeDir).runtimeDir);
  AccountSession session;
  std::wstring error;
  const bool isFetched = WhileAsking(screen, [&] {
    return MakeControlPlane(backend, backend.sessionPath())->fetchAccount(session, error);
  });
  if (!isFetched && !session.loggedIn) {
    return FailAccount(error, line.json, screen);
  }
  if (session.nodes.empty() || session.planName.empty()) {
    if (const Complaint complaint = LookAtAccount(backend, backend.sessionPath())) {
      return FailAccount(complaint, line.json, screen);
    }
  }
  return TellAccount(session, isFetched ? L"" : error, line.json, screen);
}

}  // namespace vpn
