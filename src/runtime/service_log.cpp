#include "src/runtime/service_log.h"

#include <windows.h>

#include <cstdio>

#include "src/common/unique_handle.h"
#include "src/runtime/console_text.h"
#include "src/runtime/process_state.h"
#include "src/runtime/runtime_files.h"

namespace vpn {

Mutex g_logLock;

namespace {

constexpr int kTurnAttempts = 100;  // a millisecond apart, or a tick of the system clock

// One byte that no log ever reaches, so that a reader never meets the lock on it.
OVERLAPPED TurnByte() {
  OVERLAPPED place = {};
  place.OffsetHigh = 0x7FFFFFFF;
  return place;
}

// Wine looks for the file's end and writes there in two steps, and so may a remote file system:
// between them another process's line would be overwritten or torn. Waiting has an end, since
// whoever can read the log can also hold the byte; the line is then written all the same.
bool TakeTurn(HANDLE file) {
  for (int attempt = 0; attempt < kTurnAttempts; ++attempt) {
    OVERLAPPED place = TurnByte();
    if (LockFileEx(file, LOCKFILE_EXCLUSIVE_LOCK | LOCKFILE_FAIL_IMMEDIATELY, 0, 1, 0, &place) !=
        FALSE) {
      return true;
    }
    if (GetLastError() != ERROR_LOCK_VIOLATION) {
      return false;  // a file system without locks
    }
    Sleep(1);
  }
  return false;
}

// The place that stands for the file's end, wherever that is by then: on a disk of Windows finding
// it and writing there are one step, with a turn or without.
OVERLAPPED FileEnd() {
  OVERLAPPED place = {};
  place.Offset = 0xFFFFFFFF;
  place.OffsetHigh = 0xFFFFFFFF;
  return place;
}

void Append(HANDLE file, const std::string& bytes) {
  const bool hasTurn = TakeTurn(file);
  OVERLAPPED end = FileEnd();
  DWORD written = 0;
  (void)WriteFile(file, bytes.data(), static_cast<DWORD>(bytes.size()), &written, &end);
  if (hasTurn) {
    OVERLAPPED place = TurnByte();
    (void)UnlockFileEx(file, 0, 1, 0, &place);  // at the latest, closing the file does it
  }
}

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
  const MutexLock lock(g_logLock);
  if (g_consoleEcho.load() != 0) {
    WriteConsoleText(stdout, message + L'\n');
  }
  const KernelHandle file(CreateFileW((g_runtimeDir + L'\\' + kServiceLogFile).c_str(),
                                      GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                      OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
  if (!file) {
    return;
  }
  const std::string bytes = LogBytes(message);
  if (!bytes.empty()) {
    Append(file.get(), bytes);
  }
}

}  // namespace vpn
