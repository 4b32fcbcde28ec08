#include "src/control/pipe_server.h"

#include <windows.h>
#include <sddl.h>

#include <exception>
#include <memory>
#include <string>

#include "src/common/unique_handle.h"
#include "src/control/account_cache.h"
#include "src/control/dispatch.h"
#include "src/control/tunnel_instance.h"
#include "src/runtime/process_state.h"

namespace vpn {
namespace {

// Who may send requests. Nothing further checks who a client is.
constexpr wchar_t kPipeAccess[] =
    L"D:P"               // a protected list: nothing is inherited
    L"(A;;GA;;;SY)"      // generic all to the local system,
    L"(A;;GA;;;BA)"      // to the administrators,
    L"(A;;GA;;;AU)"      // and to every authenticated user
    L"S:(ML;;NW;;;LW)";  // low label, no write-up: processes of low integrity may connect too

// One is enough for this server, which serves one client at a time. The room beyond it lets a
// second process of the service, say a daemon beside a console, create its own instance meanwhile.
constexpr DWORD kMaxInstances = 8;
constexpr DWORD kBufferSize = 4096;  // bytes, each direction
constexpr DWORD kRetryPause = 500;   // milliseconds

struct LocalMemoryTraits : NullIsEmpty<PSECURITY_DESCRIPTOR> {
  static void close(PSECURITY_DESCRIPTOR value) { (void)LocalFree(value); }
};

DWORD WINAPI WarmUpThread(void* ownedRuntimeDir) {
  const std::unique_ptr<std::wstring> runtimeDir(static_cast<std::wstring*>(ownedRuntimeDir));
  WarmAccountCache(*runtimeDir);
  return 0;
}

// Nobody waits for the thread; one that can't be started ends the process.
void StartWarmUp() {
  auto runtimeDir = std::make_unique<std::wstring>(g_runtimeDir);
  const KernelHandle thread(CreateThread(nullptr, 0, WarmUpThread, runtimeDir.get(), 0, nullptr));
  if (!thread) {
    std::terminate();
  }
  (void)runtimeDir.release();  // the thread frees it
}

KernelHandle CreatePipeInstance() {
  UniqueHandle<LocalMemoryTraits> descriptor;
  if (ConvertStringSecurityDescriptorToSecurityDescriptorW(kPipeAccess, SDDL_REVISION_1,
                                                           descriptor.put(), nullptr) == FALSE) {
    return {};
  }
  SECURITY_ATTRIBUTES security = {};
  security.nLength = sizeof(security);
  security.lpSecurityDescriptor = descriptor.get();
  return KernelHandle(CreateNamedPipeW(kControlPipeName, PIPE_ACCESS_DUPLEX,
                                       PIPE_REJECT_REMOTE_CLIENTS, kMaxInstances, kBufferSize,
                                       kBufferSize, 0, &security));
}

void ServeOneClient() {
  const KernelHandle pipe = CreatePipeInstance();
  if (!pipe) {
    Sleep(kRetryPause);
    return;
  }
  // Whoever asked for the stop while there was no instance could not connect, and will not try
  // again: without this look the wait would last until some client comes.
  if (g_stopRequested.load() != 0) {
    return;
  }
  // A client that came between creation and this call is reported as a failure.
  const bool connected =
      ConnectNamedPipe(pipe.get(), nullptr) != FALSE || GetLastError() == ERROR_PIPE_CONNECTED;
  if (connected && g_stopRequested.load() == 0) {
    HandleClient(pipe.get());
  }
  (void)DisconnectNamedPipe(pipe.get());  // the client may have left already
}

}  // namespace

void ServeControlPipe() {
  (void)SetCurrentDirectoryW(g_runtimeDir.c_str());  // it may not exist
  StartWarmUp();
  while (g_stopRequested.load() == 0) {
    ServeOneClient();
  }
  StopTunnel();  // no tunnel outlives the server
}

void WakeControlPipe() {
  g_stopRequested.exchange(1);
  const KernelHandle client(CreateFileW(kControlPipeName, GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                                        OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
}

}  // namespace vpn
