#include "tests/sim/scheduler.h"

#include <linux/futex.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <utility>

namespace sim {
namespace {

constexpr std::uint64_t kMostCalls = 1'000'000;
constexpr std::time_t kPatience = 120;  // seconds of real time without any turn

// ThreadSanitizer would take a synchronising hand-over for an order that the product itself keeps.
#if defined(__has_feature)
#if __has_feature(thread_sanitizer)
#define TAVRIN_THREAD_SANITIZER
#endif
#endif
#ifdef TAVRIN_THREAD_SANITIZER
constexpr std::memory_order kLoad = std::memory_order_relaxed;
constexpr std::memory_order kStore = std::memory_order_relaxed;
#else
constexpr std::memory_order kLoad = std::memory_order_acquire;
constexpr std::memory_order kStore = std::memory_order_release;
#endif
constexpr std::memory_order kPlain = std::memory_order_relaxed;  // for whoever has the turn

// False when the time is up.
bool WaitForFlag(std::atomic<std::uint32_t>& flag, const timespec* patience = nullptr) {
  while (flag.load(kLoad) == 0) {
    const long result = syscall(SYS_futex, &flag, FUTEX_WAIT_PRIVATE, 0, patience, nullptr, 0);
    if (result != 0 && errno == ETIMEDOUT) {
      return false;
    }
  }
  flag.store(0, kPlain);
  return true;
}

void SetFlag(std::atomic<std::uint32_t>& flag) {
  flag.store(1, kStore);
  syscall(SYS_futex, &flag, FUTEX_WAKE_PRIVATE, INT_MAX, nullptr, nullptr, 0);
}

}  // namespace

constinit thread_local Scheduler::Participant* Scheduler::own_ = nullptr;

Scheduler::Scheduler(std::uint64_t seed) : seed_(seed), random_(seed * 0x9E3779B97F4A7C15 + 1) {
  if (seed_ != 0) {
    // Now and then at nearly every call, now and then a few times in a whole connect.
    switchesOnceIn_ = std::uint64_t{1} << Random(9);
  }
  for (std::size_t i = 0; i < kMostThreads; ++i) {
    participants_.at(i).scheduler = this;
    participants_.at(i).number = static_cast<int>(i) + 1;
  }
}

Scheduler::~Scheduler() = default;

void Scheduler::Add(std::string name, std::function<void()> body) {
  Participant& participant = Admit(std::move(name));
  threads_.emplace_back(&participant, [&participant, run = std::move(body)] {
    Enter(participant);
    run();
    Leave();
  });
}

void Scheduler::Run() {
  if (Participant* const first = Choose()) {
    HandTo(*first);
    const timespec patience = {kPatience, 0};
    for (std::uint64_t before = 0; !WaitForFlag(over_, &patience);) {
      if (std::exchange(before, turns_.load(kPlain)) == turns_.load(kPlain)) {
        GiveUp("a thread keeps its turn");
      }
    }
  }
  while (gone_.load(std::memory_order_acquire) != count_.load(kPlain)) {
    std::this_thread::yield();
  }
  for (auto& [participant, thread] : threads_) {
    participant->neverEnds.load(kPlain) ? thread.detach() : thread.join();
  }
  threads_.clear();
}

Scheduler::Participant& Scheduler::Admit(std::string name) {
  const std::size_t index = count_.load(kPlain);
  if (index == kMostThreads) {
    GiveUp("too many threads");
  }
  Participant& participant = participants_.at(index);
  participant.name = std::move(name);
  count_.store(index + 1, kPlain);
  return participant;
}

void Scheduler::Enter(Participant& participant) {
  own_ = &participant;
  (void)WaitForFlag(participant.turn);
}

void Scheduler::Leave() {
  if (Participant* const self = std::exchange(own_, nullptr)) {
    Scheduler& scheduler = *self->scheduler;
    self->state.store(State::kEnded, kPlain);
    scheduler.GiveUpTurn();
    scheduler.gone_.fetch_add(1, std::memory_order_release);
  }
}

void Scheduler::LeaveForEver() {
  if (own_ != nullptr) {
    own_->neverEnds.store(true, kPlain);
    Leave();
  }
}

std::thread Scheduler::StartThread(const char* name, std::function<void()> body) {
  if (own_ == nullptr) {
    return std::thread(std::move(body));
  }
  Participant& participant = own_->scheduler->Admit(name);
  return std::thread([&participant, run = std::move(body)] {
    Enter(participant);
    run();
    Leave();
  });
}

void Scheduler::PassOn(const char* place) {
  own_->place.store(place, kPlain);
  if (calls_.fetch_add(1, kPlain) > kMostCalls) {
    GiveUp("no end in sight");
  }
  if (switchesOnceIn_ != 0 && Random(switchesOnceIn_) == 0) {
    GiveUpTurn();
  }
}

void Scheduler::WaitForCalls(std::uint64_t count) {
  if (own_ != nullptr) {
    own_->awaited.store(own_->scheduler->calls_.load(kPlain) + count, kPlain);
    own_->canEnd.store(false, kPlain);
    own_->state.store(State::kWaitsForCalls, kPlain);
    own_->scheduler->GiveUpTurn();
  }
}

void Scheduler::NoteChange() {
  if (own_ != nullptr) {
    own_->scheduler->changes_.fetch_add(1, kPlain);
  }
}

void Scheduler::Rest() {
  if (own_ != nullptr) {
    own_->scheduler->GiveUpTurn();
  }
}

bool Scheduler::Block(bool canEnd) {
  own_->awaited.store(own_->scheduler->changes_.load(kPlain), kPlain);
  own_->canEnd.store(canEnd, kPlain);
  own_->state.store(State::kWaitsForChange, kPlain);
  own_->scheduler->GiveUpTurn();
  return !own_->timedOut.load(kPlain);
}

void Scheduler::BlockOn(const void* lock) {
  own_->lock.store(lock, kPlain);
  own_->canEnd.store(false, kPlain);
  own_->state.store(State::kWaitsForLock, kPlain);
  own_->scheduler->GiveUpTurn();
}

void Scheduler::Free(const void* lock) {
  if (own_ == nullptr) {
    return;
  }
  for (Participant& other : own_->scheduler->participants_) {
    if (other.state.load(kPlain) == State::kWaitsForLock && other.lock.load(kPlain) == lock) {
      other.state.store(State::kReady, kPlain);
    }
  }
}

void Scheduler::GiveUpTurn() {
  Participant* const self = own_;  // null at a thread's end
  Participant* const next = Choose();
  if (next == nullptr) {
    SetFlag(over_);
    return;
  }
  if (next == self) {
    self->state.store(State::kReady, kPlain);
    return;
  }
  HandTo(*next);
  if (self != nullptr) {
    (void)WaitForFlag(self->turn);
  }
}

void Scheduler::HandTo(Participant& next) {
  turns_.fetch_add(1, kPlain);
  next.state.store(State::kReady, kPlain);
  last_.store(next.number, kPlain);
  SetFlag(next.turn);
}

bool Scheduler::CanGoOn(const Participant& participant) {
  const Scheduler& scheduler = *participant.scheduler;
  switch (participant.state.load(kPlain)) {
    case State::kReady:
      return true;
    case State::kWaitsForChange:
      return participant.awaited.load(kPlain) != scheduler.changes_.load(kPlain);
    case State::kWaitsForCalls:
      return participant.awaited.load(kPlain) <= scheduler.calls_.load(kPlain);
    default:
      return false;
  }
}

// Null when all threads have ended.
Scheduler::Participant* Scheduler::Choose() {
  if (Participant* const next = Pick(CanGoOn)) {
    next->timedOut.store(false, kPlain);
    return next;
  }
  const auto waitsForCalls = [](const Participant& participant) {
    return participant.state.load(kPlain) == State::kWaitsForCalls;
  };
  if (Participant* const next = Pick(waitsForCalls)) {
    return next;
  }
  const auto canEnd = [](const Participant& participant) {
    return participant.state.load(kPlain) != State::kEnded && participant.canEnd.load(kPlain);
  };
  if (Participant* const next = Pick(canEnd)) {
    next->timedOut.store(true, kPlain);
    return next;
  }
  const auto isAlive = [](const Participant& participant) {
    return participant.state.load(kPlain) != State::kEnded;
  };
  if (Pick(isAlive) != nullptr) {
    GiveUp("every thread waits");
  }
  return nullptr;
}

Scheduler::Participant* Scheduler::Pick(bool (*fits)(const Participant&)) {
  std::array<Participant*, kMostThreads> found{};
  std::size_t size = 0;
  for (std::size_t i = 0; i < count_.load(kPlain); ++i) {
    if (fits(participants_.at(i))) {
      found.at(size++) = &participants_.at(i);
    }
  }
  if (size == 0) {
    return nullptr;
  }
  if (seed_ != 0) {
    return found.at(Random(size));
  }
  const int last = last_.load(kPlain);
  const auto next = std::find_if(found.begin(), found.begin() + size,
                                 [last](const auto* other) { return other->number > last; });
  return next == found.begin() + size ? found.front() : *next;
}

// splitmix64
std::uint64_t Scheduler::Random(std::uint64_t below) {
  std::uint64_t value = random_.load(kPlain) + 0x9E3779B97F4A7C15;
  random_.store(value, kPlain);
  value = (value ^ (value >> 30)) * 0xBF58476D1CE4E5B9;
  value = (value ^ (value >> 27)) * 0x94D049BB133111EB;
  return (value ^ (value >> 31)) % below;
}

void Scheduler::GiveUp(const char* why) const {
  std::fprintf(stderr, "scheduler with seed %llu: %s\n", static_cast<unsigned long long>(seed_),
               why);
  for (std::size_t i = 0; i < count_.load(kPlain); ++i) {
    const Participant& participant = participants_.at(i);
    const bool ended = participant.state.load(kPlain) == State::kEnded;
    std::fprintf(stderr, "  %s: %s %s\n", participant.name.c_str(), ended ? "ended behind" : "at",
                 participant.place.load(kPlain));
  }
  std::abort();
}

}  // namespace sim
