// Process-wide state. None of it is ever destroyed, so that a thread that outlives `wmain` still
// finds it.
#ifndef TAVRIN_SRC_RUNTIME_PROCESS_STATE_H_
#define TAVRIN_SRC_RUNTIME_PROCESS_STATE_H_

#include <atomic>
#include <cstdint>
#include <string>

namespace vpn {

// Directory of the helper programs, the generated and account files, and the log. Written by the
// entry point only, before any server starts; read without a lock.
extern std::wstring& g_runtimeDir;

// Flags: written with an exchange from any thread, read with a plain load.
extern std::atomic<std::uint8_t> g_stopRequested;    // the pipe server shall end
extern std::atomic<std::uint8_t> g_consoleEcho;      // log lines also go to the console
extern std::atomic<std::uint8_t> g_shutdownAllowed;  // `shutdown` also ends the process

// Process whose end ends this one in daemon mode; 0 means none. Written by the entry point only.
extern std::uint32_t g_ownerPid;

// Strips trailing NUL units and assigns the rest to `g_runtimeDir`; if nothing is left,
// `g_runtimeDir` keeps its value.
void SetRuntimeDir(std::wstring text);

}  // namespace vpn

#endif  // TAVRIN_SRC_RUNTIME_PROCESS_STATE_H_
