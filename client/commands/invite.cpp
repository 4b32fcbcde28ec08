#include "client/commands/account_run.h"
#include "client/commands/commands.h"
#include "client/text/amounts.h"
#include "client/text/display_width.h"

namespace vpn {
namespace {

// The panel's statistics are users, commission, commission that is not confirmed yet, and its rate.
void ShowInvite(const InviteInfo& info, Output& out) {
  out.line(L"Code         " + PlainLine(info.code));
  out.line(L"Link         " + PlainLine(info.link));
  out.line(L"Came by it   " + std::to_wstring(info.stat0));
  out.line(L"Commission   " + MoneyText(info.stat1) + L", and " + MoneyText(info.stat2) +
           L" not confirmed yet, at " + std::to_wstring(info.stat3) + L" %");
  out.line(L"Balance      " + MoneyText(info.balance));
}

}  // namespace

int RunInvite(const CommandLine& line, Screen& screen) {
  AccountRun run(line, screen);
  InviteInfo info;
  if (!run.ask([&](ControlPlane& plane, std::wstring& error) {
        return plane.fetchInvite(info, error);
      })) {
    return run.fail();
  }
  if (!line.json) {
    ShowInvite(info, screen.out);
  }
  Json answer = GoodJson();
  PutText(answer, "code", info.code);
  PutText(answer, "link", info.link);
  PutNumber(answer, "users", info.stat0);
  PutNumber(answer, "commissionCents", info.stat1);
  PutNumber(answer, "pendingCents", info.stat2);
  PutNumber(answer, "ratePercent", info.stat3);
  PutNumber(answer, "balanceCents", info.balance);
  return run.done(answer);
}

}  // namespace vpn
