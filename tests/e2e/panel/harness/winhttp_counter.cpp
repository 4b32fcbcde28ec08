#include "tests/e2e/panel/harness/winhttp_counter.h"

#include <windows.h>
#include <winhttp.h>

#include <atomic>
#include <stdexcept>
#include <vector>

// The slots that the loader has filled in.
extern "C" {
extern decltype(&WinHttpOpen) __imp_WinHttpOpen;
extern decltype(&WinHttpConnect) __imp_WinHttpConnect;
extern decltype(&WinHttpOpenRequest) __imp_WinHttpOpenRequest;
extern decltype(&WinHttpCloseHandle) __imp_WinHttpCloseHandle;
}

namespace e2e {
namespace {

std::atomic<int> Sessions;
std::atomic<int> Connections;
std::atomic<int> Requests;
std::atomic<int> Closed;
DWORD OpenDelay = 0;  // milliseconds; set before any thread calls

decltype(&WinHttpOpen) RealOpen = nullptr;
decltype(&WinHttpConnect) RealConnect = nullptr;
decltype(&WinHttpOpenRequest) RealOpenRequest = nullptr;
decltype(&WinHttpCloseHandle) RealCloseHandle = nullptr;

HINTERNET WINAPI CountedOpen(LPCWSTR agent, DWORD access, LPCWSTR proxy, LPCWSTR bypass,
                             DWORD flags) {
  ++Sessions;
  Sleep(OpenDelay);
  return RealOpen(agent, access, proxy, bypass, flags);
}

HINTERNET WINAPI CountedConnect(HINTERNET session, LPCWSTR host, INTERNET_PORT port,
                                DWORD reserved) {
  ++Connections;
  return RealConnect(session, host, port, reserved);
}

HINTERNET WINAPI CountedOpenRequest(HINTERNET connection, LPCWSTR verb, LPCWSTR path,
                                    LPCWSTR version, LPCWSTR referrer, LPCWSTR* types,
                                    DWORD flags) {
  ++Requests;
  return RealOpenRequest(connection, verb, path, version, referrer, types, flags);
}

BOOL WINAPI CountedCloseHandle(HINTERNET handle) {
  ++Closed;
  return RealCloseHandle(handle);
}

template <typename Function>
void Replace(Function& slot, Function replacement, Function& real) {
  if (slot == replacement) return;
  DWORD protection = 0;
  if (VirtualProtect(&slot, sizeof(slot), PAGE_READWRITE, &protection) == FALSE) {
    throw std::runtime_error("the import table can't be written");
  }
  real = slot;
  slot = replacement;
  VirtualProtect(&slot, sizeof(slot), protection, &protection);
}

// The platform's layout of the answer; the headers have none.
struct HandleRow {
  void* object;
  ULONG_PTR processId;
  ULONG_PTR handle;
  ULONG access;
  USHORT creator;
  USHORT type;
  ULONG attributes;
  ULONG reserved;
};
struct HandleTable {
  ULONG_PTR count;
  ULONG_PTR reserved;
  HandleRow rows[1];
};
constexpr ULONG kExtendedHandleInformation = 64;
using QuerySystemInformation = LONG(WINAPI*)(ULONG, void*, ULONG, ULONG*);

}  // namespace

void CountWinHttpHandles(unsigned long openDelayMs) {
  OpenDelay = openDelayMs;
  Replace(__imp_WinHttpOpen, &CountedOpen, RealOpen);
  Replace(__imp_WinHttpConnect, &CountedConnect, RealConnect);
  Replace(__imp_WinHttpOpenRequest, &CountedOpenRequest, RealOpenRequest);
  Replace(__imp_WinHttpCloseHandle, &CountedCloseHandle, RealCloseHandle);
}

WinHttpCounts CountedWinHttpHandles() {
  return {Sessions, Connections, Requests, Closed};
}

// GetProcessHandleCount would be simpler, but on Wine it always says 0.
int CountProcessHandles() {
  std::vector<ULONG_PTR> buffer(1 << 20);
  ULONG size = 0;
  const auto query = reinterpret_cast<QuerySystemInformation>(reinterpret_cast<void*>(
      GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "NtQuerySystemInformation")));
  if (query(kExtendedHandleInformation, buffer.data(),
            static_cast<ULONG>(buffer.size() * sizeof(ULONG_PTR)), &size) < 0) {
    throw std::runtime_error("the platform doesn't list its handles");
  }
  const auto* const table = reinterpret_cast<const HandleTable*>(buffer.data());
  int count = 0;
  for (ULONG_PTR i = 0; i < table->count; ++i) {
    if (table->rows[i].processId == GetCurrentProcessId()) ++count;
  }
  return count;
}

}  // namespace e2e
