#include "tests/panel/panel.h"

#include "tests/panel/default_state.h"
#include "tests/panel/endpoints.h"

namespace panel {

Panel::Panel() : state_(DefaultState()) {}

Reply Panel::Answer(const httplib::Request& request) {
  const std::lock_guard<std::mutex> lock(mutex_);
  return Route(state_, request);
}

Json Panel::State() const {
  const std::lock_guard<std::mutex> lock(mutex_);
  return state_;
}

void Panel::SetState(const Json& parts) {
  const std::lock_guard<std::mutex> lock(mutex_);
  for (const auto& [name, value] : parts.items()) state_.at(name) = value;
}

bool Panel::Pay(const std::string& tradeNo) {
  const std::lock_guard<std::mutex> lock(mutex_);
  return PayOrder(state_, tradeNo);
}

void Panel::Reset() {
  behaviours.Clear();
  recorder.Forget();
  const std::lock_guard<std::mutex> lock(mutex_);
  state_ = DefaultState();
}

}  // namespace panel
