#include "src/tunnel/port_probe.h"

#include "src/common/hidden_process.h"
#include "src/common/unique_handle.h"
#include "src/net/ip_helper.h"

namespace vpn {
namespace {

constexpr DWORD kPause = 5;                  // milliseconds between two attempts
constexpr timeval kConnectWait = {0, 5000};  // microseconds: 5 ms

struct SocketTraits {
  using Type = SOCKET;
  static Type empty() { return INVALID_SOCKET; }
  static bool isValid(Type value) { return value != INVALID_SOCKET; }
  static void close(Type value) { (void)closesocket(value); }
};

// True when the connection that is under way has been made within the wait.
bool AwaitConnection(SOCKET socketHandle) {
  fd_set writable;
  FD_ZERO(&writable);
  FD_SET(socketHandle, &writable);
  timeval wait = kConnectWait;
  if (select(0, nullptr, &writable, nullptr, &wait) <= 0) {
    return false;
  }
  int socketError = 0;
  int size = sizeof(socketError);
  (void)getsockopt(socketHandle, SOL_SOCKET, SO_ERROR, reinterpret_cast<char*>(&socketError),
                   &size);
  return socketError == 0;
}

bool TryConnect(const sockaddr_in& address) {
  const UniqueHandle<SocketTraits> attempt(socket(AF_INET, SOCK_STREAM, IPPROTO_TCP));
  if (!attempt) {
    return false;
  }
  u_long nonBlocking = 1;
  (void)ioctlsocket(attempt.get(), static_cast<long>(FIONBIO), &nonBlocking);
  const int connected =
      connect(attempt.get(), reinterpret_cast<const sockaddr*>(&address), sizeof(address));
  if (connected == 0) {
    return true;
  }
  return WSAGetLastError() == WSAEWOULDBLOCK && AwaitConnection(attempt.get());
}

}  // namespace

bool WaitForLocalPort(std::uint16_t port, DWORD budget, HANDLE process) {
  const WinsockScope winsock;
  if (!winsock.isOpen()) {
    return false;
  }
  sockaddr_in address = {};
  address.sin_family = AF_INET;
  address.sin_port = htons(port);
  (void)InetPtonW(AF_INET, L"127.0.0.1", &address.sin_addr);  // a literal
  const ULONGLONG deadline = GetTickCount64() + budget;
  while (GetTickCount64() < deadline) {
    if (process != nullptr && !IsProcessRunning(process)) {
      return false;
    }
    if (TryConnect(address)) {
      return true;
    }
    Sleep(kPause);
  }
  return false;
}

}  // namespace vpn
