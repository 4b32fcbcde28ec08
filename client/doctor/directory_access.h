// Who may change what lies in a directory.
#ifndef TAVRIN_CLIENT_DOCTOR_DIRECTORY_ACCESS_H_
#define TAVRIN_CLIENT_DOCTOR_DIRECTORY_ACCESS_H_

#include <string>
#include <vector>

namespace vpn {

// The trustees beside the system, the administrators and the system's own installer to whom an
// access list in SDDL allows writing, in its order. A list that is not there at all allows
// everyone.
std::vector<std::wstring> ForeignWriters(const std::wstring& sddl);

}  // namespace vpn

#endif  // TAVRIN_CLIENT_DOCTOR_DIRECTORY_ACCESS_H_
