// The three ways to run the pipe server. They differ in who delivers the stop, whether log lines
// are echoed, and whether `shutdown` ends the process.
#ifndef TAVRIN_SRC_HOST_RUN_MODES_H_
#define TAVRIN_SRC_HOST_RUN_MODES_H_

#include <windows.h>

namespace vpn {

inline constexpr wchar_t kServiceName[] = L"TavrinService";

// For development and support: echoes the log, ends at Ctrl+C. Returns the exit code.
int ConsoleMain();

// Hidden, for a user interface that starts it; ends with its owner. Returns the exit code.
int DaemonMain();

// Hands the process to the service manager. When there is none behind it, because the program was
// started by hand, runs `ConsoleMain` instead. Returns the exit code.
int RunUnderServiceManager();

// Called by the dispatcher; its arguments are ignored.
void WINAPI ServiceMain(DWORD argc, LPWSTR* argv);

// Stop and system shutdown end the server; every other control does nothing. Always NO_ERROR.
DWORD WINAPI ServiceControlHandler(DWORD control, DWORD eventType, void* eventData, void* context);

// Ctrl+C, Ctrl+Break and the closing of the console end the server.
BOOL WINAPI ConsoleControlHandler(DWORD event);

}  // namespace vpn

#endif  // TAVRIN_SRC_HOST_RUN_MODES_H_
