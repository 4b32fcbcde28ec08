#include "client/latency/tcp_latency.h"

#include "src/net/host_resolve.h"
#include "src/net/ip_helper.h"

namespace vpn {
namespace {

constexpr DWORD kPause = 2;  // milliseconds between two looks at all sockets

struct SocketTraits {
  using Type = SOCKET;
  static Type empty() { return INVALID_SOCKET; }
  static bool isValid(Type value) { return value != INVALID_SOCKET; }
  static void close(Type value) { (void)closesocket(value); }
};

struct Attempt {
  UniqueHandle<SocketTraits> socket;
  ULONGLONG start = 0;
  Latency result;
};

void End(Attempt& attempt, Latency::Kind kind) {
  attempt.result = {kind, GetTickCount64() - attempt.start};
  attempt.socket.reset();
}

// Under way afterwards, or already at its end.
void Begin(const LatencyGoal& goal, Attempt& attempt) {
  const std::vector<std::wstring> addresses = ResolveHostIpv4(goal.host);
  sockaddr_in place = {};
  place.sin_family = AF_INET;
  place.sin_port = htons(goal.port);
  const auto address = addresses.empty() ? std::nullopt : ParseIpv4(addresses.front());
  if (!address) {
    End(attempt, Latency::Kind::kNoAddress);
    return;
  }
  place.sin_addr = *address;
  attempt.socket = UniqueHandle<SocketTraits>(socket(AF_INET, SOCK_STREAM, IPPROTO_TCP));
  u_long nonBlocking = 1;
  (void)ioctlsocket(attempt.socket.get(), static_cast<long>(FIONBIO), &nonBlocking);
  attempt.start = GetTickCount64();
  const int connected =
      connect(attempt.socket.get(), reinterpret_cast<const sockaddr*>(&place), sizeof(place));
  if (connected == 0) {
    End(attempt, Latency::Kind::kConnected);
  } else if (WSAGetLastError() != WSAEWOULDBLOCK) {
    End(attempt, Latency::Kind::kRefused);
  }
}

bool IsWritable(SOCKET handle) {
  fd_set writable;
  FD_ZERO(&writable);
  FD_SET(handle, &writable);
  timeval noWait = {0, 0};
  return select(0, nullptr, &writable, nullptr, &noWait) > 0;
}

void Look(Attempt& attempt) {
  const bool isWritable = IsWritable(attempt.socket.get());
  int error = 0;
  int size = sizeof(error);
  (void)getsockopt(attempt.socket.get(), SOL_SOCKET, SO_ERROR, reinterpret_cast<char*>(&error),
                   &size);
  if (error != 0) {
    End(attempt, Latency::Kind::kRefused);
  } else if (isWritable) {
    End(attempt, Latency::Kind::kConnected);
  } else if (GetTickCount64() - attempt.start >= kLatencyLimit) {
    End(attempt, Latency::Kind::kNoAnswer);
  }
}

// How many have come to their end.
size_t LookAtAll(std::vector<Attempt>& attempts) {
  size_t done = 0;
  for (Attempt& attempt : attempts) {
    if (attempt.result.kind == Latency::Kind::kPending) {
      Look(attempt);
    }
    done += attempt.result.kind == Latency::Kind::kPending ? 0 : 1;
  }
  return done;
}

}  // namespace

std::vector<Latency> MeasureLatency(const std::vector<LatencyGoal>& goals,
                                    const LatencyHooks& hooks) {
  const WinsockScope winsock;
  std::vector<Attempt> attempts(goals.size());
  for (size_t at = 0; at < goals.size(); ++at) {
    Begin(goals[at], attempts[at]);
  }
  for (;;) {
    const size_t done = LookAtAll(attempts);
    hooks.progress(done);
    if (done == attempts.size() || hooks.isInterrupted()) {
      break;
    }
    Sleep(kPause);
  }
  std::vector<Latency> results;
  for (Attempt& attempt : attempts) {
    if (attempt.result.kind == Latency::Kind::kPending) {
      End(attempt, Latency::Kind::kInterrupted);
    }
    results.push_back(attempt.result);
  }
  return results;
}

}  // namespace vpn
