#include "tests/e2e/harness/windows_service.h"

#include <stdexcept>
#include <vector>

#include "tests/e2e/harness/waiting.h"

namespace e2e {
namespace {

constexpr wchar_t kName[] = L"TavrinService";

[[noreturn]] void Refuse(const char* what) {
  throw std::runtime_error(std::string(what) + " err=" + std::to_string(GetLastError()));
}

std::wstring OrEmpty(const wchar_t* text) {
  return text != nullptr ? text : L"";
}

}  // namespace

bool IsServiceInstalled() {
  const SC_HANDLE manager = OpenSCManagerW(nullptr, nullptr, SC_MANAGER_CONNECT);
  const SC_HANDLE service = OpenServiceW(manager, kName, SERVICE_QUERY_STATUS);
  if (service != nullptr) CloseServiceHandle(service);
  if (manager != nullptr) CloseServiceHandle(manager);
  return service != nullptr;
}

WindowsService::WindowsService()
    : manager_(OpenSCManagerW(nullptr, nullptr, SC_MANAGER_CONNECT)),
      service_(OpenServiceW(manager_, kName, SERVICE_ALL_ACCESS)) {
  if (service_ == nullptr) Refuse("no service to open");
}

WindowsService::~WindowsService() {
  CloseServiceHandle(service_);
  CloseServiceHandle(manager_);
}

SERVICE_STATUS_PROCESS WindowsService::Status() const {
  SERVICE_STATUS_PROCESS status{};
  DWORD needed = 0;
  if (QueryServiceStatusEx(service_, SC_STATUS_PROCESS_INFO, reinterpret_cast<BYTE*>(&status),
                           sizeof(status), &needed) == 0) {
    Refuse("no status");
  }
  return status;
}

ServiceSettings WindowsService::Settings() const {
  std::vector<BYTE> buffer(8192);
  const auto size = static_cast<DWORD>(buffer.size());
  DWORD needed = 0;
  auto* const config = reinterpret_cast<QUERY_SERVICE_CONFIGW*>(buffer.data());
  if (QueryServiceConfigW(service_, config, size, &needed) == 0) Refuse("no configuration");
  ServiceSettings settings{config->dwServiceType,
                           config->dwStartType,
                           config->dwErrorControl,
                           OrEmpty(config->lpBinaryPathName),
                           OrEmpty(config->lpLoadOrderGroup),
                           OrEmpty(config->lpDependencies),
                           OrEmpty(config->lpServiceStartName),
                           OrEmpty(config->lpDisplayName),
                           L""};
  if (QueryServiceConfig2W(service_, SERVICE_CONFIG_DESCRIPTION, buffer.data(), size, &needed) ==
      0) {
    Refuse("no description");
  }
  settings.description =
      OrEmpty(reinterpret_cast<SERVICE_DESCRIPTIONW*>(buffer.data())->lpDescription);
  return settings;
}

void WindowsService::Start() {
  if (StartServiceW(service_, 0, nullptr) == 0) Refuse("cannot start the service");
}

DWORD WindowsService::Control(DWORD control, DWORD* state) {
  SERVICE_STATUS status{};
  if (ControlService(service_, control, &status) == 0) return GetLastError();
  if (state != nullptr) *state = status.dwCurrentState;
  return NO_ERROR;
}

void WindowsService::WaitForState(DWORD state) const {
  WaitUntil("the service reaches the state " + std::to_string(state),
            [this, state] { return Status().dwCurrentState == state; });
}

HANDLE WindowsService::OpenProcess() const {
  const HANDLE process =
      ::OpenProcess(SYNCHRONIZE | PROCESS_TERMINATE | PROCESS_QUERY_LIMITED_INFORMATION, FALSE,
                    Status().dwProcessId);
  if (process == nullptr) Refuse("no process behind the service");
  return process;
}

}  // namespace e2e
