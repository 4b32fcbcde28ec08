#include "tests/sim/clock.h"

#include <algorithm>
#include <chrono>

namespace sim {

std::uint64_t Clock::Now() const {
  const MachineLock lock = core_.Lock();
  return now_;
}

void Clock::Set(std::uint64_t now) {
  const MachineLock lock = core_.Lock();
  unixAtZero_ += static_cast<std::int64_t>(now_ - now);  // the date stays as it was
  now_ = now;
}

void Clock::Advance(std::uint64_t milliseconds) {
  const MachineLock lock = core_.Lock();
  MoveTo(now_ + milliseconds);
}

void Clock::SetDate(int year, int month, int day, int hour, int minute, int second) {
  using namespace std::chrono;
  const sys_days date = std::chrono::year(year) / month / day;
  const auto moment = date + hours(hour) + minutes(minute) + seconds(second);
  const MachineLock lock = core_.Lock();
  unixAtZero_ = duration_cast<milliseconds>(moment.time_since_epoch()).count() -
                static_cast<std::int64_t>(now_);
}

std::int64_t Clock::UnixMilliseconds() const {
  const MachineLock lock = core_.Lock();
  return unixAtZero_ + static_cast<std::int64_t>(now_);
}

Clock::EventId Clock::After(std::uint64_t milliseconds, std::function<void()> action,
                            const void* ends) {
  const MachineLock lock = core_.Lock();
  const EventId id = ++lastId_;
  events_.emplace(Key(now_ + milliseconds, id), Event{std::move(action), ends});
  core_.changed.notify_all();  // an infinite wait may now have something that ends it
  return id;
}

void Clock::Cancel(EventId id) {
  const MachineLock lock = core_.Lock();
  std::erase_if(events_, [id](const auto& entry) { return entry.first.second == id; });
}

bool Clock::WaitUntil(std::uint64_t deadline, const std::function<bool()>& done) {
  const MachineLock lock = core_.Lock();
  while (!done()) {
    if (events_.empty() || events_.begin()->first.first > deadline) {
      now_ = std::max(now_, deadline);
      return false;
    }
    RunNext();
  }
  return true;
}

bool Clock::AdvanceToEnd(const void* object) {
  const MachineLock lock = core_.Lock();
  const auto found = std::find_if(events_.begin(), events_.end(), [object](const auto& entry) {
    return entry.second.ends == object;
  });
  if (found == events_.end()) {
    return false;
  }
  MoveTo(found->first.first);
  return true;
}

void Clock::RunNext() {
  const auto first = events_.begin();
  now_ = std::max(now_, first->first.first);
  const std::function<void()> action = std::move(first->second.action);
  events_.erase(first);
  action();
  core_.changed.notify_all();
}

void Clock::MoveTo(std::uint64_t time) {
  while (!events_.empty() && events_.begin()->first.first <= time) {
    RunNext();
  }
  now_ = std::max(now_, time);
}

}  // namespace sim
