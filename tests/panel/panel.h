// The panel itself: its state, its answers, its record of requests, and what it was told to do.
#ifndef TAVRIN_TESTS_PANEL_PANEL_H_
#define TAVRIN_TESTS_PANEL_PANEL_H_

#include <mutex>
#include <string>

#include <httplib.h>

#include "tests/panel/behaviour.h"
#include "tests/panel/recorder.h"
#include "tests/panel/replies.h"

namespace panel {

class Panel {
 public:
  Panel();

  Reply Answer(const httplib::Request& request);

  Json State() const;
  // Replaces the named parts of the state, each as a whole.
  void SetState(const Json& parts);
  // The money for this order has come in; false when there is no such open order.
  bool Pay(const std::string& tradeNo);
  // As it was at the start, without a record and without rules.
  void Reset();

  Recorder recorder;
  Behaviours behaviours;

 private:
  mutable std::mutex mutex_;
  Json state_;
};

}  // namespace panel

#endif  // TAVRIN_TESTS_PANEL_PANEL_H_
