// What the files of this room call in each other, and what only the tests call beside them.
#ifndef TAVRIN_SRC_HOST_HOST_INTERNAL_H_
#define TAVRIN_SRC_HOST_HOST_INTERNAL_H_

#include <windows.h>

namespace vpn {

// owner_watch.cpp

// Thread body: waits for the end of the process `g_ownerPid`, then stops this one. An owner that
// can't be opened (gone already, say) is logged, and the process goes on with no owner.
DWORD WINAPI OwnerWatch(void* unused);

// run_modes.cpp

// Called by the dispatcher; its arguments are ignored.
void WINAPI ServiceMain(DWORD argc, LPWSTR* argv);

// Stop and system shutdown end the server; every other control does nothing. Always NO_ERROR.
DWORD WINAPI ServiceControlHandler(DWORD control, DWORD eventType, void* eventData, void* context);

// Ctrl+C, Ctrl+Break and the closing of the console end the server.
BOOL WINAPI ConsoleControlHandler(DWORD event);

// service_install.cpp

// Asks the service to stop and looks up to 40 times, 250 ms apart. 0 when it has stopped, the error
// of a failed query, or ERROR_TIMEOUT.
DWORD StopServiceAndWait(SC_HANDLE service);

}  // namespace vpn

#endif  // TAVRIN_SRC_HOST_HOST_INTERNAL_H_
