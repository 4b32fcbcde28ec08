#include "tests/sim/services.h"

#include <future>
#include <string>
#include <thread>

#include "tests/sim/fixture.h"

#include <windows.h>

namespace sim {
namespace {

SERVICE_STATUS_HANDLE statusHandle = nullptr;
HANDLE stopWait = nullptr;

void Report(DWORD state) {
  SERVICE_STATUS status = {};
  status.dwCurrentState = state;
  SetServiceStatus(statusHandle, &status);
}

DWORD Handle(DWORD control, DWORD, void*, void*) {
  if (control == SERVICE_CONTROL_STOP) {
    Report(SERVICE_STOP_PENDING);
    Machine::Current()->processes.Exit(9000, 0);  // what the service below waits for
  }
  return 0;
}

void ServiceMain(DWORD, LPWSTR*) {
  statusHandle = RegisterServiceCtrlHandlerExW(L"Probe", Handle, nullptr);
  Report(SERVICE_RUNNING);
  WaitForSingleObject(stopWait, INFINITE);
  Report(SERVICE_STOPPED);
}

// The dispatcher of a process whose service's thread never runs.
class IdleDispatcher {
 public:
  explicit IdleDispatcher(Machine& machine) : machine_(machine) {
    std::promise<void> begun;
    thread_ = std::thread([this, &begun] {
      machine_.services.Dispatch(
          ServiceMain, L"Probe", [&](const auto&) { begun.set_value(); },
          [this] { return hasDied_; });
    });
    begun.get_future().wait();
  }

  // A sleeping dispatcher finds it out when it is woken.
  void ProcessDies() {
    const MachineLock lock = machine_.Lock();
    hasDied_ = true;
  }

  void WakeAndJoin() {
    machine_.core().changed.notify_all();
    thread_.join();
  }

 private:
  Machine& machine_;
  bool hasDied_ = false;
  std::thread thread_;
};

class ServiceCalls : public MachineTest {};

TEST_F(ServiceCalls, TheDispatcherRunsTheServiceUntilItIsStopped) {
  machine.services.startedByManager = true;
  machine.processes.Seed(L"C:\\event.exe", 9000);
  stopWait = OpenProcess(SYNCHRONIZE, FALSE, 9000);
  std::thread manager([this] {
    ASSERT_TRUE(machine.services.WaitForState(SERVICE_RUNNING));
    EXPECT_EQ(machine.services.Send(SERVICE_CONTROL_INTERROGATE), std::optional<std::uint32_t>(0));
    EXPECT_EQ(machine.services.Send(SERVICE_CONTROL_STOP), std::optional<std::uint32_t>(0));
  });
  std::wstring name = L"Probe";
  const SERVICE_TABLE_ENTRYW table[] = {{name.data(), ServiceMain}, {nullptr, nullptr}};
  EXPECT_NE(StartServiceCtrlDispatcherW(table), FALSE);
  manager.join();
  std::vector<DWORD> states;
  for (const SERVICE_STATUS& status : machine.services.Reported()) {
    states.push_back(status.dwCurrentState);
  }
  EXPECT_EQ(states, (std::vector<DWORD>{4, 3, 1}));
  CloseHandle(stopWait);
}

TEST_F(ServiceCalls, ADispatcherThatOutlivesItsProcessLeavesTheNextOneAlone) {
  IdleDispatcher killed(machine);
  killed.ProcessDies();
  IdleDispatcher next(machine);
  killed.WakeAndJoin();
  EXPECT_TRUE(machine.services.RegisterHandler(L"Probe", Handle, nullptr));
  next.ProcessDies();
  next.WakeAndJoin();
  EXPECT_FALSE(machine.services.RegisterHandler(L"Probe", Handle, nullptr));
}

TEST_F(ServiceCalls, StartedByHandTheDispatcherFailsWith1063) {
  const SERVICE_TABLE_ENTRYW table[] = {{nullptr, nullptr}};
  EXPECT_EQ(StartServiceCtrlDispatcherW(table), FALSE);
  EXPECT_EQ(GetLastError(), 1063u);
}

TEST_F(ServiceCalls, ADeletedServiceGoesWhenItHasStoppedAndIsClosed) {
  machine.services.Install({.name = "Probe", .state = SERVICE_RUNNING, .stopTakes = 300});
  const SC_HANDLE manager = OpenSCManagerW(nullptr, nullptr, SC_MANAGER_CREATE_SERVICE);
  const SC_HANDLE service =
      OpenServiceW(manager, L"probe", DELETE | SERVICE_STOP | SERVICE_QUERY_STATUS);
  SERVICE_STATUS status = {};
  EXPECT_NE(ControlService(service, SERVICE_CONTROL_STOP, &status), FALSE);
  EXPECT_NE(DeleteService(service), FALSE);
  CloseServiceHandle(service);
  const auto create = [&] {
    return CreateServiceW(manager, L"Probe", L"", SERVICE_ALL_ACCESS, 16, 2, 1, L"x", nullptr,
                          nullptr, nullptr, nullptr, nullptr);
  };
  EXPECT_EQ(create(), nullptr);
  EXPECT_EQ(GetLastError(), 1072u);
  Sleep(300);
  const SC_HANDLE made = create();
  ASSERT_NE(made, nullptr);
  EXPECT_NE(StartServiceW(made, 0, nullptr), FALSE);
  EXPECT_EQ(StartServiceW(made, 0, nullptr), FALSE);
  EXPECT_EQ(GetLastError(), 1056u);
  EXPECT_EQ(create(), nullptr);
  EXPECT_EQ(GetLastError(), 1073u);
  CloseServiceHandle(made);
  CloseServiceHandle(manager);
}

TEST_F(ServiceCalls, AnOrdinaryUserMayOnlyLook) {
  machine.services.administrator = false;
  EXPECT_EQ(OpenSCManagerW(nullptr, nullptr, SC_MANAGER_CREATE_SERVICE), nullptr);
  EXPECT_EQ(GetLastError(), 5u);
  const SC_HANDLE manager = OpenSCManagerW(nullptr, nullptr, SC_MANAGER_CONNECT);
  EXPECT_EQ(OpenServiceW(manager, L"Probe", DELETE), nullptr);
  EXPECT_EQ(GetLastError(), 1060u);
  CloseServiceHandle(manager);
}

}  // namespace
}  // namespace sim
