#include "src/host/service_log.h"

#include <windows.h>
#include <share.h>

#include <cstdio>

#include "src/common/mutex.h"
#include "src/common/unique_handle.h"
#include "src/host/console_text.h"
#include "src/host/process_state.h"

namespace vpn {
namespace {

// Makes lines whole across the threads of this process, console echo included. A leaf: nothing
// else is taken while it is held.
Mutex LogLock;

// The message up to its first NUL; a lone terminator counts as empty.
std::string LogBytes(const std::wstring& message) {
  const int size =
      WideCharToMultiByte(CP_UTF8, 0, message.c_str(), -1, nullptr, 0, nullptr, nullptr);
  if (size <= 1) {
    return {};
  }
  std::string bytes(static_cast<size_t>(size), '\0');
  (void)WideCharToMultiByte(CP_UTF8, 0, message.c_str(), -1, bytes.data(), size, nullptr, nullptr);
  bytes.back() = '\n';
  return bytes;
}

}  // namespace

void WriteLog(const std::wstring& message) {
  const MutexLock lock(LogLock);
  if (ConsoleEcho.load() != 0) {
    WriteConsoleText(stdout, message + L'\n');
  }
  const UniqueFile file(
      _wfsopen((RuntimeDir + L"\\tavrin-service.log").c_str(), L"ab", _SH_DENYNO));
  if (!file) {
    return;
  }
  // Terminator replaced by the line feed, so that a line is one write.
  const std::string bytes = LogBytes(message);
  (void)std::fwrite(bytes.data(), 1, bytes.size(), file.get());
}

}  // namespace vpn
