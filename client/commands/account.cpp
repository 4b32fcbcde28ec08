#include "client/commands/account_run.h"
#include "client/commands/asking.h"
#include "client/commands/commands.h"
#include "client/exit_codes.h"
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

}  // namespace

int RunAccount(const CommandLine& line, Screen& screen) {
  AccountRun run(line, screen);
  AccountSession session;
  const bool isFetched = run.ask(
      [&](ControlPlane& plane, std::wstring& error) { return plane.fetchAccount(session, error); });
  if (!isFetched && !session.loggedIn) {
    return run.fail();
  }
  const bool isSuspicious = session.nodes.empty() || session.planName.empty();
  if (isSuspicious && !run.look([&] { return LookAtAccount(run.backend, run.credentialPath); })) {
    return run.fail();
  }
  if (!line.json) {
    ShowAccount(session, screen.out);
  }
  Json answer = NewJson();
  PutFlag(answer, "ok", isFetched);
  PutAccount(answer, session);
  if (!isFetched) {
    PutText(answer, "error", run.error);
    TellRefusal(run.error, screen);  // why it is of no use for a connect
  }
  (void)run.done(answer);
  return isFetched ? kExitDone : kExitRefused;
}

}  // namespace vpn
