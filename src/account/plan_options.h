// The price table: one row for each plan and price period, with everything made into text.
#ifndef TAVRIN_SRC_ACCOUNT_PLAN_OPTIONS_H_
#define TAVRIN_SRC_ACCOUNT_PLAN_OPTIONS_H_

#include <string>
#include <vector>

#include "src/account/control_plane.h"

namespace vpn {

// Appends the rows of one plan object of the panel, in the order of the periods. A plan without a
// positive id, and a period without a price of 0 or more, gives none.
void AddPlan(const std::string& planJson, std::vector<PlanOption>& plans);

// Tags the two rows with the lowest price per day, of equal ones the first; free and one-time rows
// take no part.
void TagBestOffers(std::vector<PlanOption>& plans);

}  // namespace vpn

#endif  // TAVRIN_SRC_ACCOUNT_PLAN_OPTIONS_H_
