// The pipe server, or a whole run mode around it, on a thread of its own while the test is its
// client.
#ifndef TAVRIN_TESTS_UNIT_BACKGROUND_SERVER_H_
#define TAVRIN_TESTS_UNIT_BACKGROUND_SERVER_H_

#include <atomic>
#include <chrono>
#include <functional>
#include <thread>

#include "src/runtime/process_state.h"
#include "tests/sim/pipe_client.h"

namespace unit {

// Waits (in real time, 20 seconds) for something that another thread does. The look that finds it
// so decides; by the next one the other thread may have gone on.
inline bool Eventually(const std::function<bool()>& condition) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
  while (std::chrono::steady_clock::now() < deadline) {
    if (condition()) {
      return true;
    }
    std::this_thread::sleep_for(std::chrono::microseconds(200));
  }
  return false;
}

class BackgroundServer {
 public:
  BackgroundServer(sim::Machine& machine, std::function<int()> body) : machine_(machine) {
    thread_ = std::thread([this, run = std::move(body)] {
      result_ = run();
      done_ = true;
    });
  }
  // A server that a failed test has left running is stopped by force.
  ~BackgroundServer() {
    while (!done_) {
      vpn::g_stopRequested = 1;
      (void)sim::PipeClient(machine_).TryConnect();
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    if (thread_.joinable()) {
      thread_.join();
    }
  }
  BackgroundServer(const BackgroundServer&) = delete;
  BackgroundServer& operator=(const BackgroundServer&) = delete;

  bool IsDone() const { return done_; }

  // Waits until the server ends by itself. False when it does not.
  bool Ends() {
    return Eventually([this] { return done_.load(); });
  }
  // What the body returned.
  int Result() const { return result_; }

  // Waits until the server has created this many instances, so that a client or a stop reaches it.
  bool HasCreated(size_t instances) {
    return Eventually([&] { return machine_.pipes.Created().size() >= instances; });
  }

 private:
  sim::Machine& machine_;
  std::atomic<bool> done_{false};
  std::atomic<int> result_{-1};
  std::thread thread_;
};

}  // namespace unit

#endif  // TAVRIN_TESTS_UNIT_BACKGROUND_SERVER_H_
