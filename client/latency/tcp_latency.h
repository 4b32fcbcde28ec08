// The time of a TCP connect to each of several places, all at once.
#ifndef TAVRIN_CLIENT_LATENCY_TCP_LATENCY_H_
#define TAVRIN_CLIENT_LATENCY_TCP_LATENCY_H_

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace vpn {

struct LatencyGoal {
  std::wstring host;  // IPv4 literal or host name
  std::uint16_t port = 0;
};

struct Latency {
  enum class Kind { kPending, kConnected, kRefused, kNoAnswer, kNoAddress, kInterrupted };
  Kind kind = Kind::kPending;
  std::uint64_t milliseconds = 0;  // for kConnected
};

struct LatencyHooks {
  std::function<void(size_t done)> progress;
  std::function<bool()> isInterrupted;
};

inline constexpr std::uint64_t kLatencyLimit = 2000;  // milliseconds

// One result for each goal, in their order. Names are looked up first, one after the other.
std::vector<Latency> MeasureLatency(const std::vector<LatencyGoal>& goals,
                                    const LatencyHooks& hooks);

}  // namespace vpn

#endif  // TAVRIN_CLIENT_LATENCY_TCP_LATENCY_H_
