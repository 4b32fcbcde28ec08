// Registers and removes the Windows service. Both commands need an elevated caller, report on the
// console only, and return the process's exit code.
#ifndef TAVRIN_SRC_HOST_SERVICE_INSTALL_H_
#define TAVRIN_SRC_HOST_SERVICE_INSTALL_H_

namespace vpn {

// Replaces a service that exists, freezes `g_runtimeDir` into the command line of the new one, and
// starts it. A failure undoes nothing.
int InstallService();

// No service to remove is no failure.
int UninstallService();

}  // namespace vpn

#endif  // TAVRIN_SRC_HOST_SERVICE_INSTALL_H_
