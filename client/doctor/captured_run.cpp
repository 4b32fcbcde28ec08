#include "client/doctor/captured_run.h"

#include <algorithm>
#include <array>

#include "src/common/text.h"
#include "src/common/unique_handle.h"

namespace vpn {
namespace {

constexpr size_t kMostOutput = 64 * 1024;  // bytes
constexpr DWORD kPause = 10;               // milliseconds between two looks

struct Child {
  KernelHandle process;
  KernelHandle output;
};

// The child alone gets the writing end, so that it inherits nothing else that is open here.
bool Start(std::wstring commandLine, const std::wstring& directory, Child& child) {
  SECURITY_ATTRIBUTES inheritable = {sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
  KernelHandle writing;
  if (CreatePipe(child.output.put(), writing.put(), &inheritable, 0) == FALSE ||
      SetHandleInformation(child.output.get(), HANDLE_FLAG_INHERIT, 0) == FALSE) {
    return false;
  }
  STARTUPINFOW startup = {};
  startup.cb = sizeof(startup);
  startup.dwFlags = STARTF_USESTDHANDLES;
  startup.hStdOutput = writing.get();
  startup.hStdError = writing.get();
  PROCESS_INFORMATION information = {};
  if (CreateProcessW(nullptr, commandLine.data(), nullptr, nullptr, TRUE, CREATE_NO_WINDOW, nullptr,
                     directory.c_str(), &startup, &information) == FALSE) {
    return false;
  }
  const KernelHandle thread(information.hThread);
  child.process = KernelHandle(information.hProcess);
  return true;
}

void ReadWhatIsThere(HANDLE pipe, std::string& output) {
  DWORD available = 0;
  while (PeekNamedPipe(pipe, nullptr, 0, nullptr, &available, nullptr) != FALSE && available > 0) {
    std::array<char, 4096> chunk{};
    DWORD count = 0;
    const DWORD wanted = std::min<DWORD>(available, chunk.size());
    if (ReadFile(pipe, chunk.data(), wanted, &count, nullptr) == FALSE || count == 0) {
      return;
    }
    output.append(chunk.data(), std::min<size_t>(count, kMostOutput - output.size()));
  }
}

}  // namespace

CapturedRun RunCaptured(const std::wstring& commandLine, const std::wstring& directory,
                        DWORD limit) {
  CapturedRun run;
  Child child;
  run.hasStarted = Start(commandLine, directory, child);
  if (!run.hasStarted) {
    return run;
  }
  const ULONGLONG start = GetTickCount64();
  do {
    run.hasEnded = WaitForSingleObject(child.process.get(), kPause) == WAIT_OBJECT_0;
    ReadWhatIsThere(child.output.get(), run.output);
  } while (!run.hasEnded && GetTickCount64() - start < limit);
  if (!run.hasEnded) {
    (void)TerminateProcess(child.process.get(), 1);
    return run;
  }
  (void)GetExitCodeProcess(child.process.get(), &run.exitCode);
  return run;
}

std::wstring VersionIn(const std::string& output) {
  constexpr std::string_view kDigits = "0123456789";
  for (size_t at = output.find_first_of(kDigits); at != std::string::npos;
       at = output.find_first_of(kDigits, at)) {
    const size_t end = std::min(output.find_first_not_of("0123456789.", at), output.size());
    std::string word = output.substr(at, end - at);
    word.erase(word.find_last_not_of('.') + 1);
    if (std::count(word.begin(), word.end(), '.') >= 1) {
      return Utf8ToWide(word);
    }
    at = end;
  }
  return {};
}

}  // namespace vpn
