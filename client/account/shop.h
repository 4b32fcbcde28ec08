// What can be bought, and what has been ordered.
#ifndef TAVRIN_CLIENT_ACCOUNT_SHOP_H_
#define TAVRIN_CLIENT_ACCOUNT_SHOP_H_

#include <string>
#include <vector>

#include "client/account/backend.h"
#include "client/json/json_text.h"

namespace vpn {

// The row of a plan, by its number or name, and of a period, by its key (with or without "_price")
// or label; null when there is none.
const PlanOption* FindPlan(const std::vector<PlanOption>& plans, const std::wstring& plan,
                           const std::wstring& period);

void PutPlan(Json& object, const PlanOption& plan);

struct OpenOrder {
  std::wstring tradeNo;
  std::wstring planName;
  std::wstring period;
  std::int64_t cents = 0;
};

// The orders that wait for their payment. False when the panel does not tell.
bool FetchOpenOrders(const Backend& backend, std::vector<OpenOrder>& orders);

enum class OrderState { kOpen, kPaid, kCancelled };

// As the interface has it, and what it does not tell of an unpaid order: that it is cancelled, or
// that the answer is no panel's.
Complaint FetchOrderState(const Backend& backend, ControlPlane& plane, const std::wstring& tradeNo,
                          OrderState& state);

}  // namespace vpn

#endif  // TAVRIN_CLIENT_ACCOUNT_SHOP_H_
