// The time of a TCP connect to each of several places, many at once.
#ifndef TAVRIN_CLIENT_LATENCY_TCP_LATENCY_H_
#define TAVRIN_CLIENT_LATENCY_TCP_LATENCY_H_

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace vpn {

struct LatencyGoal {
  std::wstring host;      // IPv4 literal or host name
  std::int64_t port = 0;  // as the account has it
};

struct Latency {
  enum class Kind {
    kPending,
    kConnected,
    kRefused,
    kNoAnswer,   // within the limit
    kNoAddress,  // the name does not resolve
    kSlowName,   // nor does it within the limit
    kIpv6,       // an IPv6 address, which is not tried
    kNoPort,     // a number that no port has
    kInterrupted
  };
  Kind kind = Kind::kPending;
  std::uint64_t milliseconds = 0;  // for kConnected: from the connect on
};

struct LatencyHooks {
  std::function<void(size_t done)> progress;
  std::function<bool()> isInterrupted;
};

// Milliseconds for each, with the look-up of its name.
inline constexpr std::uint64_t kLatencyLimit = 2000;

// One result for each goal, in their order.
std::vector<Latency> MeasureLatency(const std::vector<LatencyGoal>& goals,
                                    const LatencyHooks& hooks);

}  // namespace vpn

#endif  // TAVRIN_CLIENT_LATENCY_TCP_LATENCY_H_
