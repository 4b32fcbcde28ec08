// The service manager.
#include "tests/sim/call.h"
#include "tests/sim/text.h"
#include "tests/sim/threads.h"

#include <windows.h>

#include <algorithm>
#include <thread>
#include <utility>

using sim::Arg;
using sim::Call;

namespace {

std::uintptr_t ValueOf(SC_HANDLE handle) {
  return reinterpret_cast<std::uintptr_t>(handle);
}

SC_HANDLE OpenService(const Call& call, std::shared_ptr<sim::ServiceRecord> record, DWORD access) {
  const auto object = std::make_shared<sim::ServiceObject>();
  ++record->openHandles;
  object->record = std::move(record);
  object->services = &call->services;
  return reinterpret_cast<SC_HANDLE>(call.Open(object, access));
}

// The record behind a service handle that was opened with this right; null sets the last error.
std::shared_ptr<sim::ServiceRecord> Service(const Call& call, SC_HANDLE service, DWORD right) {
  const auto object = call->handles.FindAs<sim::ServiceObject>(ValueOf(service),
                                                               sim::Family::kService, call.name());
  if (!object) {
    return call.Fail(nullptr, ERROR_INVALID_HANDLE);
  }
  if ((call->handles.AccessOf(ValueOf(service)) & right) == 0) {
    return call.Fail(nullptr, ERROR_ACCESS_DENIED);
  }
  return object->record;
}

std::string NarrowOrEmpty(LPCWSTR text) {
  return text == nullptr ? "" : sim::Narrow(text);
}

}  // namespace

BOOL StartServiceCtrlDispatcherW(const SERVICE_TABLE_ENTRYW* table) {
  Call call("StartServiceCtrlDispatcherW", {table->lpServiceName});
  if (call.failed()) {
    return call.Fail(FALSE);
  }
  sim::Services& services = call->services;
  if (!services.startedByManager) {
    return call.Fail(FALSE, services.dispatcherError);
  }
  const std::shared_ptr<sim::Machine> machine = sim::Machine::Current();
  const std::shared_ptr<sim::Process> process = call.process();
  call.Release();
  std::thread serviceThread;
  const auto startThread = [&](std::function<void()> body) {
    serviceThread = sim::Scheduler::StartThread("the service's thread",
                                                [machine, process, run = std::move(body)] {
                                                  machine->BindThisThread(process->id);
                                                  run();
                                                });
  };
  services.Dispatch(table->lpServiceProc, table->lpServiceName, startThread,
                    [process] { return process->crashed; });
  call.Join(serviceThread);
  return TRUE;
}

SERVICE_STATUS_HANDLE RegisterServiceCtrlHandlerExW(LPCWSTR name, LPHANDLER_FUNCTION_EX handler,
                                                    LPVOID context) {
  Call call("RegisterServiceCtrlHandlerExW", {name});
  constexpr SERVICE_STATUS_HANDLE kNone = nullptr;
  if (call.failed()) {
    return call.Fail(kNone);
  }
  if (!call->services.RegisterHandler(name, handler, context)) {
    return call.Fail(kNone, ERROR_SERVICE_DOES_NOT_EXIST);
  }
  // Status handles are never closed, so this is none of the table's.
  return reinterpret_cast<SERVICE_STATUS_HANDLE>(&call->services);
}

BOOL SetServiceStatus(SERVICE_STATUS_HANDLE handle, SERVICE_STATUS* status) {
  Call call("SetServiceStatus", {status->dwCurrentState, status->dwControlsAccepted,
                                 status->dwWin32ExitCode, status->dwWaitHint});
  if (call.failed()) {
    return call.Fail(FALSE);
  }
  if (handle != reinterpret_cast<SERVICE_STATUS_HANDLE>(&call->services)) {
    return call.Fail(FALSE, ERROR_INVALID_HANDLE);
  }
  call->services.Report(*status);
  return TRUE;
}

