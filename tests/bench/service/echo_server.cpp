// echo_server LOG: the least that a server of the control pipe has to do for one exchange, with the
// calls that the service makes and none of its code. It takes a frame, appends one line to the
// file, opened and closed for it and with its lock on one byte, and answers with what a service
// without a tunnel says of its status. It runs until it is ended.
#include <windows.h>
#include <sddl.h>

#include <cstdint>

namespace {

constexpr wchar_t kPipe[] = L"\\\\.\\pipe\\TavrinBenchEcho";
constexpr wchar_t kAccess[] = L"D:P(A;;GA;;;SY)(A;;GA;;;BA)(A;;GA;;;AU)S:(ML;;NW;;;LW)";
constexpr DWORD kInstances = 8;
constexpr DWORD kBufferSize = 4096;
constexpr DWORD kLargest = 65536;
constexpr char kReply[] = R"({"ok":true,"running":false,"error":""})";
constexpr char kLine[] = "ipc op=status\n";
constexpr DWORD kLockOffsetHigh = 0x7FFFFFFF;

HANDLE CreateInstance() {
  SECURITY_ATTRIBUTES security = {};
  security.nLength = sizeof(security);
  ConvertStringSecurityDescriptorToSecurityDescriptorW(kAccess, SDDL_REVISION_1,
                                                       &security.lpSecurityDescriptor, nullptr);
  const HANDLE pipe = CreateNamedPipeW(kPipe, PIPE_ACCESS_DUPLEX, PIPE_REJECT_REMOTE_CLIENTS,
                                       kInstances, kBufferSize, kBufferSize, 0, &security);
  LocalFree(security.lpSecurityDescriptor);
  return pipe;
}

bool ReadExact(HANDLE pipe, char* bytes, DWORD size) {
  while (size > 0) {
    DWORD count = 0;
    if (ReadFile(pipe, bytes, size, &count, nullptr) == FALSE || count == 0) return false;
    bytes += count;
    size -= count;
  }
  return true;
}

bool ReadFrame(HANDLE pipe) {
  static char payload[kLargest];
  std::uint32_t length = 0;
  return ReadExact(pipe, reinterpret_cast<char*>(&length), sizeof(length)) && length <= kLargest &&
         ReadExact(pipe, payload, length);
}

void AppendLine(const wchar_t* path) {
  const HANDLE file =
      CreateFileW(path, FILE_APPEND_DATA | SYNCHRONIZE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                  OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
  OVERLAPPED place = {};
  place.OffsetHigh = kLockOffsetHigh;
  LockFileEx(file, LOCKFILE_EXCLUSIVE_LOCK | LOCKFILE_FAIL_IMMEDIATELY, 0, 1, 0, &place);
  DWORD written = 0;
  WriteFile(file, kLine, sizeof(kLine) - 1, &written, nullptr);
  UnlockFileEx(file, 0, 1, 0, &place);
  CloseHandle(file);
}

void WriteReply(HANDLE pipe) {
  const std::uint32_t length = sizeof(kReply) - 1;
  DWORD written = 0;
  WriteFile(pipe, &length, sizeof(length), &written, nullptr);
  WriteFile(pipe, kReply, length, &written, nullptr);
  FlushFileBuffers(pipe);
}

void ServeOneClient(const wchar_t* log) {
  const HANDLE pipe = CreateInstance();
  const bool isConnected =
      ConnectNamedPipe(pipe, nullptr) != FALSE || GetLastError() == ERROR_PIPE_CONNECTED;
  if (isConnected && ReadFrame(pipe)) {
    AppendLine(log);
    WriteReply(pipe);
  }
  DisconnectNamedPipe(pipe);
  CloseHandle(pipe);
}

}  // namespace

int wmain(int argc, wchar_t** argv) {
  if (argc != 2) return 1;
  for (;;) ServeOneClient(argv[1]);
}
