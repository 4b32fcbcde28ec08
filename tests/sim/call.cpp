#include "tests/sim/call.h"

#include <cstdio>
#include <cstdlib>
#include <utility>

#include "tests/sim/text.h"
#include "tests/sim/threads.h"

namespace sim {
namespace {

thread_local std::uint32_t lastError = 0;

// In front of the machine's locks, whose passing from thread to thread is an order too.
std::shared_ptr<Machine> MachineInTurn(const char* name) {
  Scheduler::PassAt(name);
  return Machine::Current();
}

}  // namespace

Arg::Arg(const wchar_t* text) : text_(text == nullptr ? "null" : '"' + Narrow(text) + '"') {}
Arg::Arg(const char* text) : text_(text == nullptr ? "null" : '"' + std::string(text) + '"') {}

Arg Arg::OfHandle(std::uintptr_t value) {
  return Arg(reinterpret_cast<HANDLE>(value));
}

Arg Arg::OfHex(std::uint32_t value) {
  char text[16];
  std::snprintf(text, sizeof text, "0x%X", value);
  return Arg(std::string(text));
}

std::string Arg::Text(const Handles& handles) const {
  return isHandle_ ? handles.Describe(handle_) : text_;
}

Call::Call(const char* name, std::initializer_list<Arg> arguments)
    : name_(name), machine_(MachineInTurn(name)) {
  if (!machine_) {
    std::fprintf(stderr, "sim: %s was called with no machine installed\n", name);
    std::abort();
  }
  lock_ = machine_->Lock();
  process_ = machine_->ThisProcess();
  if (process_->crashed) {
    Park();
  }
  std::string text;
  for (const Arg& argument : arguments) {
    text += (text.empty() ? "" : ", ") + argument.Text(machine_->handles);
  }
  Judge(text);
}

void Call::Judge(const std::string& text) {
  const Faults::Verdict verdict = machine_->faults.Judge(name_);
  if (verdict.kill) {
    machine_->Crash(process_);
    Park();
  }
  machine_->calls.Add({name_, text, machine_->clock.Now(), process_->id,
                       verdict.failure.has_value(), Scheduler::ThreadNumber()});
  if (!verdict.hooks.empty()) {
    lock_.unlock();  // a hook may wait for another thread
    for (const std::function<void()>& hook : verdict.hooks) {
      hook();
    }
    lock_.lock();
    if (process_->crashed) {
      Park();
    }
  }
  machine_->clock.Advance(verdict.delay);
  failed_ = verdict.failure.has_value();
  code_ = verdict.failure.value_or(0);
}

void Call::EndProcess(std::uint32_t exitCode) {
  machine_->Crash(process_, exitCode);
  Park();
}

void Call::Park() {
  lock_.unlock();
  lock_ = MachineLock();
  process_.reset();
  machine_.reset();  // the machine is not kept alive by what a dead process left on its stack
  Scheduler::LeaveForEver();
  ParkForEver();
}

std::uintptr_t Call::Open(std::shared_ptr<Object> object, std::uint32_t access) const {
  return machine_->handles.Open(std::move(object), process_->id, name_, access);
}

void Call::Track(void* memory, const std::string& kind, std::shared_ptr<void> owner) const {
  machine_->resources.Add(memory, kind, name_, process_->id, std::move(owner));
}

void Call::Block(const std::function<bool()>& done) {
  machine_->core().changed.wait(lock_, [&] { return done() || process_->crashed; });
  if (process_->crashed) {
    Park();
  }
}

void Call::Join(std::thread& thread) {
  lock_.lock();
  if (process_->crashed) {
    thread.detach();
    Park();
  }
  lock_.unlock();
  thread.join();
}

void Call::SetThreadError(std::uint32_t code) {
  lastError = code;
}
std::uint32_t Call::ThreadError() {
  return lastError;
}

}  // namespace sim
