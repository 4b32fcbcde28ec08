// The service log: one UTF-8 file, one message and one line feed per line, nothing else.
#ifndef TAVRIN_SRC_RUNTIME_SERVICE_LOG_H_
#define TAVRIN_SRC_RUNTIME_SERVICE_LOG_H_

#include <string>

#include "src/common/mutex.h"

namespace vpn {

// Makes lines whole across the threads of this process, console echo included. No other lock is
// taken while it is held.
extern Mutex g_logLock;

// Appends one line to "tavrin-service.log" in `g_runtimeDir`, and echoes it to the console when
// `g_consoleEcho` is set. Whole lines across threads, and across processes that use this function;
// nothing that goes wrong reaches the caller. The file's line ends at the first NUL; an empty
// message writes nothing to the file.
void WriteLog(const std::wstring& message) VPN_EXCLUDES(g_logLock);

}  // namespace vpn

#endif  // TAVRIN_SRC_RUNTIME_SERVICE_LOG_H_
