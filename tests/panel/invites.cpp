#include <algorithm>

#include "tests/panel/endpoints.h"

namespace panel {

// Used codes are left out.
Reply InviteFetch(Call& call) {
  Json codes = Json::array();
  for (const Json& code : call.user->at("codes")) {
    if (code.at("status") == 0) codes.push_back(code);
  }
  return Success(call.state, {{"codes", codes}, {"stat", call.user->at("inviteStat")}});
}

Reply InviteSave(Call& call) {
  Json& codes = (*call.user)["codes"];
  if (codes.size() >= 5) return Refusal(call.state, 400, "已达到创建数量上限");
  codes.push_back({{"id", codes.size() + 1},
                   {"user_id", (*call.user)["id"]},
                   {"code", FreshText(call.state, 8)},
                   {"status", 0},
                   {"pv", 0},
                   {"created_at", 1760000000},
                   {"updated_at", 1760000000}});
  return Success(call.state, true);
}

// The product's own route on the panel, without an envelope.
Reply Referrals(Call& call) {
  constexpr std::int64_t kPageSize = 10;
  const Json& all = call.user->at("referrals");
  const auto total = static_cast<std::int64_t>(all.size());
  const std::int64_t first = (std::max<std::int64_t>(call.Number("page"), 1) - 1) * kPageSize;
  Json rows = Json::array();
  for (std::int64_t i = first; i < std::min(first + kPageSize, total); ++i) {
    rows.push_back(all[static_cast<std::size_t>(i)]);
  }
  return Plain(200, {{"total", total}, {"data", rows}});
}

}  // namespace panel
