// A part of service_install.cpp, for its tests.
#ifndef TAVRIN_SRC_HOST_SERVICE_INSTALL_INTERNAL_H_
#define TAVRIN_SRC_HOST_SERVICE_INSTALL_INTERNAL_H_

#include <windows.h>

namespace vpn {

// Asks the service to stop and looks up to 40 times, 250 ms apart. 0 when it has stopped, the error
// of a failed query, or ERROR_TIMEOUT.
DWORD StopServiceAndWait(SC_HANDLE service);

}  // namespace vpn

#endif  // TAVRIN_SRC_HOST_SERVICE_INSTALL_INTERNAL_H_
