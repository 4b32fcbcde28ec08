#include "client/trace/medians.h"

namespace vpn {

void StepMedians::add(const ConnectTrace& connect) {
  if (!connect.isComplete()) {
    return;
  }
  for (const Step& step : StepsOf(connect).steps) {
    medians_[step.index].add(step.time);
  }
}

std::vector<std::int64_t> StepMedians::times() const {
  std::vector<std::int64_t> times;
  times.reserve(medians_.size());
  for (const RunningMedian<>& median : medians_) {
    times.push_back(median.value());
  }
  return times;
}

std::vector<std::int64_t> MedianTimes(const std::vector<ConnectTrace>& connects) {
  StepMedians medians;
  for (const ConnectTrace& connect : connects) {
    medians.add(connect);
  }
  return medians.times();
}

}  // namespace vpn
