#include "client/latency/tcp_latency.h"

#include <algorithm>

#include "client/latency/name_lookup.h"
#include "src/common/text.h"
#include "src/net/ip_helper.h"

namespace vpn {
namespace {

constexpr size_t kAtOnce = 32;  // a select takes 64 sockets
constexpr DWORD kPause = 10;    // milliseconds until the next look when nothing happens

struct SocketTraits {
  using Type = SOCKET;
  static Type empty() { return INVALID_SOCKET; }
  static bool isValid(Type value) { return value != INVALID_SOCKET; }
  static void close(Type value) { (void)closesocket(value); }
};

struct Attempt {
  std::uint64_t begun = 0;  // as `Now` counts
  std::uint64_t connectBegun = 0;
  std::int64_t port = 0;
  std::optional<NameLookUp> name;  // while it is looked up
  UniqueHandle<SocketTraits> socket;
  Latency result;
};

// Microseconds. The tick count moves in steps of 16 milliseconds.
std::uint64_t Now() {
  LARGE_INTEGER counter = {};
  LARGE_INTEGER frequency = {};
  (void)QueryPerformanceCounter(&counter);  // neither fails since Windows XP
  (void)QueryPerformanceFrequency(&frequency);
  const auto ticks = static_cast<std::uint64_t>(counter.QuadPart);
  const auto perSecond = static_cast<std::uint64_t>(frequency.QuadPart);
  return ticks / perSecond * 1'000'000 + ticks % perSecond * 1'000'000 / perSecond;
}

bool IsPending(const Attempt& attempt) {
  return attempt.result.kind == Latency::Kind::kPending;
}

void End(Attempt& attempt, Latency::Kind kind, std::uint64_t microseconds = 0) {
  attempt.result = {kind, (microseconds + 500) / 1000};
  attempt.name.reset();
  attempt.socket.reset();
}

// Under way afterwards, or already at its end.
void Connect(const std::wstring& host, Attempt& attempt) {
  const auto address = ParseIpv4(host);
  if (!address) {
    End(attempt, Latency::Kind::kNoAddress);
    return;
  }
  sockaddr_in place = {};
  place.sin_family = AF_INET;
  place.sin_port = htons(static_cast<std::uint16_t>(attempt.port));
  place.sin_addr = *address;
  attempt.socket = UniqueHandle<SocketTraits>(socket(AF_INET, SOCK_STREAM, IPPROTO_TCP));
  u_long nonBlocking = 1;
  (void)ioctlsocket(attempt.socket.get(), static_cast<long>(FIONBIO), &nonBlocking);
  attempt.connectBegun = Now();
  const int connected =
      connect(attempt.socket.get(), reinterpret_cast<const sockaddr*>(&place), sizeof(place));
  const int error = WSAGetLastError();
  if (connected == 0) {
    End(attempt, Latency::Kind::kConnected, Now() - attempt.connectBegun);
  } else if (error != WSAEWOULDBLOCK) {
    End(attempt, Latency::Kind::kRefused);
  }
}

void Begin(const LatencyGoal& goal, Attempt& attempt) {
  attempt.begun = Now();
  attempt.port = goal.port;
  if (goal.host.find(L':') != std::wstring::npos) {
    End(attempt, Latency::Kind::kIpv6);
  } else if (goal.port < 1 || goal.port > 65535) {
    End(attempt, Latency::Kind::kNoPort);
  } else if (IsIpv4Literal(goal.host)) {
    Connect(goal.host, attempt);
  } else {
    attempt.name.emplace(goal.host);
  }
}

// Sets of one socket each.
struct SocketSets {
  fd_set writable;
  fd_set failed;

  SocketSets() {
    FD_ZERO(&writable);
    FD_ZERO(&failed);
  }
  void add(SOCKET handle) {
    FD_SET(handle, &writable);
    FD_SET(handle, &failed);
  }
  bool wait(DWORD milliseconds) {
    timeval time = {0, static_cast<long>(milliseconds * 1000)};
    return select(0, nullptr, &writable, &failed, &time) > 0;
  }
};

bool IsWritable(SOCKET handle) {
  SocketSets sets;
  sets.add(handle);
  return sets.wait(0);
}

void LookAtSocket(Attempt& attempt, std::uint64_t now) {
  int error = 0;
  int size = sizeof(error);
  (void)getsockopt(attempt.socket.get(), SOL_SOCKET, SO_ERROR, reinterpret_cast<char*>(&error),
                   &size);
  if (error != 0) {
    End(attempt, Latency::Kind::kRefused);
  } else if (IsWritable(attempt.socket.get())) {
    End(attempt, Latency::Kind::kConnected, now - attempt.connectBegun);
  }
}

void Look(Attempt& attempt, std::uint64_t now) {
  const bool isLate = now - attempt.begun >= kLatencyLimit * 1000;
  if (attempt.name && isLate) {
    End(attempt, Latency::Kind::kSlowName);
  } else if (attempt.name && attempt.name->isDone()) {
    const std::wstring address = attempt.name->address();
    attempt.name.reset();
    Connect(address, attempt);
  } else if (!attempt.name) {
    LookAtSocket(attempt, now);
  }
  if (IsPending(attempt) && isLate) {
    End(attempt, Latency::Kind::kNoAnswer);
  }
}

class Measurement {
 public:
  explicit Measurement(const std::vector<LatencyGoal>& goals)
      : goals_(goals), attempts_(goals.size()) {}

  // Looks at what is under way, and begins as many others as there is room for. Gives the number of
  // those that have come to their end.
  size_t look() {
    const std::uint64_t now = Now();
    size_t underWay = 0;
    for (size_t at = 0; at < attempts_.size() && underWay < kAtOnce; ++at) {
      if (at < begun_ && IsPending(attempts_[at])) {
        Look(attempts_[at], now);
      } else if (at == begun_) {
        Begin(goals_[at], attempts_[at]);
        ++begun_;
      }
      underWay += IsPending(attempts_[at]) ? 1 : 0;
    }
    return begun_ - underWay;
  }

  // Until something may have happened. A socket ends the wait at once, so that its time is right.
  void wait() {
    SocketSets sockets;
    const NameLookUp* name = nullptr;
    bool hasSocket = false;
    for (const Attempt& attempt : attempts_) {
      if (attempt.name) {
        name = &*attempt.name;
      } else if (attempt.socket) {
        sockets.add(attempt.socket.get());
        hasSocket = true;
      }
    }
    if (hasSocket) {
      (void)sockets.wait(kPause);
    } else if (name != nullptr) {
      (void)name->isDone(kPause);
    }
  }

  std::vector<Latency> results() {
    std::vector<Latency> results;
    results.reserve(attempts_.size());
    for (Attempt& attempt : attempts_) {
      if (IsPending(attempt)) {
        End(attempt, Latency::Kind::kInterrupted);
      }
      results.push_back(attempt.result);
    }
    return results;
  }

 private:
  const std::vector<LatencyGoal>& goals_;
  std::vector<Attempt> attempts_;
  size_t begun_ = 0;
};

}  // namespace

std::vector<Latency> MeasureLatency(const std::vector<LatencyGoal>& goals,
                                    const LatencyHooks& hooks) {
  const WinsockScope winsock;
  Measurement measurement(goals);
  for (;;) {
    const size_t done = measurement.look();
    hooks.progress(done);
    if (done == goals.size() || hooks.isInterrupted()) {
      return measurement.results();
    }
    measurement.wait();
  }
}

}  // namespace vpn
