#include "tests/e2e/harness/owner.h"

#include <stdexcept>

#include "tests/e2e/harness/service_process.h"
#include "tests/e2e/harness/waiting.h"

namespace e2e {

// The stand-in for netsh, told to hang. It takes no second look at what it was told.
Owner::Owner(const Sandbox& box, const Machine& machine) {
  const std::size_t before = machine.Starts("netsh.exe");
  machine.Edit([](standins::MachineState& state) { state.netsh.hangsOn = "owner"; });
  process_ = StartProgram(box.service() + L"\\netsh.exe", L"owner", box.service(),
                          {{L"TAVRIN_TEST_MACHINE", box.machine()}});
  pid_ = GetProcessId(process_);
  WaitUntil("the owner is up", [&] { return machine.Starts("netsh.exe") > before; });
  machine.Edit([](standins::MachineState& state) { state.netsh.hangsOn.clear(); });
  machine.ForgetCalls();
}

Owner::~Owner() {
  if (process_ == nullptr) return;
  TerminateProcess(process_, 0);
  CloseHandle(process_);
}

void Owner::End() {
  TerminateProcess(process_, 0);
  if (WaitForSingleObject(process_, kPatience) != WAIT_OBJECT_0) {
    throw std::runtime_error("the owner did not end");
  }
}

void Owner::Forget() {
  CloseHandle(process_);
  process_ = nullptr;
}

}  // namespace e2e
