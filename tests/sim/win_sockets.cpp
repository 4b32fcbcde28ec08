// Winsock: loopback connections as a port probe makes them.
#include "tests/sim/call.h"

#include <winsock2.h>
#include <iphlpapi.h>

#include <algorithm>
#include <cstring>

using sim::Arg;
using sim::Call;
using sim::ConnectPlan;

namespace sim {

void FdAdd(SOCKET socket, sim_fd_set* set) {
  if (!FdHas(socket, set) && set->fd_count < FD_SETSIZE) {
    set->fd_array[set->fd_count++] = socket;
  }
}

void FdRemove(SOCKET socket, sim_fd_set* set) {
  SOCKET* const end = std::remove(set->fd_array, set->fd_array + set->fd_count, socket);
  set->fd_count = static_cast<UINT>(end - set->fd_array);
}

bool FdHas(SOCKET socket, const sim_fd_set* set) {
  const SOCKET* const end = set->fd_array + set->fd_count;
  return std::find(set->fd_array, end, socket) != end;
}

std::map<std::uint16_t, std::uint32_t> Listeners::Owners() const {
  const MachineLock lock = core_.Lock();
  return ports_;
}

}  // namespace sim

namespace {

constexpr std::uint64_t kRefusalTime =
    2000;  // the platform repeats a refused SYN before it gives up

std::shared_ptr<sim::Socket> Find(const Call& call, SOCKET socket) {
  return call->handles.FindAs<sim::Socket>(socket, sim::Family::kSocket, call.name());
}

// The port, when the address is one of this machine's loopback, else 0.
USHORT LoopbackPort(const sockaddr* address, int length) {
  sockaddr_in ipv4 = {};
  if (length < static_cast<int>(sizeof ipv4) || address->sa_family != AF_INET) {
    return 0;
  }
  std::memcpy(&ipv4, address, sizeof ipv4);
  return ntohl(ipv4.sin_addr.S_un.S_addr) == INADDR_LOOPBACK ? ntohs(ipv4.sin_port) : USHORT{0};
}

int FollowPlan(const Call& call, const std::shared_ptr<sim::Socket>& socket,
               const ConnectPlan& plan) {
  using State = sim::Socket::State;
  switch (plan.kind) {
    case ConnectPlan::Kind::kConnectsAtOnce:
      socket->state = State::kConnected;
      return 0;
    case ConnectPlan::Kind::kRefusedAtOnce:
      return call.Fail(SOCKET_ERROR, static_cast<std::uint32_t>(plan.code));
    case ConnectPlan::Kind::kSocketError:
      socket->state = State::kFailed;
      socket->error = plan.code;
      break;
    case ConnectPlan::Kind::kConnectsAfter:
      socket->state = State::kConnecting;
      call->clock.After(static_cast<std::uint64_t>(plan.code),
                        [socket] { socket->state = State::kConnected; });
      return call.Fail(SOCKET_ERROR, WSAEWOULDBLOCK);
    case ConnectPlan::Kind::kNeverWritable:
      socket->state = State::kConnecting;
      break;
  }
  return call.Fail(SOCKET_ERROR, WSAEWOULDBLOCK);
}

int ConnectByModel(const Call& call, sim::Socket& socket, bool listening) {
  using State = sim::Socket::State;
  socket.state = listening ? State::kConnected : State::kConnecting;
  if (socket.nonBlocking) {
    return call.Fail(SOCKET_ERROR, WSAEWOULDBLOCK);
  }
  if (listening) {
    return 0;
  }
  call->clock.Advance(kRefusalTime);
  return call.Fail(SOCKET_ERROR, WSAECONNREFUSED);
}

// The sockets of `asked`, possibly null, that are in one of these states.
sim_fd_set InStates(const Call& call, const sim_fd_set* asked,
                    std::initializer_list<sim::Socket::State> states) {
  sim_fd_set found = {};
  for (UINT i = 0; asked != nullptr && i < asked->fd_count; ++i) {
    const auto object = Find(call, asked->fd_array[i]);
    if (object && std::find(states.begin(), states.end(), object->state) != states.end()) {
      FD_SET(asked->fd_array[i], &found);
    }
  }
  return found;
}

std::uint64_t MillisecondsOf(const timeval& time) {
  return static_cast<std::uint64_t>(time.tv_sec) * 1000 +
         (static_cast<std::uint64_t>(time.tv_usec) + 999) / 1000;
}

}  // namespace

int WSAStartup(WORD version, WSADATA* data) {
  Call call("WSAStartup", {Arg::OfHex(version)});
  if (call.failed()) {
    return static_cast<int>(call.code());
  }
  *data = {};
  data->wVersion = version;
  data->wHighVersion = MAKEWORD(2, 2);
  ++call->winsockStarts[call.process()->id];
  return 0;
}

int WSACleanup() {
  Call call("WSACleanup");
  if (call.failed()) {
    return call.Fail(SOCKET_ERROR);
  }
  int& starts = call->winsockStarts[call.process()->id];
  if (starts == 0) {
    call->AddViolation("WSACleanup without WSAStartup");
    return call.Fail(SOCKET_ERROR, WSANOTINITIALISED);
  }
  --starts;
  return 0;
}

