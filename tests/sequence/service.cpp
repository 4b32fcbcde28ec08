#include "tests/sequence/service.h"

#include <algorithm>
#include <chrono>

#include <win/services.h>

namespace sequence {
namespace {

constexpr std::chrono::seconds kPatience(90);

Product ProductOf(size_t slot) {
  return slot == 0 ? FirstProduct() : SecondProduct();
}

}  // namespace

Services::Services(sim::Machine& machine) : machine_(machine) {
  FollowCalls();
}

Services::~Services() {
  for (size_t slot = 0; slot < kSlots; ++slot) {
    if (IsAlive(slot)) {
      Kill(slot, false);
    }
    Join(lives_[slot]);
    ProductOf(slot).begin(0);  // the program's end finds no tunnel of a killed process
  }
}

void Services::FollowCalls() {
  sim::Faults& faults = machine_.faults;
  faults.BeforeEach("ConnectNamedPipe", [this] { OnWait(); });
  // What the product connects to is the first that waits. Other calls open the log.
  faults.BeforeEach("CreateFileW", [this] {
    const std::string text = machine_.calls.LatestText("CreateFileW", machine_.ThisProcess()->id);
    const std::lock_guard<std::mutex> lock(mutex_);
    if (!waiting_.empty() && text.find("\\pipe\\") != std::string::npos) {
      waiting_.pop_front();
    }
  });
  faults.BeforeEach("ConvertStringSecurityDescriptorToSecurityDescriptorW",
                    [this] { HoldUntilWarm(); });
  faults.BeforeEach("SetCurrentDirectoryW", [this] { HoldUntilOwnerIsWatched(); });
  faults.BeforeEach("WaitForSingleObject", [this] { OnWaitForObject(); });
  // Faults are for the request, not for the next instance of the pipe.
  faults.BeforeEach("DisconnectNamedPipe", [this] {
    {
      std::unique_lock<std::mutex> lock(mutex_);  // who asks for a stop may finish first
      (void)changed_.wait_for(lock, kPatience, [this] { return !isStopping_; });
    }
    machine_.faults.FailNoMore();
  });
}

void Services::ClearFaults() {
  machine_.faults.Clear();
  FollowCalls();
}

Services::Life* Services::LifeOf(std::uint32_t processId) {
  const auto found = std::find_if(lives_.begin(), lives_.end(), [processId](const Life& life) {
    return life.processId == processId;
  });
  return found == lives_.end() ? nullptr : &*found;
}

void Services::OnWait() {
  const std::uint32_t id = machine_.ThisProcess()->id;
  const std::lock_guard<std::mutex> lock(mutex_);
  std::erase(waiting_, id);
  waiting_.push_back(id);
  changed_.notify_all();
}

void Services::WaitForThread(const std::shared_ptr<sim::ThreadObject>& thread) {
  sim::MachineLock lock = machine_.Lock();
  (void)machine_.core().changed.wait_for(lock, kPatience, [&] { return thread->done; });
}

// The warm-up is then the thread that was made last.
void Services::HoldUntilWarm() {
  const std::uint32_t id = machine_.ThisProcess()->id;
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    Life* const life = LifeOf(id);
    if (life == nullptr || life->isWarm) {
      return;
    }
    life->isWarm = true;
  }
  sim::MachineLock lock = machine_.Lock();
  const std::shared_ptr<sim::ThreadObject> thread = machine_.newestThread;
  lock.unlock();
  WaitForThread(thread);
}

// The first that a process waits for is its owner: the server is held until then.
void Services::OnWaitForObject() {
  const std::uint32_t id = machine_.ThisProcess()->id;
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    Life* const life = LifeOf(id);
    if (life == nullptr || life->ownerIsWatched) {
      return;
    }
    life->ownerIsWatched = true;
  }
  const auto lock = machine_.Lock();
  machine_.core().changed.notify_all();
}

// So that what the owner's watch does comes before what the server does.
void Services::HoldUntilOwnerIsWatched() {
  const std::uint32_t id = machine_.ThisProcess()->id;
  sim::MachineLock machineLock = machine_.Lock();
  const std::shared_ptr<sim::ThreadObject> thread = machine_.newestThread;
  machineLock.unlock();
  Life* life = nullptr;
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    life = LifeOf(id);
    if (life == nullptr || life->mode != Mode::kDaemon || life->ownerId == 0) {
      return;
    }
    life->ownerWatch = thread;
  }
  sim::MachineLock lock = machine_.Lock();
  (void)machine_.core().changed.wait_for(lock, kPatience, [&] {
    const std::lock_guard<std::mutex> inner(mutex_);
    return thread->done || life->ownerIsWatched;
  });
}

