// The panel's clock, by the Date that its server sends.
#ifndef TAVRIN_CLIENT_DOCTOR_PANEL_CLOCK_H_
#define TAVRIN_CLIENT_DOCTOR_PANEL_CLOCK_H_

#include <cstdint>
#include <string>

namespace vpn {

// How many seconds this machine's clock is ahead, negative when it is behind. False without an
// answer or a Date in it.
bool SecondsAheadOfPanel(const std::wstring& address, std::int64_t& ahead);

}  // namespace vpn

#endif  // TAVRIN_CLIENT_DOCTOR_PANEL_CLOCK_H_
