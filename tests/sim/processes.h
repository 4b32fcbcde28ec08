// Processes and jobs. The children follow scripts; the product's own processes are here too, since
// the process snapshot shows them and a crash ends them.
#ifndef TAVRIN_TESTS_SIM_PROCESSES_H_
#define TAVRIN_TESTS_SIM_PROCESSES_H_

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "tests/netmodel/network_model.h"
#include "tests/sim/clock.h"
#include "tests/sim/core.h"
#include "tests/sim/handles.h"
#include "tests/sim/script.h"
#include "tests/sim/sockets.h"

namespace sim {

struct AnonymousPipe;
class Job;
class Processes;

struct Process : Object, std::enable_shared_from_this<Process> {
  std::string Describe() const override;
  bool IsWaitable() const override { return true; }
  bool IsSignalled() const override { return exited; }

  std::uint32_t id = 0;
  std::uint32_t parentId = 0;
  std::wstring image;        // full path
  std::wstring commandLine;  // as CreateProcessW got it
  std::wstring directory;    // its current directory
  std::uint32_t flags = 0;   // creation flags
  std::uint64_t startedAt = 0;
  bool own = false;  // runs the product's code
  bool suspended = false;
  bool dying = false;  // terminated, not yet gone
  bool exited = false;
  bool crashed = false;  // killed by Faults::KillAt
  std::uint32_t exitCode = 259;
  std::uint32_t openError = 0;  // OpenProcess fails with this
  std::uint32_t nameError = 0;  // QueryFullProcessImageNameW fails with this
  std::weak_ptr<Job> job;
  std::shared_ptr<AnonymousPipe> output;  // where a child's standard streams lead, if anywhere
  std::shared_ptr<AnonymousPipe> input;
  std::uint64_t adapterLuid = 0;  // of the adapter that it brought, while that is there
  Script script;
};

// The main thread of a child.
struct ChildThread : Object {
  std::string Describe() const override;
  bool IsWaitable() const override { return true; }
  bool IsSignalled() const override { return process->exited; }
  const void* WaitKey() const override { return process.get(); }
  std::shared_ptr<Process> process;
};

class Job : public Object {
 public:
  explicit Job(Processes& processes) : processes_(processes) {}
  std::string Describe() const override { return "job"; }
  void OnLastHandleClosed() override;

  std::uint32_t limitFlags = 0;
  std::vector<std::weak_ptr<Process>> members;

 private:
  Processes& processes_;
};

class Processes {
 public:
  Processes(Core& core, Clock& clock, netmodel::Network& network, Listeners& listeners)
      : core_(core), clock_(clock), network_(network), listeners_(listeners) {}

  // For tests -----------------------------------------------------------------------------------
  // A process that is there already, an orphan of an earlier run or the owner, following `script`
  // from now on. Without an id it gets one.
  std::shared_ptr<Process> Seed(const std::wstring& imagePath, std::uint32_t id = 0,
                                Script script = Idle());
  void Exit(std::uint32_t id, std::uint32_t code);
  void ExitAfter(std::uint32_t id, std::uint64_t milliseconds, std::uint32_t code);
  // Null when no process, alive or not, has or had this id.
  std::shared_ptr<Process> Find(std::uint32_t id) const;
  // Everything that was ever started or seeded, in order.
  std::vector<std::shared_ptr<Process>> All() const;
  // What CreateProcessW has started, in order.
  std::vector<std::shared_ptr<Process>> Started() const;
  std::vector<std::string> StartedCommandLines() const;
  // File names of what is alive, the product's own processes left out.
  std::vector<std::string> Alive() const;

  // For the platform's calls --------------------------------------------------------------------
  // What is alive, the product's own processes too, in the order of their start.
  std::vector<std::shared_ptr<Process>> AliveProcesses() const;
  std::shared_ptr<Process> Add(const std::wstring& imagePath, std::uint32_t id);
  void NoteStarted(const std::shared_ptr<Process>& process);
  // Lets the script run, once.
  void Resume(const std::shared_ptr<Process>& process);
  // False when it is gone already.
  bool Terminate(const std::shared_ptr<Process>& process, std::uint32_t code);
  void End(const std::shared_ptr<Process>& process, std::uint32_t code);

 private:
  void At(const std::shared_ptr<Process>& process, std::uint64_t after,
          std::function<void(Process&)> action, const void* ends = nullptr);
  void ScheduleAdapter(const std::shared_ptr<Process>& process);
  void ScheduleRest(const std::shared_ptr<Process>& process);
  netmodel::Adapter* AdapterOf(const Process& process);
  void RemoveAdapterOf(Process& process);

  Core& core_;
  Clock& clock_;
  netmodel::Network& network_;
  Listeners& listeners_;
  std::uint32_t nextId_ = 4000;
  std::vector<std::shared_ptr<Process>> all_;
  std::vector<std::shared_ptr<Process>> alive_;
  std::vector<std::shared_ptr<Process>> started_;
};

}  // namespace sim

#endif  // TAVRIN_TESTS_SIM_PROCESSES_H_
