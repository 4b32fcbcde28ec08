// What the panel answers at each of its paths.
#ifndef TAVRIN_TESTS_PANEL_ENDPOINTS_H_
#define TAVRIN_TESTS_PANEL_ENDPOINTS_H_

#include <cstdint>
#include <string>

#include <httplib.h>

#include "tests/panel/replies.h"

namespace panel {

// One request on its way through an endpoint.
struct Call {
  Json& state;
  const httplib::Request& request;
  Json input;            // the JSON body; an empty object when there is none or it can't be read
  Json* user = nullptr;  // who has signed the request; set wherever an endpoint needs it

  // A text from the JSON body, the form or the query; empty when it isn't there.
  std::string Text(const char* key) const;
  // Likewise a number.
  std::int64_t Number(const char* key) const;
};

// Finds the endpoint and, for those that need one, the user.
Reply Route(Json& state, const httplib::Request& request);

Reply GuestConfig(Call& call);
Reply Login(Call& call);
Reply Register(Call& call);
Reply Forget(Call& call);
Reply SendEmailVerify(Call& call);

Reply GetSubscribe(Call& call);
Reply UserInfo(Call& call);
Reply ClientSubscribe(Call& call);
Reply ServerFetch(Call& call);

Reply PlanFetch(Call& call);
Reply OrderFetch(Call& call);
Reply OrderSave(Call& call);
Reply OrderCancel(Call& call);
Reply OrderCheckout(Call& call);
Reply OrderCheck(Call& call);
Reply PaymentMethods(Call& call);

Reply InviteFetch(Call& call);
Reply InviteSave(Call& call);
Reply Referrals(Call& call);
Reply ClaimDevice(Call& call);

// Shared between them.
Json* FindBy(Json& rows, const char* key, const Json& value);
std::int64_t Now();
// Letters and digits; a reset panel gives the same ones again.
std::string FreshText(Json& state, std::size_t length);
std::string FreshDigits(Json& state, std::size_t length);
// A plan's row as it stands inside other answers: prices in currency units, under other names.
Json PlanColumns(const Json& plan);
// Banned, without traffic, run out: such a user gets no nodes.
bool IsAvailable(const Json& user);
// Marks an open order as paid and gives its user the plan.
bool PayOrder(Json& state, const std::string& tradeNo);

}  // namespace panel

#endif  // TAVRIN_TESTS_PANEL_ENDPOINTS_H_
