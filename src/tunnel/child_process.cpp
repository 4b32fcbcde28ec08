#include "src/tunnel/child_process.h"

#include <utility>

#include "src/common/number_text.h"

namespace vpn {
namespace {

struct FindHandleTraits {
  using Type = HANDLE;
  static Type empty() { return INVALID_HANDLE_VALUE; }
  static bool isValid(Type value) { return value != INVALID_HANDLE_VALUE; }
  static void close(Type value) { (void)FindClose(value); }
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

Status SpawnChild(HANDLE job, const std::wstring& executable, const std::wstring& commandLine,
                  const std::wstring& workingDirectory, HiddenProcess& child) {
  HiddenProcess created;
  if (!created.create(executable.c_str(), commandLine, CREATE_SUSPENDED | CREATE_NO_WINDOW,
                      workingDirectory.empty() ? nullptr : workingDirectory.c_str())) {
    const DWORD createError = GetLastError();
    return Status::failure(L"CreateProcess failed err=" + DecimalText(createError));
  }
  if (job != nullptr && AssignProcessToJobObject(job, created.process.get()) == FALSE) {
    (void)TerminateProcess(created.process.get(), 1);
    return Status::failure(L"AssignProcessToJobObject failed");
  }
  (void)ResumeThread(created.thread.get());  // one that stays suspended fails the wait that follows
  child = std::move(created);
  return Status::success();
}

}  // namespace vpn
