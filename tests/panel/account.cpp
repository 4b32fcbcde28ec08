// The signed-in user's own data.
#include "tests/panel/endpoints.h"

namespace panel {
namespace {

Json PlanOf(Json& state, const Json& user) {
  Json* const plan = FindBy(state["plans"], "id", user["plan_id"]);
  return plan == nullptr ? Json() : PlanColumns(*plan);
}

}  // namespace

bool IsAvailable(const Json& user) {
  const Json& expiry = user["expired_at"];
  return user["banned"] != true && user["transfer_enable"] > 0 &&
         (!expiry.is_number() || expiry > Now());
}

// Without a plan the key stands last, and null.
Reply GetSubscribe(Call& call) {
  Json& user = *call.user;
  Json data;
  for (const char* key : {"plan_id", "token", "expired_at", "u", "d", "transfer_enable", "email",
                          "uuid", "device_limit", "speed_limit", "next_reset_at"}) {
    data[key] = user[key];
  }
  const Json plan = PlanOf(call.state, user);
  if (!plan.is_null()) data["plan"] = plan;
  data["subscribe_url"] =
      call.state["subscribeUrl"].get<std::string>() + user["token"].get<std::string>();
  data["reset_day"] = plan.is_null() ? Json() : Json(12);
  if (plan.is_null() && call.state["family"] == "xboard") data["plan"] = nullptr;
  if (call.state["subscriptionToken"] != true) data.erase("token");
  return Success(call.state, data);
}

Reply UserInfo(Call& call) {
  const Json& user = *call.user;
  return Success(call.state, {{"email", user["email"]},
                              {"transfer_enable", user["transfer_enable"]},
                              {"last_login_at", nullptr},
                              {"created_at", 1700000000},
                              {"banned", user["banned"]},
                              {"remind_expire", true},
                              {"remind_traffic", true},
                              {"expired_at", user["expired_at"]},
                              {"balance", user["balance"]},
                              {"commission_balance", 70},
                              {"plan_id", user["plan_id"]},
                              {"discount", nullptr},
                              {"commission_rate", nullptr},
                              {"telegram_id", nullptr},
                              {"uuid", user["uuid"]},
                              {"avatar_url", "https://cdn.panel.example/avatar/1"}});
}

}  // namespace panel
