#include "client/commands/account_run.h"
#include "client/commands/commands.h"
#include "client/text/amounts.h"
#include "client/text/display_width.h"
#include "client/text/table.h"
#include "src/panel/account_reply.h"

namespace vpn {
namespace {

void ShowReferrals(const std::vector<ReferralRow>& rows, Output& out) {
  Table table({{L"Who"}, {L"Since"}, {L"Paid"}, {L"Commission", Table::Align::kRight}});
  for (const ReferralRow& row : rows) {
    table.addRow({PlainLine(row.emailMask), DateText(row.createdAt), row.paid ? L"yes" : L"no",
                  MoneyText(row.commission)});
  }
  for (const std::wstring& text : table.lines()) {
    out.line(text);
  }
}

Json ReferralsJson(const std::vector<ReferralRow>& rows, std::int32_t total) {
  Json object = GoodJson();
  PutNumber(object, "total", total);
  Json& list = PutList(object, "referrals");
  for (const ReferralRow& row : rows) {
    Json& entry = AppendObject(list);
    PutText(entry, "email", row.emailMask);
    PutNumber(entry, "created", row.createdAt);
    PutFlag(entry, "paid", row.paid);
    PutNumber(entry, "commissionCents", row.commission);
  }
  return object;
}

// A list without a row may be no list at all.
Complaint LookAtReferrals(const AccountRun& run) {
  const PanelClient panel = MakePanelClient(run.backend, run.credentialPath);
  return JudgeReply(run.backend, panel.get(L"/api/v1/user/tvn_invite/referrals?page=1"), "total");
}

}  // namespace

int RunReferrals(const CommandLine& line, Screen& screen) {
  AccountRun run(line, screen);
  std::vector<ReferralRow> rows;
  std::int32_t total = 0;
  if (!run.ask([&](ControlPlane& plane, std::wstring& error) {
        return plane.fetchReferrals(static_cast<std::int32_t>(line.page), rows, total, error);
      })) {
    return run.fail();
  }
  if (rows.empty() && !run.look([&] { return LookAtReferrals(run); })) {
    return run.fail();
  }
  if (!line.json) {
    if (!rows.empty()) {
      ShowReferrals(rows, screen.out);
    }
    screen.out.line(L"Page " + std::to_wstring(line.page) + L", " + std::to_wstring(total) +
                    L" in all.");
  }
  return run.done(ReferralsJson(rows, total));
}

}  // namespace vpn
