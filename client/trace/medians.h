// Medians of values that come one after the other.
#ifndef TAVRIN_CLIENT_TRACE_MEDIANS_H_
#define TAVRIN_CLIENT_TRACE_MEDIANS_H_

#include <cstdint>
#include <functional>
#include <queue>
#include <vector>

#include "client/trace/steps.h"

namespace vpn {

// The lower half of the values with its largest on top, and the upper half with its smallest.
template <class Less = std::less<>>
class RunningMedian {
 public:
  explicit RunningMedian(Less less = Less()) : lower_(less), upper_(Greater{less}), less_(less) {}

  void add(std::uint64_t value) {
    if (lower_.empty() || !less_(lower_.top(), value)) {
      lower_.push(value);
    } else {
      upper_.push(value);
    }
    // The lower half is as large as the upper one, or has one value more.
    if (lower_.size() > upper_.size() + 1) {
      upper_.push(lower_.top());
      lower_.pop();
    } else if (lower_.size() < upper_.size()) {
      lower_.push(upper_.top());
      upper_.pop();
    }
  }

  // Between the two in the middle of an even number; -1 for none.
  std::int64_t value() const {
    if (lower_.empty()) {
      return -1;
    }
    const std::uint64_t upper = lower_.size() > upper_.size() ? lower_.top() : upper_.top();
    return static_cast<std::int64_t>(lower_.top() + (upper - lower_.top()) / 2);
  }

 private:
  struct Greater {
    Less less;
    bool operator()(std::uint64_t left, std::uint64_t right) const { return less(right, left); }
  };

  std::priority_queue<std::uint64_t, std::vector<std::uint64_t>, Less> lower_;
  std::priority_queue<std::uint64_t, std::vector<std::uint64_t>, Greater> upper_;
  Less less_;
};

// What each step took in the complete connects so far.
class StepMedians {
 public:
  StepMedians() : medians_(kStepCount) {}

  // A connect that is not complete counts for nothing.
  void add(const ConnectTrace& connect);

  // For each step the median of its time; -1 where none has it.
  std::vector<std::int64_t> times() const;

 private:
  std::vector<RunningMedian<>> medians_;
};

// The same of all of these.
std::vector<std::int64_t> MedianTimes(const std::vector<ConnectTrace>& connects);

}  // namespace vpn

#endif  // TAVRIN_CLIENT_TRACE_MEDIANS_H_
