// The processes of the service on one machine: at most two at a time, each on a thread of its own.
#ifndef TAVRIN_TESTS_SEQUENCE_SERVICE_H_
#define TAVRIN_TESTS_SEQUENCE_SERVICE_H_

#include <array>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <thread>

#include "tests/sequence/product.h"
#include "tests/sim/machine.h"
#include "tests/sim/pipe_client.h"
#include "tests/sim/threads.h"

namespace sequence {

class Services {
 public:
  static constexpr size_t kSlots = 2;

  explicit Services(sim::Machine& machine);
  // Ends by force what still runs.
  ~Services();
  Services(const Services&) = delete;
  Services& operator=(const Services&) = delete;

  // Comes back when the process waits for its first client, its account warmed up. `ownerId` 0
  // means none.
  void Start(size_t slot, Mode mode, std::uint32_t ownerId);
  bool IsAlive(size_t slot);
  // Asks the process to end, as the user of its mode does it. False for a daemon without an owner.
  bool RequestStop(size_t slot);
  // The process dies where it stands. Its children survive when they are in no job any more.
  void Kill(size_t slot, bool childrenSurvive);
  // Connects a client to the process whose turn it is; 2 when nobody listens.
  std::uint32_t Connect(sim::PipeClient& client);

  // Waits (in real time, 90 seconds) until every process has ended or waits for a client.
  bool ComeToRest();
  // The slots of those that wait, in the order in which clients reach them.
  std::deque<size_t> Turns();
  // Faults::Clear drops the hooks by which this class follows the processes, too.
  void ClearFaults();

 private:
  struct Life {
    Mode mode = Mode::kDaemon;
    std::uint32_t ownerId = 0;
    std::uint32_t processId = 0;
    bool alive = false;
    bool isWarm = false;
    bool ownerIsWatched = false;
    std::shared_ptr<sim::ThreadObject> ownerWatch;
    std::thread host;
  };

  void FollowCalls();
  void OnWait();
  void HoldUntilWarm();
  void OnWaitForObject();
  void HoldUntilOwnerIsWatched();
  void WaitForThread(const std::shared_ptr<sim::ThreadObject>& thread);
  Life* LifeOf(std::uint32_t processId);
  void Join(Life& life);
  void ExitBesideOwnerWatch(Life& life);
  bool AllAtRest();
  bool AskForStop(size_t slot);
  void SetStopping(bool stopping);

  sim::Machine& machine_;
  std::mutex mutex_;  // taken inside the machine's lock, never around it
  std::condition_variable changed_;
  std::deque<std::uint32_t> waiting_;  // process ids in the order in which clients reach them
  bool isStopping_ = false;
  std::array<Life, kSlots> lives_;
};

}  // namespace sequence

#endif  // TAVRIN_TESTS_SEQUENCE_SERVICE_H_
