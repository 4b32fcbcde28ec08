// Last error, handles, waits, ticks and threads.
#include "tests/sim/call.h"
#include "tests/sim/threads.h"

#include <windows.h>

#include <chrono>
#include <thread>
#include <utility>

using sim::Call;

DWORD GetLastError() {
  return Call::ThreadError();
}
void SetLastError(DWORD code) {
  Call::SetThreadError(code);
}

BOOL CloseHandle(HANDLE object) {
  Call call("CloseHandle", {object});
  if (call.failed()) {
    return call.Fail(FALSE);
  }
  const bool closed = call->handles.Close(reinterpret_cast<std::uintptr_t>(object),
                                          sim::Family::kKernel, call.name());
  return closed ? TRUE : call.Fail(FALSE, ERROR_INVALID_HANDLE);
}

void Sleep(DWORD milliseconds) {
  {
    Call call("Sleep", {milliseconds});
    call->clock.Advance(milliseconds);
  }
  std::this_thread::yield();  // a loop that sleeps leaves room for the thread that ends it
  sim::Scheduler::Rest();
}

namespace {

sim::Arg TimeOut(DWORD milliseconds) {
  return milliseconds == INFINITE ? sim::Arg(std::string("infinite")) : sim::Arg(milliseconds);
}

// A process handle must have been opened for waiting; the machine's other handles always are.
bool MayWait(const Call& call, HANDLE object) {
  const std::uint32_t access = call->handles.AccessOf(reinterpret_cast<std::uintptr_t>(object));
  return access == 0 || (access & SYNCHRONIZE) != 0;
}

}  // namespace

DWORD WaitForSingleObject(HANDLE object, DWORD milliseconds) {
  Call call("WaitForSingleObject", {object, TimeOut(milliseconds)});
  if (call.failed()) {
    return call.Fail(WAIT_FAILED);
  }
  const auto target = call.Kernel<sim::Object>(object);
  if (!target || !target->IsWaitable()) {
    return call.Fail(WAIT_FAILED, ERROR_INVALID_HANDLE);
  }
  if (!MayWait(call, object)) {
    return call.Fail(WAIT_FAILED, ERROR_ACCESS_DENIED);
  }
  sim::Clock& clock = call->clock;
  const auto done = [&] { return target->IsSignalled(); };
  if (milliseconds != INFINITE) {
    if (milliseconds > 0 && dynamic_cast<sim::ThreadObject*>(target.get()) != nullptr) {
      // A thread is given real time before virtual time runs out.
      (void)call->core().changed.wait_for(call.lock(), std::chrono::seconds(1), done);
    }
    return clock.WaitUntil(clock.Now() + milliseconds, done) ? WAIT_OBJECT_0 : WAIT_TIMEOUT;
  }
  call.Block([&] {
    while (!done() && clock.AdvanceToEnd(target->WaitKey())) {
    }
    return done();
  });
  return WAIT_OBJECT_0;
}

DWORD GetTickCount() {
  Call call("GetTickCount");
  return static_cast<DWORD>(call->clock.Now() & 0xFFFFFFFF);
}

// Ten million a second.
BOOL QueryPerformanceCounter(LARGE_INTEGER* counter) {
  Call call("QueryPerformanceCounter");
  counter->QuadPart = static_cast<LONGLONG>(call->clock.Now() * 10'000);
  return TRUE;
}

BOOL QueryPerformanceFrequency(LARGE_INTEGER* frequency) {
  Call call("QueryPerformanceFrequency");
  frequency->QuadPart = 10'000'000;
  return TRUE;
}

ULONGLONG GetTickCount64() {
  Call call("GetTickCount64");
  return call->clock.Now();
}

HANDLE CreateThread(SECURITY_ATTRIBUTES* /*attributes*/, SIZE_T /*stackSize*/,
                    LPTHREAD_START_ROUTINE start, LPVOID parameter, DWORD /*flags*/,
                    DWORD* threadId) {
  Call call("CreateThread");
  if (call.failed()) {
    return call.Fail<HANDLE>(nullptr);
  }
  const auto object = std::make_shared<sim::ThreadObject>();
  std::shared_ptr<sim::Machine> machine = sim::Machine::Current();
  const std::uint32_t processId = call.process()->id;
  call->newestThread = object;
  sim::Scheduler::StartThread("a thread of CreateThread", [machine = std::move(machine), object,
                                                           processId, start, parameter] {
    machine->BindThisThread(processId);
    (void)start(parameter);
    const sim::MachineLock lock = machine->Lock();
    object->done = true;
    machine->core().changed.notify_all();
  }).detach();
  if (threadId != nullptr) {
    *threadId = 1;  // nobody looks threads up by their ids
  }
  return call.OpenHandle(object);
}