// A watch that still waits for its owner goes with its process, and so does its one handle.
void Services::ExitBesideOwnerWatch(Life& life) {
  sim::MachineLock lock = machine_.Lock();
  if (!life.ownerWatch || life.ownerWatch->done) {
    return;
  }
  for (const sim::OpenItem& item : machine_.handles.Open()) {
    if (item.processId == life.processId && item.origin != "OpenProcess") {
      machine_.AddViolation("left open at the process's end: " + item.kind);
    }
  }
  machine_.Crash(machine_.processes.Find(life.processId), 0);
  lock.unlock();
  sim::ParkForEver();
}

void Services::Start(size_t slot, Mode mode, std::uint32_t ownerId) {
  Life& life = lives_[slot];
  Join(life);
  machine_.services.startedByManager = mode == Mode::kService;
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    life.mode = mode;
    life.ownerId = ownerId;
    life.processId = 0;
    life.alive = true;
    life.isWarm = false;
    life.ownerIsWatched = false;
    life.ownerWatch.reset();
  }
  const Product product = ProductOf(slot);
  life.host = std::thread([this, &life, product, mode, ownerId] {
    (void)machine_.RunProcess([this, &life, product, mode, ownerId] {
      {
        const std::uint32_t id = machine_.ThisProcess()->id;
        const std::lock_guard<std::mutex> lock(mutex_);
        life.processId = id;
      }
      product.begin(ownerId);
      product.run(mode);
      product.end();
      ExitBesideOwnerWatch(life);
    });
    const std::lock_guard<std::mutex> lock(mutex_);
    life.alive = false;
    std::erase(waiting_, life.processId);
    changed_.notify_all();
  });
  (void)ComeToRest();
}

bool Services::IsAlive(size_t slot) {
  const std::lock_guard<std::mutex> lock(mutex_);
  return lives_[slot].alive;
}

void Services::SetStopping(bool stopping) {
  const std::lock_guard<std::mutex> lock(mutex_);
  isStopping_ = stopping;
  changed_.notify_all();
}

bool Services::RequestStop(size_t slot) {
  SetStopping(true);
  const bool requested = AskForStop(slot);
  SetStopping(false);
  return requested;
}

bool Services::AskForStop(size_t slot) {
  Life& life = lives_[slot];
  switch (life.mode) {
    case Mode::kService:
      (void)machine_.services.Send(SERVICE_CONTROL_STOP);
      return true;
    case Mode::kConsole:
      std::thread([this, &life, slot] {
        machine_.BindThisThread(life.processId);
        ProductOf(slot).pressCtrlC();
      }).join();
      return true;
    case Mode::kDaemon:
      break;
  }
  {
    const auto lock = machine_.Lock();
    if (!life.ownerWatch || life.ownerWatch->done) {
      return false;
    }
  }
  machine_.processes.Exit(life.ownerId, 0);
  WaitForThread(life.ownerWatch);
  return true;
}

void Services::Kill(size_t slot, bool childrenSurvive) {
  Life& life = lives_[slot];
  {
    const auto lock = machine_.Lock();
    std::vector<std::shared_ptr<sim::Job>> survivors;
    for (const auto& process : machine_.processes.AliveProcesses()) {
      const auto job = process->job.lock();
      if (job && childrenSurvive && process->parentId == life.processId) {
        survivors.push_back(job);
        if (process->script.adapter) {
          process->script.adapter->vanishesAfter = 300;  // behind the pause of the orphans' end
        }
      }
    }
    for (const auto& job : survivors) {
      job->members.clear();
    }
    machine_.Crash(machine_.processes.Find(life.processId));
  }
  Join(life);
}

void Services::Join(Life& life) {
  if (life.host.joinable()) {
    life.host.join();
  }
}

std::uint32_t Services::Connect(sim::PipeClient& client) {
  const auto machineLock = machine_.Lock();
  const std::uint32_t code = client.TryConnect();
  const std::lock_guard<std::mutex> lock(mutex_);
  if (code == 0 && !waiting_.empty()) {
    waiting_.pop_front();
  }
  return code;
}

std::deque<size_t> Services::Turns() {
  const std::lock_guard<std::mutex> lock(mutex_);
  std::deque<size_t> turns;
  for (const std::uint32_t id : waiting_) {
    turns.push_back(lives_[0].alive && lives_[0].processId == id ? 0 : 1);
  }
  return turns;
}

bool Services::AllAtRest() {
  return std::all_of(lives_.begin(), lives_.end(), [this](const Life& life) {
    return !life.alive ||
           std::find(waiting_.begin(), waiting_.end(), life.processId) != waiting_.end();
  });
}

bool Services::ComeToRest() {
  size_t alive = 0;
  {
    std::unique_lock<std::mutex> lock(mutex_);
    if (!changed_.wait_for(lock, kPatience, [this] { return AllAtRest(); })) {
      return false;
    }
    alive = waiting_.size();
  }
  sim::MachineLock lock = machine_.Lock();
  return machine_.core().changed.wait_for(lock, kPatience, [&] {
    return machine_.pipes.CountAwaited(L"\\\\.\\pipe\\TavrinService") == alive;
  });
}

}  // namespace sequence
