// Who may change what lies in a directory, by its security descriptor in SDDL.
#ifndef TAVRIN_CLIENT_DOCTOR_ACCESS_LIST_H_
#define TAVRIN_CLIENT_DOCTOR_ACCESS_LIST_H_

#include <string>
#include <vector>

namespace vpn {

// The trustees beside the system, the administrators and the system's own installer that may add,
// change or delete files, in the list's order, each once. A conditional entry counts as if its
// condition were true. A list that is not there at all allows everyone. The owner comes last: it
// may always rewrite the list.
std::vector<std::wstring> ForeignWriters(const std::wstring& sddl);

}  // namespace vpn

#endif  // TAVRIN_CLIENT_DOCTOR_ACCESS_LIST_H_
