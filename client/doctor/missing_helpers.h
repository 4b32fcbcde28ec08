// Helper programs that were never put in their place, as after the installation of a package
// without them.
#ifndef TAVRIN_CLIENT_DOCTOR_MISSING_HELPERS_H_
#define TAVRIN_CLIENT_DOCTOR_MISSING_HELPERS_H_

#include <optional>

#include "client/doctor/finding.h"

namespace vpn {

// All that is missing, when it is more than one file; nothing else is looked at.
std::optional<Finding> SeveralMissingHelpers(const Patient& patient);

}  // namespace vpn

#endif  // TAVRIN_CLIENT_DOCTOR_MISSING_HELPERS_H_
