#include "tests/sim/machine.h"

#include <atomic>
#include <chrono>
#include <thread>
#include <utility>

#include "tests/sim/threads.h"

namespace sim {
namespace {

// Which process of which machine a thread belongs to.
struct Binding {
  std::uint64_t machine = 0;
  std::uint32_t process = 0;
};
thread_local Binding threadBinding;

std::mutex currentLock;
std::shared_ptr<Machine>& CurrentSlot() {
  static std::shared_ptr<Machine>& slot = *new std::shared_ptr<Machine>;
  return slot;
}

std::uint64_t NextSerial() {
  static std::atomic<std::uint64_t> last{0};
  return ++last;
}

// A sanitizer's own thread starts with the program's first one; let that be over.
std::set<int> ThreadsOnceSettled() {
  std::thread([] {}).join();
  return AllThreads();
}

}  // namespace

Machine::Machine() : serial_(NextSerial()), threadsAtStart_(ThreadsOnceSettled()) {
  clock.SetDate(2025, 6, 15);
  files.Put(L"C:\\Windows\\System32\\netsh.exe");
  files.Put(modulePath);
  programs.On(L"netsh.exe", TypicalNetsh());
  names.Set("localhost", {"127.0.0.1"});
  foreground_ = AddOwnProcess()->id;
}

Machine::~Machine() = default;

std::shared_ptr<Machine> Machine::Current() {
  const std::lock_guard<std::mutex> lock(currentLock);
  return CurrentSlot();
}

void Machine::Install(std::shared_ptr<Machine> machine) {
  const std::lock_guard<std::mutex> lock(currentLock);
  CurrentSlot() = std::move(machine);
}

void Machine::PutHelpers(const std::wstring& runtimeDir) {
  files.Put(runtimeDir + L"\\xray\\xray.exe", "MZ");
  files.Put(runtimeDir + L"\\tun2socks\\tun2socks-windows-amd64.exe", "MZ");
  files.Put(runtimeDir + L"\\tun2socks\\wintun.dll", "MZ");
  programs.On(L"xray.exe", TypicalXray());
  programs.On(L"tun2socks*.exe", TypicalTun2socks());
}

std::shared_ptr<Process> Machine::AddOwnProcess() {
  const MachineLock lock = core_.Lock();
  const std::shared_ptr<Process> process = processes.Add(modulePath, 0);
  process->own = true;
  process->suspended = false;
  return process;
}

std::shared_ptr<Process> Machine::ThisProcess() {
  const MachineLock lock = core_.Lock();
  if (threadBinding.machine != serial_) {
    BindThisThread(foreground_);
  }
  return processes.Find(threadBinding.process);
}

void Machine::BindThisThread(std::uint32_t processId) {
  threadBinding = {serial_, processId};
}

ProcessRun Machine::RunProcess(std::function<void()> body) {
  MachineLock lock = core_.Lock();
  const std::shared_ptr<Process> process = AddOwnProcess();
  const std::uint32_t before = std::exchange(foreground_, process->id);
  const auto finished = std::make_shared<bool>(false);
  std::thread thread([this, process, finished, run = std::move(body)] {
    BindThisThread(process->id);
    run();
    const MachineLock inner = core_.Lock();
    *finished = true;
    core_.processEnded.notify_all();
  });
  core_.processEnded.wait(lock, [&] { return *finished || process->crashed; });
  foreground_ = before;
  if (process->crashed) {
    thread.detach();
    return {true, process->id};
  }
  lock.unlock();
  thread.join();
  Finish(process);
  return {false, process->id};
}

void Machine::Finish(const std::shared_ptr<Process>& process) {
  const MachineLock lock = core_.Lock();
  for (const std::string& open : OpenHandlesOf(process->id)) {
    AddViolation("left open at the process's end: " + open);
  }
  CloseEverythingOf(process->id);
  processes.End(process, 0);
}

void Machine::Crash(const std::shared_ptr<Process>& process, std::uint32_t exitCode) {
  const MachineLock lock = core_.Lock();
  process->crashed = true;
  CloseEverythingOf(process->id);
  processes.End(process, exitCode);
  core_.processEnded.notify_all();
}

void Machine::CloseEverythingOf(std::uint32_t processId) {
  handles.CloseAllOf(processId);
  resources.DropAllOf(processId);
  streams.DropAllOf(processId);
  winsockStarts.erase(processId);
}

std::vector<std::string> Machine::OpenHandles() const {
  return OpenHandlesOf(0);
}

std::vector<std::string> Machine::OpenHandlesOf(std::uint32_t processId) const {
  Machine& self = const_cast<Machine&>(*this);
  const MachineLock lock = self.core_.Lock();
  std::vector<std::string> texts;
  const auto isMeant = [processId](std::uint32_t owner) {
    return processId == 0 || owner == processId;
  };
  const auto add = [&](const std::vector<OpenItem>& items) {
    for (const OpenItem& item : items) {
      if (isMeant(item.processId)) {
        texts.push_back(item.kind + " from " + item.origin);
      }
    }
  };
  add(handles.Open());
  add(resources.Open());
  add(streams.Open());
  for (const auto& [process, count] : winsockStarts) {
    texts.insert(texts.end(), static_cast<size_t>(isMeant(process) ? count : 0),
                 "Winsock from WSAStartup");
  }
  return texts;
}

std::vector<std::string> Machine::Violations() const {
  Machine& self = const_cast<Machine&>(*this);
  const MachineLock lock = self.core_.Lock();
  return violations_;
}

void Machine::ForgetViolations() {
  const MachineLock lock = core_.Lock();
  violations_.clear();
}

void Machine::AddViolation(std::string text) {
  const MachineLock lock = core_.Lock();
  violations_.push_back(std::move(text));
}

size_t Machine::WaitForThreads() const {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
  for (;;) {
    const std::set<int> others = OtherThreads(threadsAtStart_);
    if (others.empty() || std::chrono::steady_clock::now() > deadline) {
      return others.size();
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
}

InstalledMachine::InstalledMachine() : machine_(std::make_shared<Machine>()) {
  Machine::Install(machine_);
}

InstalledMachine::~InstalledMachine() {
  Machine::Install(nullptr);
}

}  // namespace sim
