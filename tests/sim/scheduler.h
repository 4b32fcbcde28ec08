// Chooses which of several threads runs, by a seed. Threads that take part run one at a time: in
// front of each platform call a thread may lose its turn, and it gives the turn up where it blocks
// or ends. So a seed gives one interleaving of the calls, the same every time.
//
//   sim::Scheduler scheduler(seed);
//   scheduler.Add("daemon", [] { vpn::DaemonMain(); });
//   scheduler.Add("client", [&] { ... });
//   scheduler.Run();
//
// Threads that a thread of these makes with CreateThread take part too. All other threads must keep
// away from the machine until Run has returned.
//
// How the turn is handed on is invisible to ThreadSanitizer, which thus still sees as unordered
// what two threads do in front of their next calls.
#ifndef TAVRIN_TESTS_SIM_SCHEDULER_H_
#define TAVRIN_TESTS_SIM_SCHEDULER_H_

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace sim {

class Scheduler {
 public:
  // The seed also decides how often turns are lost. With 0 nobody loses one: each thread goes on
  // until it sleeps or blocks, and the next in the order of joining follows.
  explicit Scheduler(std::uint64_t seed);
  ~Scheduler();
  Scheduler(const Scheduler&) = delete;
  Scheduler& operator=(const Scheduler&) = delete;

  // A thread that runs `body` when it gets its first turn.
  void Add(std::string name, std::function<void()> body);

  // Returns when every thread has ended. When none can go on any more, or one goes on for ever, the
  // program ends with a text that names the seed and where each thread stands.
  void Run();

  // For the bodies of threads that take part ------------------------------------------------------
  // Another thread may go on here. Does nothing on other threads.
  static void Pass() {
    if (own_ != nullptr) {
      own_->scheduler->PassOn("between calls");
    }
  }
  // Waits until all threads together have made so many more platform calls, or nobody else can go
  // on.
  static void WaitForCalls(std::uint64_t count);

  // For the machine
  // --------------------------------------------------------------------------------- In front of
  // each platform call.
  static void PassAt(const char* call) {
    if (own_ != nullptr) {
      own_->scheduler->PassOn(call);
    }
  }
  static bool TakesPart() { return own_ != nullptr; }
  // The number of the calling thread in the order of joining, from 1 on; 0 when it takes no part.
  static int ThreadNumber() { return own_ == nullptr ? 0 : own_->number; }
  // Something has changed that blocked threads may wait for.
  static void NoteChange();
  // Another thread may go on while this one sleeps.
  static void Rest();
  // Gives the turn up until the next change. False when nobody can go on before this wait ends, if
  // it `canEnd` by itself.
  static bool Block(bool canEnd);
  // The same until `Free` is called for this lock.
  static void BlockOn(const void* lock);
  static void Free(const void* lock);
  // This thread will not run again, and may never end.
  static void LeaveForEver();
  // A thread that takes part when its maker does.
  static std::thread StartThread(const char* name, std::function<void()> body);

 private:
  enum class State { kReady, kWaitsForChange, kWaitsForLock, kWaitsForCalls, kEnded };
  struct Participant {
    Scheduler* scheduler = nullptr;
    int number = 0;
    std::string name;
    std::atomic<std::uint32_t> turn{0};
    std::atomic<State> state{State::kReady};
    std::atomic<bool> canEnd{false};
    std::atomic<bool> timedOut{false};
    std::atomic<bool> neverEnds{false};
    std::atomic<std::uint64_t> awaited{0};  // the change that it has seen, or a number of calls
    std::atomic<const void*> lock{nullptr};
    std::atomic<const char*> place{"its start"};
  };
  static constexpr std::size_t kMostThreads = 16;

  Participant& Admit(std::string name);
  static void Enter(Participant& participant);
  static void Leave();
  void PassOn(const char* place);
  // Hands the turn on and, unless the thread has ended, waits for the next one.
  void GiveUpTurn();
  void HandTo(Participant& next);
  Participant* Choose();
  Participant* Pick(bool (*fits)(const Participant&));
  static bool CanGoOn(const Participant& participant);
  std::uint64_t Random(std::uint64_t below);
  [[noreturn]] void GiveUp(const char* why) const;

  static constinit thread_local Participant* own_;

  const std::uint64_t seed_;
  std::uint64_t switchesOnceIn_ = 0;
  std::atomic<std::uint64_t> random_;
  std::atomic<std::uint64_t> changes_{0};
  std::atomic<std::uint64_t> calls_{0};
  std::atomic<std::uint64_t> turns_{0};
  std::atomic<std::size_t> count_{0};
  std::atomic<int> last_{0};  // the number of the thread that got its turn last
  std::atomic<std::uint32_t> over_{0};
  std::atomic<std::size_t> gone_{0};  // threads that will not touch this object again
  std::array<Participant, kMostThreads> participants_;
  std::vector<std::pair<const Participant*, std::thread>> threads_;  // of Add
};

}  // namespace sim

#endif  // TAVRIN_TESTS_SIM_SCHEDULER_H_