int WSAGetLastError() {
  return static_cast<int>(Call::ThreadError());
}

SOCKET socket(int family, int type, int protocol) {
  Call call("socket", {family, type, protocol});
  if (call.failed()) {
    return call.Fail(INVALID_SOCKET);
  }
  if (call->winsockStarts[call.process()->id] == 0) {
    return call.Fail(INVALID_SOCKET, WSANOTINITIALISED);
  }
  return call.Open(std::make_shared<sim::Socket>());
}

int closesocket(SOCKET socket) {
  Call call("closesocket", {Arg::OfHandle(socket)});
  if (call.failed()) {
    return call.Fail(SOCKET_ERROR);
  }
  const bool closed = call->handles.Close(socket, sim::Family::kSocket, call.name());
  return closed ? 0 : call.Fail(SOCKET_ERROR, WSAENOTSOCK);
}

int ioctlsocket(SOCKET socket, LONG command, u_long* argument) {
  Call call("ioctlsocket", {Arg::OfHandle(socket), static_cast<int>(*argument)});
  if (call.failed()) {
    return call.Fail(SOCKET_ERROR);
  }
  const auto object = Find(call, socket);
  if (!object || command != FIONBIO) {
    return call.Fail(SOCKET_ERROR, object ? WSAEINVAL : WSAENOTSOCK);
  }
  object->nonBlocking = *argument != 0;
  return 0;
}

int connect(SOCKET socket, const sockaddr* address, int length) {
  const USHORT port = LoopbackPort(address, length);
  Call call("connect", {Arg::OfHandle(socket), static_cast<std::uint32_t>(port)});
  if (call.failed()) {
    return call.Fail(SOCKET_ERROR);
  }
  const auto object = Find(call, socket);
  if (!object) {
    return call.Fail(SOCKET_ERROR, WSAENOTSOCK);
  }
  ConnectPlan plan = {};
  if (call->connects.Take(&plan)) {
    return FollowPlan(call, object, plan);
  }
  return ConnectByModel(call, *object, port != 0 && call->listeners.IsListening(port));
}

int select(int /*ignored*/, sim_fd_set* readable, sim_fd_set* writable, sim_fd_set* exceptional,
           const timeval* timeout) {
  Call call("select", {timeout == nullptr ? Arg(std::string("infinite"))
                                          : Arg(static_cast<int>(MillisecondsOf(*timeout)))});
  if (call.failed()) {
    return call.Fail(SOCKET_ERROR);
  }
  // Readability is not modelled, and an attempt that was not accepted at once stays open.
  if (readable != nullptr || writable == nullptr || timeout == nullptr) {
    return call.Fail(SOCKET_ERROR, WSAEINVAL);
  }
  using State = sim::Socket::State;
  sim_fd_set ready = {};
  sim_fd_set failed = {};
  (void)call->clock.WaitUntil(call->clock.Now() + MillisecondsOf(*timeout), [&] {
    ready = InStates(call, writable, {State::kConnected, State::kFailed});
    failed = InStates(call, exceptional, {State::kFailed});
    return ready.fd_count + failed.fd_count > 0;
  });
  *writable = ready;
  if (exceptional != nullptr) {
    *exceptional = failed;
  }
  return static_cast<int>(ready.fd_count + failed.fd_count);
}

int getsockopt(SOCKET socket, int level, int option, char* value, int* length) {
  Call call("getsockopt", {Arg::OfHandle(socket), level, option});
  if (call.failed()) {
    return call.Fail(SOCKET_ERROR);
  }
  const auto object = Find(call, socket);
  if (!object) {
    return call.Fail(SOCKET_ERROR, WSAENOTSOCK);
  }
  const bool known = level == SOL_SOCKET && option == SO_ERROR;
  if (!known || *length < static_cast<int>(sizeof object->error)) {
    return call.Fail(SOCKET_ERROR, known ? WSAEFAULT : WSAEINVAL);
  }
  std::memcpy(value, &object->error, sizeof object->error);
  *length = sizeof object->error;
  return 0;
}

DWORD GetExtendedTcpTable(LPVOID table, DWORD* size, BOOL /*order*/, ULONG family,
                          TCP_TABLE_CLASS tableClass, ULONG /*reserved*/) {
  Call call("GetExtendedTcpTable");
  if (call.failed()) {
    return call.code();
  }
  if (family != AF_INET || tableClass != TCP_TABLE_OWNER_PID_LISTENER) {
    return ERROR_INVALID_PARAMETER;
  }
  const auto owners = call->listeners.Owners();
  const DWORD wanted =
      static_cast<DWORD>(sizeof(DWORD) + owners.size() * sizeof(MIB_TCPROW_OWNER_PID));
  const bool fits = table != nullptr && *size >= wanted;
  *size = wanted;
  if (!fits) {
    return ERROR_INSUFFICIENT_BUFFER;
  }
  auto* const result = static_cast<MIB_TCPTABLE_OWNER_PID*>(table);
  result->dwNumEntries = 0;
  for (const auto& [port, owner] : owners) {
    result->table[result->dwNumEntries++] = {2, 0x0100007F, htons(port), 0, 0, owner};
  }
  return NO_ERROR;
}
