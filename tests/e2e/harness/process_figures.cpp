#include "tests/e2e/harness/process_figures.h"

#include <winternl.h>

#include <psapi.h>
#include <tlhelp32.h>

#include <cstdint>
#include <cstring>
#include <stdexcept>

#include "tests/e2e/harness/pipe_client.h"
#include "tests/e2e/harness/waiting.h"
#include "tests/standins/text.h"

namespace e2e {
namespace {

// The system's list of all handles; GetProcessHandleCount says 0 for everybody under Wine.
constexpr auto kHandleInformation = static_cast<SYSTEM_INFORMATION_CLASS>(16);
constexpr auto kLengthMismatch = static_cast<NTSTATUS>(0xC0000004);

struct HandleListEntry {
  USHORT processId;  // its lower half
  USHORT trace;
  UCHAR type;
  UCHAR flags;
  USHORT handle;
  void* object;
  ULONG access;
};
// What a call that blocks holds under Wine: it comes and goes with the call, and is no object's.
constexpr UCHAR kNoType = 0;
constexpr std::size_t kEntriesOffset = sizeof(void*);  // a count of 32 bits and a gap come first

std::vector<char> ReadHandleList() {
  std::vector<char> list(1 << 20);
  for (;;) {
    ULONG needed = 0;
    const NTSTATUS status = NtQuerySystemInformation(kHandleInformation, list.data(),
                                                     static_cast<ULONG>(list.size()), &needed);
    if (status == 0) return list;
    if (status != kLengthMismatch) throw std::runtime_error("no list of the system's handles");
    list.resize(list.size() * 2);
  }
}

std::size_t CountHandles(DWORD processId) {
  const std::vector<char> list = ReadHandleList();
  ULONG all = 0;
  std::memcpy(&all, list.data(), sizeof(all));
  std::size_t count = 0;
  for (ULONG i = 0; i < all; ++i) {
    HandleListEntry entry{};
    std::memcpy(&entry, list.data() + kEntriesOffset + i * sizeof(entry), sizeof(entry));
    if (entry.processId == static_cast<USHORT>(processId) && entry.type != kNoType) ++count;
  }
  return count;
}

std::size_t CountThreads(DWORD processId) {
  const HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
  THREADENTRY32 thread{};
  thread.dwSize = sizeof(thread);
  std::size_t count = 0;
  for (BOOL more = Thread32First(snapshot, &thread); more != 0;
       more = Thread32Next(snapshot, &thread)) {
    if (thread.th32OwnerProcessID == processId) ++count;
  }
  CloseHandle(snapshot);
  return count;
}

PROCESS_MEMORY_COUNTERS MemoryOf(DWORD processId) {
  const HANDLE process = OpenProcess(PROCESS_QUERY_INFORMATION | PROCESS_VM_READ, FALSE, processId);
  PROCESS_MEMORY_COUNTERS counters{};
  const bool known = GetProcessMemoryInfo(process, &counters, sizeof(counters)) != 0;
  CloseHandle(process);
  if (!known) throw std::runtime_error("no memory counters");
  return counters;
}

bool IsOpen(const std::wstring& path) {
  const HANDLE file =
      CreateFileW(path.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
  if (file == INVALID_HANDLE_VALUE) return GetLastError() == ERROR_SHARING_VIOLATION;
  CloseHandle(file);
  return false;
}

}  // namespace

ProcessFigures FiguresOf(DWORD processId) {
  const PROCESS_MEMORY_COUNTERS memory = MemoryOf(processId);
  return {CountHandles(processId), CountThreads(processId), memory.PagefileUsage,
          memory.PeakWorkingSetSize};
}

ProcessFigures SettledFiguresOf(DWORD processId) {
  WaitUntil("the warm-up ends", [processId] { return CountThreads(processId) == 1; });
  WaitForListening();
  return FiguresOf(processId);
}

std::string FigureText(const ProcessFigures& figures) {
  return std::to_string(figures.handles) + " handles, " + std::to_string(figures.threads) +
         " threads, " + std::to_string(figures.privateBytes / 1024) + " KiB private, " +
         std::to_string(figures.peakWorkingSet / 1024) + " KiB peak working set";
}

std::vector<std::string> OpenFilesBelow(const std::wstring& directory) {
  std::vector<std::string> open;
  WIN32_FIND_DATAW entry{};
  const HANDLE search = FindFirstFileW((directory + L"\\*").c_str(), &entry);
  if (search == INVALID_HANDLE_VALUE) return open;
  do {
    const std::wstring name = entry.cFileName;
    const std::wstring path = directory + L"\\" + name;
    if (name == L"." || name == L"..") continue;
    if ((entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0) {
      for (std::string& file : OpenFilesBelow(path)) open.push_back(std::move(file));
    } else if (IsOpen(path)) {
      open.push_back(standins::ToUtf8(path));
    }
  } while (FindNextFileW(search, &entry) != 0);
  FindClose(search);
  return open;
}

}  // namespace e2e