SC_HANDLE OpenSCManagerW(LPCWSTR machine, LPCWSTR database, DWORD access) {
  Call call("OpenSCManagerW", {machine, database, access});
  constexpr SC_HANDLE kNone = nullptr;
  if (call.failed()) {
    return call.Fail(kNone);
  }
  if (access != SC_MANAGER_CONNECT && !call->services.administrator) {
    return call.Fail(kNone, ERROR_ACCESS_DENIED);
  }
  return reinterpret_cast<SC_HANDLE>(
      call.Open(std::make_shared<sim::ServiceManagerObject>(), access));
}

SC_HANDLE OpenServiceW(SC_HANDLE manager, LPCWSTR name, DWORD access) {
  Call call("OpenServiceW", {Arg::OfHandle(ValueOf(manager)), name, Arg::OfHex(access)});
  constexpr SC_HANDLE kNone = nullptr;
  if (call.failed()) {
    return call.Fail(kNone);
  }
  if (!call->handles.Find(ValueOf(manager), sim::Family::kService, call.name())) {
    return call.Fail(kNone, ERROR_INVALID_HANDLE);
  }
  auto record = call->services.FindRecord(name);
  if (!record) {
    return call.Fail(kNone, ERROR_SERVICE_DOES_NOT_EXIST);
  }
  const bool onlyAsks = (access & ~(SERVICE_QUERY_STATUS | SERVICE_QUERY_CONFIG)) == 0;
  if (!call->services.administrator && !onlyAsks) {
    return call.Fail(kNone, ERROR_ACCESS_DENIED);
  }
  return OpenService(call, std::move(record), access);
}

SC_HANDLE CreateServiceW(SC_HANDLE manager, LPCWSTR name, LPCWSTR displayName, DWORD access,
                         DWORD type, DWORD startType, DWORD errorControl, LPCWSTR binaryPath,
                         LPCWSTR loadOrderGroup, DWORD* tagId, LPCWSTR dependencies,
                         LPCWSTR startName, LPCWSTR password) {
  Call call("CreateServiceW", {name, displayName, Arg::OfHex(access), binaryPath});
  constexpr SC_HANDLE kNone = nullptr;
  if (call.failed()) {
    return call.Fail(kNone);
  }
  const std::uintptr_t value = ValueOf(manager);
  if (!call->handles.Find(value, sim::Family::kService, call.name())) {
    return call.Fail(kNone, ERROR_INVALID_HANDLE);
  }
  if ((call->handles.AccessOf(value) & SC_MANAGER_CREATE_SERVICE) == 0) {
    return call.Fail(kNone, ERROR_ACCESS_DENIED);
  }
  const auto record = std::make_shared<sim::ServiceRecord>();
  record->name = sim::Narrow(name);
  record->displayName = NarrowOrEmpty(displayName);
  record->binaryPath = NarrowOrEmpty(binaryPath);
  record->type = type;
  record->startType = startType;
  record->errorControl = errorControl;
  record->hasOtherSettings = loadOrderGroup != nullptr || tagId != nullptr ||
                             dependencies != nullptr || startName != nullptr || password != nullptr;
  const std::uint32_t error = call->services.Create(record);
  return error == 0 ? OpenService(call, record, access) : call.Fail(kNone, error);
}

BOOL DeleteService(SC_HANDLE service) {
  Call call("DeleteService", {Arg::OfHandle(ValueOf(service))});
  if (call.failed()) {
    return call.Fail(FALSE);
  }
  const auto record = Service(call, service, DELETE);
  if (!record) {
    return FALSE;
  }
  if (record->markedForDelete) {
    return call.Fail(FALSE, ERROR_SERVICE_MARKED_FOR_DELETE);
  }
  record->markedForDelete = true;
  return TRUE;
}

BOOL CloseServiceHandle(SC_HANDLE object) {
  Call call("CloseServiceHandle", {Arg::OfHandle(ValueOf(object))});
  if (call.failed()) {
    return call.Fail(FALSE);
  }
  const bool closed = call->handles.Close(ValueOf(object), sim::Family::kService, call.name());
  return closed ? TRUE : call.Fail(FALSE, ERROR_INVALID_HANDLE);
}

