#include "tests/sim/processes.h"

#include <algorithm>
#include <utility>

#include "tests/sim/path.h"
#include "tests/sim/text.h"

namespace sim {
namespace {

constexpr std::uint32_t kKillOnJobClose = 0x2000;
constexpr std::uint32_t kPortTaken = 0xFFFFFFFF;  // how Xray exits then

}  // namespace

std::string Process::Describe() const {
  return "process " + Narrow(BaseName(image));
}

std::string ChildThread::Describe() const {
  return "thread of " + Narrow(BaseName(process->image));
}

void Job::OnLastHandleClosed() {
  if ((limitFlags & kKillOnJobClose) == 0) {
    return;
  }
  for (const std::weak_ptr<Process>& member : members) {
    if (const std::shared_ptr<Process> process = member.lock()) {
      processes_.Terminate(process, 0);
    }
  }
}

std::shared_ptr<Process> Processes::Seed(const std::wstring& imagePath, std::uint32_t id,
                                         Script script) {
  const MachineLock lock = core_.Lock();
  const std::shared_ptr<Process> process = Add(imagePath, id);
  process->commandLine = imagePath;
  process->script = std::move(script);
  Resume(process);
  clock_.Advance(0);  // what the script does at 0 ms is part of how it is found
  return process;
}

std::shared_ptr<Process> Processes::Add(const std::wstring& imagePath, std::uint32_t id) {
  const MachineLock lock = core_.Lock();
  const std::shared_ptr<Process> process = std::make_shared<Process>();
  process->id = id != 0 ? id : nextId_;
  nextId_ += id != 0 ? 0 : 4;
  process->image = Units(imagePath);
  process->startedAt = clock_.Now();
  process->suspended = true;
  all_.push_back(process);
  alive_.push_back(process);
  return process;
}

void Processes::NoteStarted(const std::shared_ptr<Process>& process) {
  const MachineLock lock = core_.Lock();
  started_.push_back(process);
}

void Processes::Exit(std::uint32_t id, std::uint32_t code) {
  const MachineLock lock = core_.Lock();
  if (const std::shared_ptr<Process> process = Find(id)) {
    End(process, code);
  }
}

void Processes::ExitAfter(std::uint32_t id, std::uint64_t milliseconds, std::uint32_t code) {
  const MachineLock lock = core_.Lock();
  if (const std::shared_ptr<Process> process = Find(id)) {
    clock_.After(
        milliseconds, [this, process, code] { End(process, code); }, process.get());
  }
}

std::shared_ptr<Process> Processes::Find(std::uint32_t id) const {
  const MachineLock lock = core_.Lock();
  const auto found = std::find_if(all_.rbegin(), all_.rend(),
                                  [id](const auto& process) { return process->id == id; });
  return found == all_.rend() ? nullptr : *found;
}

std::vector<std::shared_ptr<Process>> Processes::All() const {
  const MachineLock lock = core_.Lock();
  return all_;
}

std::vector<std::shared_ptr<Process>> Processes::AliveProcesses() const {
  const MachineLock lock = core_.Lock();
  return alive_;
}

std::vector<std::shared_ptr<Process>> Processes::Started() const {
  const MachineLock lock = core_.Lock();
  return started_;
}

std::vector<std::string> Processes::StartedCommandLines() const {
  const MachineLock lock = core_.Lock();
  std::vector<std::string> lines;
  for (const auto& process : started_) {
    lines.push_back(Narrow(process->commandLine));
  }
  return lines;
}

std::vector<std::string> Processes::Alive() const {
  const MachineLock lock = core_.Lock();
  std::vector<std::string> names;
  for (const auto& process : alive_) {
    if (!process->own) {
      names.push_back(Narrow(BaseName(process->image)));
    }
  }
  return names;
}

void Processes::At(const std::shared_ptr<Process>& process, std::uint64_t after,
                   std::function<void(Process&)> action, const void* ends) {
  clock_.After(
      after,
      [process, action = std::move(action)] {
        if (!process->exited) {
          action(*process);
        }
      },
      ends);
}

void Processes::Resume(const std::shared_ptr<Process>& process) {
  const MachineLock lock = core_.Lock();
  if (!process->suspended || process->exited) {
    return;
  }
  process->suspended = false;
  ScheduleAdapter(process);
  ScheduleRest(process);
}

netmodel::Adapter* Processes::AdapterOf(const Process& process) {
  return process.adapterLuid == 0 ? nullptr : network_.FindByLuid(process.adapterLuid);
}

void Processes::ScheduleAdapter(const std::shared_ptr<Process>& process) {
  if (!process->script.adapter) {
    return;
  }
  const AdapterPlan& plan = *process->script.adapter;
  At(process, plan.appearsAfter, [this, plan](Process& child) {
    netmodel::Adapter adapter = plan.adapter;
    adapter.operStatus = netmodel::kOperStatusDown;
    if (!plan.firstName.empty()) {
      adapter.friendlyName = plan.firstName;
    }
    child.adapterLuid = network_.AddAdapter(std::move(adapter)).luid;
  });
  At(process, plan.renamedAfter, [this, plan](Process& child) {
    if (netmodel::Adapter* adapter = AdapterOf(child)) {
      adapter->friendlyName = plan.adapter.friendlyName;
    }
  });
  if (plan.upAfter) {
    At(process, *plan.upAfter, [this](Process& child) {
      if (netmodel::Adapter* adapter = AdapterOf(child)) {
        adapter->operStatus = netmodel::kOperStatusUp;
      }
    });
  }
}

void Processes::ScheduleRest(const std::shared_ptr<Process>& process) {
  const Script& script = process->script;
  for (const Script::Listening& listening : script.listens) {
    At(
        process, listening.after,
        [this, port = listening.port](Process& child) {
          if (!listeners_.Listen(port, child.id)) {
            End(child.shared_from_this(), kPortTaken);
          }
        },
        process.get());
  }
  for (const Script::Step& step : script.steps) {
    At(process, step.after, step.action);
  }
  if (script.netsh) {
    At(
        process, script.netsh->after,
        [this](Process& child) {
          const std::uint32_t result = network_.RunNetsh(Narrow(child.commandLine));
          End(child.shared_from_this(), child.script.netsh->code.value_or(result));
        },
        process.get());
  }
  if (script.exit) {
    At(
        process, script.exit->after,
        [this, code = script.exit->code](Process& child) { End(child.shared_from_this(), code); },
        process.get());
  }
}

bool Processes::Terminate(const std::shared_ptr<Process>& process, std::uint32_t code) {
  const MachineLock lock = core_.Lock();
  if (process->exited) {
    return false;
  }
  if (process->script.terminationTime == 0) {
    End(process, code);
  } else if (!process->dying) {
    process->dying = true;
    At(
        process, process->script.terminationTime,
        [this, code](Process& child) { End(child.shared_from_this(), code); }, process.get());
  }
  return true;
}

void Processes::End(const std::shared_ptr<Process>& process, std::uint32_t code) {
  const MachineLock lock = core_.Lock();
  if (process->exited) {
    return;
  }
  process->exited = true;
  std::erase(alive_, process);
  process->exitCode = code;
  listeners_.StopAllOf(process->id);
  RemoveAdapterOf(*process);
  if (process->script.atExit) {
    process->script.atExit(*process);
  }
  core_.changed.notify_all();
}

void Processes::RemoveAdapterOf(Process& process) {
  const std::uint64_t luid = std::exchange(process.adapterLuid, 0);
  if (luid == 0) {
    return;
  }
  const std::uint64_t after = process.script.adapter->vanishesAfter;
  if (after == 0) {
    network_.RemoveAdapter(luid);
    return;
  }
  clock_.After(after, [this, luid] { network_.RemoveAdapter(luid); });
}

}  // namespace sim
