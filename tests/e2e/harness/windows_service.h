// The installed service as the service manager shows it, over the manager's own interface.
#ifndef TAVRIN_TESTS_E2E_HARNESS_WINDOWS_SERVICE_H_
#define TAVRIN_TESTS_E2E_HARNESS_WINDOWS_SERVICE_H_

#include <windows.h>

#include <string>

namespace e2e {

bool IsServiceInstalled();

struct ServiceSettings {
  DWORD type = 0;
  DWORD startType = 0;
  DWORD errorControl = 0;
  std::wstring commandLine;
  std::wstring loadOrderGroup;
  std::wstring dependencies;
  std::wstring account;
  std::wstring displayName;
  std::wstring description;
};

// All of it throws std::runtime_error when the platform refuses.
class WindowsService {
 public:
  WindowsService();
  ~WindowsService();
  WindowsService(const WindowsService&) = delete;
  WindowsService& operator=(const WindowsService&) = delete;

  SERVICE_STATUS_PROCESS Status() const;
  ServiceSettings Settings() const;
  void Start();
  // 0, or the code with which the control was refused. The state that the service was in right
  // afterwards goes to `state`.
  DWORD Control(DWORD control, DWORD* state = nullptr);
  void WaitForState(DWORD state) const;
  // The process behind the service, which the caller closes.
  HANDLE OpenProcess() const;

 private:
  SC_HANDLE manager_ = nullptr;
  SC_HANDLE service_ = nullptr;
};

}  // namespace e2e

#endif  // TAVRIN_TESTS_E2E_HARNESS_WINDOWS_SERVICE_H_
