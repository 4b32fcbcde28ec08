#include "src/tunnel/child_process.h"

#include <utility>

#include "src/net/command.h"

namespace vpn {
namespace {

struct FindHandleTraits {
  using Type = HANDLE;
  static Type Empty() { return INVALID_HANDLE_VALUE; }
  static bool IsValid(Type value) { return value != INVALID_HANDLE_VALUE; }
  static void Close(Type value) { (void)FindClose(value); }
};

}  // namespace

std::wstring QuoteArgument(const std::wstring& text) {
  return L'"' + text + L'"';
}

std::wstring FindFileByPattern(const std::wstring& directory, const std::wstring& pattern) {
  WIN32_FIND_DATAW entry = {};
  const UniqueHandle<FindHandleTraits> find(
      FindFirstFileW((directory + L'\\' + pattern).c_str(), &entry));
  return find ? directory + L'\\' + entry.cFileName : std::wstring();
}

bool SpawnChild(HANDLE job, const std::wstring& executable, const std::wstring& commandLine,
                const std::wstring& workingDirectory, KernelHandle& process, KernelHandle& thread,
                std::wstring& error) {
  HiddenProcess child;
  DWORD createError = 0;
  if (!child.create(executable.c_str(), commandLine, CREATE_SUSPENDED | CREATE_NO_WINDOW,
                    workingDirectory.empty() ? nullptr : workingDirectory.c_str(), createError)) {
    error = L"CreateProcess failed err=" + std::to_wstring(createError);
    return false;
  }
  if (job != nullptr && AssignProcessToJobObject(job, child.process.get()) == FALSE) {
    (void)TerminateProcess(child.process.get(), 1);
    error = L"AssignProcessToJobObject failed";
    return false;
  }
  (void)ResumeThread(child.thread.get());  // one that stays suspended fails the wait that follows
  process = std::move(child.process);
  thread = std::move(child.thread);
  return true;
}

bool IsProcessRunning(HANDLE process) {
  return process != nullptr && WaitForSingleObject(process, 0) == WAIT_TIMEOUT;
}

}  // namespace vpn
