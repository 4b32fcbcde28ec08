// Keeps the name of a service taken: registers it, marks it for deletion, says so, and keeps it
// open until the standard input ends. While it does, Windows refuses to register the name again.
#include <windows.h>

#include <cstdio>

int wmain(int argc, wchar_t** argv) {
  const SC_HANDLE manager = OpenSCManagerW(nullptr, nullptr, SC_MANAGER_CREATE_SERVICE);
  if (argc != 2 || manager == nullptr) return 1;
  const SC_HANDLE service = CreateServiceW(
      manager, argv[1], nullptr, DELETE, SERVICE_WIN32_OWN_PROCESS, SERVICE_DEMAND_START,
      SERVICE_ERROR_NORMAL, L"C:\\nothing.exe", nullptr, nullptr, nullptr, nullptr, nullptr);
  if (service == nullptr || DeleteService(service) == FALSE) return 1;
  std::puts("held");
  std::fflush(stdout);
  while (std::getchar() != EOF) {
  }
  CloseServiceHandle(service);
  CloseServiceHandle(manager);
  return 0;
}
