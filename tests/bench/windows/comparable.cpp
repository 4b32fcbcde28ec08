// What a C++ program weighs that has strings, a map and one of each kind of handle that the service
// uses, built and linked as the service is. It opens each once and says which of them it got.
#include <winsock2.h>
#include <windows.h>
#include <share.h>
#include <tlhelp32.h>
#include <winhttp.h>

#include <cstdio>
#include <map>
#include <string>

#include "src/common/unique_handle.h"

namespace {

struct SocketTraits {
  using Type = SOCKET;
  static Type empty() { return INVALID_SOCKET; }
  static bool isValid(Type value) { return value != INVALID_SOCKET; }
  static void close(Type value) { (void)closesocket(value); }
};

struct KeyTraits : vpn::NullIsEmpty<HKEY> {
  static void close(HKEY value) { (void)RegCloseKey(value); }
};

struct ServiceTraits : vpn::NullIsEmpty<SC_HANDLE> {
  static void close(SC_HANDLE value) { (void)CloseServiceHandle(value); }
};

struct InternetTraits : vpn::NullIsEmpty<HINTERNET> {
  static void close(HINTERNET value) { (void)WinHttpCloseHandle(value); }
};

using Opened = std::map<std::wstring, bool>;

DWORD WINAPI OtherThread(void* /*unused*/) {
  return 0;
}

vpn::KernelHandle StartProcess() {
  std::wstring commandLine = L"cmd.exe /c exit 0";
  STARTUPINFOW startup = {};
  startup.cb = sizeof(startup);
  PROCESS_INFORMATION started = {};
  (void)CreateProcessW(nullptr, commandLine.data(), nullptr, nullptr, FALSE, CREATE_NO_WINDOW,
                       nullptr, nullptr, &startup, &started);
  const vpn::KernelHandle thread(started.hThread);
  return vpn::KernelHandle(started.hProcess);
}

void OpenKernelObjects(const std::wstring& name, Opened& opened) {
  const vpn::KernelHandle event(CreateEventW(nullptr, TRUE, FALSE, nullptr));
  const vpn::KernelHandle process = StartProcess();
  const vpn::KernelHandle job(CreateJobObjectW(nullptr, nullptr));
  const vpn::KernelHandle thread(CreateThread(nullptr, 0, OtherThread, nullptr, 0, nullptr));
  const vpn::KernelHandle pipe(CreateNamedPipeW((L"\\\\.\\pipe\\" + name).c_str(),
                                                PIPE_ACCESS_DUPLEX, PIPE_REJECT_REMOTE_CLIENTS, 1,
                                                4096, 4096, 0, nullptr));
  const vpn::KernelHandle snapshot(CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0));
  opened[L"event"] = static_cast<bool>(event);
  opened[L"process"] = static_cast<bool>(process);
  opened[L"job"] = static_cast<bool>(job);
  opened[L"thread"] = static_cast<bool>(thread);
  opened[L"pipe"] = static_cast<bool>(pipe);
  opened[L"snapshot"] = static_cast<bool>(snapshot);
}

void OpenOthers(Opened& opened) {
  const vpn::UniqueFile file(_wfsopen(L"NUL", L"ab", _SH_DENYNO));
  vpn::UniqueHandle<KeyTraits> key;
  (void)RegOpenKeyExW(HKEY_CURRENT_USER, L"Software", 0, KEY_READ, key.put());
  const vpn::UniqueHandle<ServiceTraits> manager(
      OpenSCManagerW(nullptr, nullptr, SC_MANAGER_CONNECT));
  const vpn::UniqueHandle<InternetTraits> internet(
      WinHttpOpen(nullptr, WINHTTP_ACCESS_TYPE_NO_PROXY, nullptr, nullptr, 0));
  WSADATA data = {};
  (void)WSAStartup(MAKEWORD(2, 2), &data);
  const vpn::UniqueHandle<SocketTraits> connection(socket(AF_INET, SOCK_STREAM, IPPROTO_TCP));
  opened[L"file"] = static_cast<bool>(file);
  opened[L"registry key"] = static_cast<bool>(key);
  opened[L"service manager"] = static_cast<bool>(manager);
  opened[L"internet"] = static_cast<bool>(internet);
  opened[L"socket"] = static_cast<bool>(connection);
}

}  // namespace

extern "C" int wmain(int /*argc*/, wchar_t** argv) {
  Opened opened;
  OpenKernelObjects(L"comparable " + std::to_wstring(GetCurrentProcessId()), opened);
  OpenOthers(opened);
  std::wstring text = argv[0] + std::wstring(L"\n");
  for (const auto& [name, isOpen] : opened) {
    text += name + (isOpen ? L": opened\n" : L": not opened\n");
  }
  (void)std::fputws(text.c_str(), stdout);
  return 0;
}
