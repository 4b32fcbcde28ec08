// Virtual time. It stands still but for sleeps, timed waits and `Advance`, and on its way it runs
// the events that fall due, in order.
#ifndef TAVRIN_TESTS_SIM_CLOCK_H_
#define TAVRIN_TESTS_SIM_CLOCK_H_

#include <cstdint>
#include <functional>
#include <map>
#include <utility>

#include "tests/sim/core.h"

namespace sim {

class Clock {
 public:
  using EventId = std::uint64_t;

  explicit Clock(Core& core) : core_(core) {}

  // Milliseconds since the machine started; what GetTickCount64 gives.
  std::uint64_t Now() const;
  // For the start of a test, before anything is scheduled: 0xFFFFFFF0 is 16 ms before the 32-bit
  // tick wraps.
  void Set(std::uint64_t now);
  // Moves time on and runs what falls due. Also allowed inside an event.
  void Advance(std::uint64_t milliseconds);

  // The UTC time of day, for GetSystemTime.
  void SetDate(int year, int month, int day, int hour = 12, int minute = 0, int second = 0);
  std::int64_t UnixMilliseconds() const;

  // Runs `action` under the machine's lock when time reaches now + `milliseconds`. `ends` names an
  // object whose infinite waits this event can end: such a wait moves time up to the event.
  EventId After(std::uint64_t milliseconds, std::function<void()> action,
                const void* ends = nullptr);
  void Cancel(EventId id);

  // For the platform's calls. Moves time to `deadline`, or to the first event behind which `done`
  // holds; false when the deadline came first.
  bool WaitUntil(std::uint64_t deadline, const std::function<bool()>& done);
  // Moves time through the next event that can end a wait for `object`; false when there is none.
  bool AdvanceToEnd(const void* object);

 private:
  using Key = std::pair<std::uint64_t, EventId>;  // due time, then order of scheduling
  struct Event {
    std::function<void()> action;
    const void* ends;
  };

  void RunNext();
  void MoveTo(std::uint64_t time);

  Core& core_;
  std::uint64_t now_ = 1'000'000;
  std::int64_t unixAtZero_ = 0;
  EventId lastId_ = 0;
  std::map<Key, Event> events_;
};

}  // namespace sim

#endif  // TAVRIN_TESTS_SIM_CLOCK_H_
