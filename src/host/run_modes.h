// The three ways to run the pipe server. They differ in who delivers the stop, whether log lines
// are echoed, and whether `shutdown` ends the process.
#ifndef TAVRIN_SRC_HOST_RUN_MODES_H_
#define TAVRIN_SRC_HOST_RUN_MODES_H_

namespace vpn {

inline constexpr wchar_t kServiceName[] = L"TavrinService";

// For development and support: echoes the log, ends at Ctrl+C. Returns the exit code.
int ConsoleMain();

// Hidden, for a user interface that starts it; ends with its owner. Returns the exit code.
int DaemonMain();

// Hands the process to the service manager. When there is none behind it, because the program was
// started by hand, runs `ConsoleMain` instead. Returns the exit code.
int RunUnderServiceManager();

}  // namespace vpn

#endif  // TAVRIN_SRC_HOST_RUN_MODES_H_
