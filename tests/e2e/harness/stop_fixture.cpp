#include "tests/e2e/harness/stop_fixture.h"

#include <algorithm>

#include "tests/e2e/harness/console_events.h"
#include "tests/e2e/harness/expect.h"
#include "tests/e2e/harness/waiting.h"

namespace e2e {
namespace {

const char* LastLine(Trigger trigger) {
  switch (trigger) {
    case Trigger::kShutdown:
    case Trigger::kCtrlC:
    case Trigger::kFallbackCtrlC:
      return "stopped.";
    case Trigger::kDaemonShutdown:
    case Trigger::kOwnerEnds:
      return "daemon stopped";
    case Trigger::kManagerStop:
      return "service stopped";
  }
  return "";
}

}  // namespace

std::string TriggerName(Trigger trigger) {
  switch (trigger) {
    case Trigger::kShutdown:
      return "Shutdown";
    case Trigger::kDaemonShutdown:
      return "DaemonShutdown";
    case Trigger::kCtrlC:
      return "CtrlC";
    case Trigger::kFallbackCtrlC:
      return "FallbackCtrlC";
    case Trigger::kOwnerEnds:
      return "OwnerEnds";
    case Trigger::kManagerStop:
      return "ManagerStop";
  }
  return "";
}

StopFixture::~StopFixture() {
  if (process_ != nullptr) CloseHandle(process_);
}

void StopFixture::Begin(Trigger trigger) {
  trigger_ = trigger;
  const std::wstring runtime = L"--runtime \"" + box.runtime() + L"\"";
  if (trigger == Trigger::kManagerStop) {
    Install();
    process_ = WindowsService().OpenProcess();
    return;
  }
  std::wstring mode;  // none for the fallback
  if (trigger == Trigger::kShutdown || trigger == Trigger::kCtrlC) mode = L"--console ";
  if (trigger == Trigger::kDaemonShutdown) mode = L"--daemon ";
  if (trigger == Trigger::kOwnerEnds) {
    owner_ = std::make_unique<Owner>(box, machine);
    mode = L"--daemon --owner-pid " + std::to_wstring(owner_->pid()) + L" ";
  }
  Launch(box.serviceExe(), mode + runtime);
  process_ = OpenProcess(SYNCHRONIZE | PROCESS_QUERY_LIMITED_INFORMATION, FALSE, service().pid());
}

void StopFixture::Pull() {
  switch (trigger_) {
    case Trigger::kShutdown:
    case Trigger::kDaemonShutdown:
      EXPECT_EQ(Ask(R"({"op":"shutdown"})"), kDown);
      return;
    case Trigger::kCtrlC:
    case Trigger::kFallbackCtrlC:
      PressCtrlC(service().pid());
      return;
    case Trigger::kOwnerEnds:
      owner_->End();
      WaitUntil("the end of the owner is noticed", [this] {
        const Lines log = ServiceLog();
        return std::find(log.begin(), log.end(), "ui process exited; stopping helper") != log.end();
      });
      return;
    case Trigger::kManagerStop:
      EXPECT_EQ(WindowsService().Control(SERVICE_CONTROL_STOP), static_cast<DWORD>(NO_ERROR));
  }
}

void StopFixture::ExpectEnded() {
  ASSERT_EQ(WaitForSingleObject(process_, kPatience), WAIT_OBJECT_0) << "the process did not end";
  DWORD code = 99;
  GetExitCodeProcess(process_, &code);
  EXPECT_EQ(code, 0U);
  EXPECT_EQ(ServiceLog().back(), LastLine(trigger_));
  if (trigger_ == Trigger::kManagerStop) WindowsService().WaitForState(SERVICE_STOPPED);
  ExpectNobodyLeft();
  ExpectSameNetwork(machine.Network(), netmodel::TypicalNetwork());
  EXPECT_EQ(TryToConnect(), static_cast<DWORD>(ERROR_FILE_NOT_FOUND));
}

void StopFixture::ExpectNobodyLeft() const {
  for (const char* image : {"xray.exe", "tun2socks-windows-amd64.exe", "netsh.exe"}) {
    if (machine.Starts(image) > 0) ExpectEnds(machine.OpenLast(image));
  }
}

bool StopFixture::IsUp() const {
  return WaitForSingleObject(process_, 0) == WAIT_TIMEOUT;
}

}  // namespace e2e
