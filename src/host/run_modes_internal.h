// What the platform calls in the run modes.
#ifndef TAVRIN_SRC_HOST_RUN_MODES_INTERNAL_H_
#define TAVRIN_SRC_HOST_RUN_MODES_INTERNAL_H_

#include <windows.h>

namespace vpn {

// Called by the dispatcher; its arguments are ignored.
void WINAPI ServiceMain(DWORD argc, LPWSTR* argv);

// Stop and system shutdown end the server; every other control does nothing. Always NO_ERROR.
DWORD WINAPI ServiceControlHandler(DWORD control, DWORD eventType, void* eventData, void* context);

// Ctrl+C, Ctrl+Break and the closing of the console end the server.
BOOL WINAPI ConsoleControlHandler(DWORD event);

}  // namespace vpn

#endif  // TAVRIN_SRC_HOST_RUN_MODES_INTERNAL_H_
