#include "client/commands/account_answer.h"
#include "client/commands/commands.h"
#include "client/exit_codes.h"
#include "client/service/presence.h"
#include "client/text/amounts.h"
#include "client/text/display_width.h"
#include "client/text/table.h"
#include "src/panel/account_reply.h"

namespace vpn {
namespace {

struct Referrals {
  std::vector<ReferralRow> rows;
  std::int32_t total = 0;
};

Json ReferralsJson(const Referrals& referrals) {
  Json object = GoodJson();
  object["total"] = referrals.total;
  object["referrals"] = Json::array();
  for (const ReferralRow& row : referrals.rows) {
    Json entry;
    entry["email"] = JsonValue(row.emailMask);
    entry["created"] = row.createdAt;
    entry["paid"] = row.paid;
    entry["commissionCents"] = row.commission;
    object["referrals"].push_back(std::move(entry));
  }
  return object;
}

void ShowReferrals(const Referrals& referrals, std::uint32_t page, Output& out) {
  if (!referrals.rows.empty()) {
    Table table({{L"Who"}, {L"Since"}, {L"Paid"}, {L"Commission", Table::Align::kRight}});
    for (const ReferralRow& row : referrals.rows) {
      table.addRow({PlainLine(row.emailMask), DateText(row.createdAt), row.paid ? L"yes" : L"no",
                    MoneyText(row.commission)});
    }
    for (const std::wstring& text : table.lines()) {
      out.line(text);
    }
  }
  out.line(L"Page " + std::to_wstring(page) + L", " + std::to_wstring(referrals.total) +
           L" in all.");
}

// A list without a row may be no list at all.
Complaint LookAtReferrals(const Backend& backend) {
  return JudgeReply(backend,
                    MakePanelClient(backend, backend.sessionPath())
                        .get(L"/api/v1/user/tvn_invite/referrals?page=1"),
                    "total");
}

}  // namespace

int RunReferrals(const CommandLine& line, Screen& screen) {
  const Backend backend = FindBackend(FindServicePlace(line.runtimeDir).runtimeDir);
  Referrals referrals;
  std::wstring error;
  if (!WhileAsking(screen, [&] {
        return MakeControlPlane(backend, backend.sessionPath())
            ->fetchReferrals(static_cast<std::int32_t>(line.page), referrals.rows, referrals.total,
                             error);
      })) {
    return FailAccount(error, line.json, screen);
  }
  if (referrals.rows.empty()) {
    if (const Complaint complaint = LookAtReferrals(backend)) {
      return FailAccount(complaint, line.json, screen);
    }
  }
  if (line.json) {
    screen.out.write(JsonText(ReferralsJson(referrals)));
  } else {
    ShowReferrals(referrals, line.page, screen.out);
  }
  return kExitDone;
}

}  // namespace vpn