BOOL ChangeServiceConfig2W(SC_HANDLE service, DWORD level, LPVOID information) {
  Call call("ChangeServiceConfig2W", {Arg::OfHandle(ValueOf(service)), level});
  if (call.failed()) {
    return call.Fail(FALSE);
  }
  const auto record = Service(call, service, SERVICE_CHANGE_CONFIG);
  if (!record) {
    return FALSE;
  }
  if (level != SERVICE_CONFIG_DESCRIPTION) {
    return call.Fail(FALSE, ERROR_INVALID_PARAMETER);
  }
  record->description =
      NarrowOrEmpty(static_cast<SERVICE_DESCRIPTIONW*>(information)->lpDescription);
  return TRUE;
}

BOOL StartServiceW(SC_HANDLE service, DWORD argumentCount, LPCWSTR* /*arguments*/) {
  Call call("StartServiceW", {Arg::OfHandle(ValueOf(service)), argumentCount});
  if (call.failed()) {
    return call.Fail(FALSE);
  }
  const auto record = Service(call, service, SERVICE_START);
  if (!record) {
    return FALSE;
  }
  if (record->startError != 0) {
    return call.Fail(FALSE, record->startError);
  }
  if (record->state != SERVICE_STOPPED) {
    return call.Fail(FALSE, ERROR_SERVICE_ALREADY_RUNNING);
  }
  record->state = SERVICE_RUNNING;
  return TRUE;
}

BOOL ControlService(SC_HANDLE service, DWORD control, SERVICE_STATUS* status) {
  Call call("ControlService", {Arg::OfHandle(ValueOf(service)), control});
  if (call.failed()) {
    return call.Fail(FALSE);
  }
  const auto record = Service(call, service, SERVICE_STOP);
  if (!record) {
    return FALSE;
  }
  if (control != SERVICE_CONTROL_STOP) {
    return call.Fail(FALSE, ERROR_INVALID_SERVICE_CONTROL);
  }
  const std::uint32_t error = call->services.Stop(record);
  *status = {};
  status->dwServiceType = record->type;
  status->dwCurrentState = record->state;
  return error == 0 ? TRUE : call.Fail(FALSE, error);
}

BOOL QueryServiceStatus(SC_HANDLE service, SERVICE_STATUS* status) {
  Call call("QueryServiceStatus", {Arg::OfHandle(ValueOf(service))});
  if (call.failed()) {
    return call.Fail(FALSE);
  }
  const auto record = Service(call, service, SERVICE_QUERY_STATUS);
  if (!record) {
    return FALSE;
  }
  *status = {};
  status->dwServiceType = record->type;
  status->dwCurrentState = record->state;
  return TRUE;
}

BOOL QueryServiceConfigW(SC_HANDLE service, QUERY_SERVICE_CONFIGW* config, DWORD size,
                         DWORD* needed) {
  Call call("QueryServiceConfigW", {Arg::OfHandle(ValueOf(service)), size});
  if (call.failed()) {
    return call.Fail(FALSE);
  }
  const auto record = Service(call, service, SERVICE_QUERY_CONFIG);
  if (!record) {
    return FALSE;
  }
  const std::wstring path = sim::Widen(record->binaryPath);
  const size_t wanted = sizeof *config + (path.size() + 1) * sizeof(wchar_t);
  *needed = static_cast<DWORD>(wanted);
  if (size < wanted) {
    return call.Fail(FALSE, ERROR_INSUFFICIENT_BUFFER);
  }
  *config = {};
  config->dwServiceType = record->type;
  config->dwStartType = record->startType;
  config->lpBinaryPathName = reinterpret_cast<wchar_t*>(config + 1);
  std::copy_n(path.c_str(), path.size() + 1, config->lpBinaryPathName);
  return TRUE;
}
