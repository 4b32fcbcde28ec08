// Registers and removes the Windows service. Both commands need an elevated caller, report on the
// console only, and return the process's exit code.
#ifndef TAVRIN_SRC_HOST_SERVICE_INSTALL_H_
#define TAVRIN_SRC_HOST_SERVICE_INSTALL_H_

#include <windows.h>

namespace vpn {

// Replaces a service that exists, freezes `RuntimeDir` into the command line of the new one, and
// starts it. A failure undoes nothing.
int InstallService();

// No service to remove is no failure.
int UninstallService();

// Asks the service to stop and looks up to 40 times, 250 ms apart. 0 when it has stopped, the error
// of a failed query, or ERROR_TIMEOUT.
DWORD StopServiceAndWait(SC_HANDLE service);

}  // namespace vpn

#endif  // TAVRIN_SRC_HOST_SERVICE_INSTALL_H_
