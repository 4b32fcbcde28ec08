#include "client/commands/account_answer.h"
#include "client/commands/commands.h"
#include "client/exit_codes.h"
#include "client/service/presence.h"
#include "client/text/amounts.h"
#include "client/text/display_width.h"

namespace vpn {
namespace {

// The panel's statistics: users, commission, commission that is not confirmed yet, its rate.
Json InviteJson(const InviteInfo& info) {
  Json object = GoodJson();
  object["code"] = JsonValue(info.code);
  object["link"] = JsonValue(info.link);
  object["users"] = info.stat0;
  object["commissionCents"] = info.stat1;
  object["pendingCents"] = info.stat2;
  object["ratePercent"] = info.stat3;
  object["balanceCents"] = info.balance;
  return object;
}

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
  const Backend backend = FindBackend(FindServicePlace(line.runtimeDir).runtimeDir);
  InviteInfo info;
  std::wstring error;
  if (!WhileAsking(screen, [&] {
        return MakeControlPlane(backend, backend.sessionPath())->fetchInvite(info, error);
      })) {
    return FailAccount(error, line.json, screen);
  }
  if (line.json) {
    screen.out.write(JsonText(InviteJson(info)));
  } else {
    ShowInvite(info, screen.out);
  }
  return kExitDone;
}

}  // namespace vpn
