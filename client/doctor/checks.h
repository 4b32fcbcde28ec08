// The doctor's checks. None of them changes anything on the machine.
#ifndef TAVRIN_CLIENT_DOCTOR_CHECKS_H_
#define TAVRIN_CLIENT_DOCTOR_CHECKS_H_

#include <string>
#include <vector>

#include "client/doctor/finding.h"

namespace vpn {

struct Check {
  const char* key;       // for scripts
  const wchar_t* title;  // for people
  Finding (*run)(const Patient& patient);
};

// In the order in which they are shown.
const std::vector<Check>& AllChecks();

// Asks the service, and looks at what the checks share.
Patient ExaminePatient(const std::wstring& chosenRuntime);

Finding CheckWindows(const Patient& patient);
Finding CheckService(const Patient& patient);
Finding CheckDirectoryAccess(const Patient& patient);
Finding CheckPrograms(const Patient& patient);
Finding CheckConfiguration(const Patient& patient);
Finding CheckAccount(const Patient& patient);
Finding CheckPanel(const Patient& patient);
Finding CheckPhysicalRoute(const Patient& patient);
Finding CheckAdapters(const Patient& patient);
Finding CheckUsersProxy(const Patient& patient);
Finding CheckServicesProxy(const Patient& patient);
Finding CheckPort(const Patient& patient);
Finding CheckLeftovers(const Patient& patient);
Finding CheckLastConnect(const Patient& patient);

}  // namespace vpn

#endif  // TAVRIN_CLIENT_DOCTOR_CHECKS_H_
