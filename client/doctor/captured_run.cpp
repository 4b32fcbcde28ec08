#include "client/doctor/captured_run.h"

#include <algorithm>
#include <array>

#include "src/common/text.h"
#include "src/common/unique_handle.h"

namespace vpn {
namespace {

constexpr size_t kMostOutput = 64 << 10;  // bytes
constexpr size_t kMostAtOnce = 64 << 10;  // between two looks at the clock
constexpr DWORD kPause = 10;              // milliseconds between two looks
constexpr DWORD kUnknownCode = 0xFFFFFFFF;

struct Child {
  KernelHandle process;
  KernelHandle output;
};

// The child inherits one end of the new pipe, and not the one that is `kept` here.
bool MakePipe(KernelHandle& reading, KernelHandle& writing, const KernelHandle& kept, DWORD size) {
  SECURITY_ATTRIBUTES inheritable = {sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
  return CreatePipe(reading.put(), writing.put(), &inheritable, size) != FALSE &&
         SetHandleInformation(kept.get(), HANDLE_FLAG_INHERIT, 0) != FALSE;
}

// The pipe has room for everything, so that nobody has to read meanwhile. Its writing end is closed
// at the return: the child finds the end of its input.
bool FillInput(const std::string& input, KernelHandle& reading) {
  KernelHandle writing;
  DWORD count = 0;
  const auto size = static_cast<DWORD>(input.size());
  return input.size() <= kMostInput && MakePipe(reading, writing, writing, size) &&
         WriteFile(writing.get(), input.data(), size, &count, nullptr) != FALSE && count == size;
}

// The child alone gets its ends of the pipes, so that it inherits nothing else that is open here.
bool Start(std::wstring commandLine, const std::wstring& directory, const std::string& input,
           Child& child) {
  KernelHandle writing;
  KernelHandle reading;
  if ((!input.empty() && !FillInput(input, reading)) ||
      !MakePipe(child.output, writing, child.output, 0)) {
    return false;
  }
  STARTUPINFOW startup = {};
  startup.cb = sizeof(startup);
  startup.dwFlags = STARTF_USESTDHANDLES;
  startup.hStdInput = reading.get();
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

// Not more than `kMostAtOnce`: a program that prints without end must not hold up its own end.
void ReadWhatIsThere(HANDLE pipe, std::string& output) {
  DWORD available = 0;
  for (size_t taken = 0; taken < kMostAtOnce &&
                         PeekNamedPipe(pipe, nullptr, 0, nullptr, &available, nullptr) != FALSE &&
                         available > 0;) {
    std::array<char, 4096> chunk{};
    DWORD count = 0;
    const DWORD wanted = std::min<DWORD>(available, chunk.size());
    if (ReadFile(pipe, chunk.data(), wanted, &count, nullptr) == FALSE || count == 0) {
      return;
    }
    taken += count;
    output.append(chunk.data(), std::min<size_t>(count, kMostOutput - output.size()));
  }
}

}  // namespace

CapturedRun RunCaptured(const std::wstring& commandLine, const std::wstring& directory, DWORD limit,
                        const std::string& input) {
  CapturedRun run;
  Child child;
  run.hasStarted = Start(commandLine, directory, input, child);
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
  if (GetExitCodeProcess(child.process.get(), &run.exitCode) == FALSE) {
    run.exitCode = kUnknownCode;
  }
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
