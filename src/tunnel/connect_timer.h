// The trace of one start: a line for each finished step in "connect-timing.log".
#ifndef TAVRIN_SRC_TUNNEL_CONNECT_TIMER_H_
#define TAVRIN_SRC_TUNNEL_CONNECT_TIMER_H_

#include <cstdint>
#include <string>

namespace vpn {

// Used by one thread. A trace that can't be written is silently lost.
class ConnectTimer {
 public:
  // The file is what the environment variable TAVRIN_TIMING names, else "connect-timing.log" beside
  // the executable. A variable too long for a path switches the trace off.
  ConnectTimer();

  // Appends the label (ASCII, shorter than 28 columns), the milliseconds since the previous mark
  // and those since construction.
  void mark(const wchar_t* label);

 private:
  std::wstring path_;  // empty: no trace
  std::uint64_t startTicks_;
  std::uint64_t lastTicks_;
};

}  // namespace vpn

#endif  // TAVRIN_SRC_TUNNEL_CONNECT_TIMER_H_
