#include "tests/e2e/harness/service_process.h"

#include <stdexcept>

#include "tests/e2e/harness/waiting.h"

namespace e2e {
namespace {

// What the service reads and no test may pass on by accident.
const Environment kNeutral = {
    {L"TAVRIN_RUNTIME", L""}, {L"TAVRIN_TIMING", L""}, {L"TAVRIN_XBOARD_URL", L""}};

void Apply(const Environment& environment) {
  for (const auto& [name, value] : environment) {
    SetEnvironmentVariableW(name.c_str(), value.empty() ? nullptr : value.c_str());
  }
}

HANDLE KillOnCloseJob() {
  const HANDLE job = CreateJobObjectW(nullptr, nullptr);
  JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits{};
  limits.BasicLimitInformation.LimitFlags = JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE;
  SetInformationJobObject(job, JobObjectExtendedLimitInformation, &limits, sizeof(limits));
  return job;
}

HANDLE InheritableOutput(const std::wstring& path) {
  SECURITY_ATTRIBUTES inherit{sizeof(inherit), nullptr, TRUE};
  return CreateFileW(path.c_str(), FILE_APPEND_DATA, FILE_SHARE_READ | FILE_SHARE_WRITE, &inherit,
                     OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
}

}  // namespace

ServiceProcess::ServiceProcess(const std::wstring& executable, const std::wstring& arguments,
                               const Environment& environment, const std::wstring& outputPath,
                               HANDLE input, DWORD console)
    : job_(KillOnCloseJob()) {
  Apply(kNeutral);
  Apply(environment);
  STARTUPINFOW startup{};
  startup.cb = sizeof(startup);
  startup.dwFlags = STARTF_USESTDHANDLES;
  startup.hStdInput = input;
  startup.hStdOutput = InheritableOutput(outputPath);
  startup.hStdError = InheritableOutput(outputPath + kErrorsEnding);
  PROCESS_INFORMATION started{};
  std::wstring commandLine = L"\"" + executable + L"\" " + arguments;
  const bool created =
      CreateProcessW(executable.c_str(), commandLine.data(), nullptr, nullptr, TRUE,
                     CREATE_SUSPENDED | console, nullptr, nullptr, &startup, &started) != 0;
  const DWORD code = GetLastError();
  CloseHandle(startup.hStdOutput);
  CloseHandle(startup.hStdError);
  Apply(kNeutral);
  if (!created) throw std::runtime_error("cannot start the service err=" + std::to_string(code));
  process_ = started.hProcess;
  pid_ = started.dwProcessId;
  if (AssignProcessToJobObject(job_, process_) == 0) {
    TerminateProcess(process_, 99);
    throw std::runtime_error("no job for the service err=" + std::to_string(GetLastError()));
  }
  ResumeThread(started.hThread);
  CloseHandle(started.hThread);
}

ServiceProcess::~ServiceProcess() {
  TerminateProcess(process_, 99);
  WaitForSingleObject(process_, kPatience);
  CloseHandle(process_);
  CloseHandle(job_);
}

bool ServiceProcess::IsRunning() const {
  return WaitForSingleObject(process_, 0) == WAIT_TIMEOUT;
}

DWORD ServiceProcess::WaitForExitCode() {
  if (WaitForSingleObject(process_, kPatience) != WAIT_OBJECT_0) {
    throw std::runtime_error("the service did not end");
  }
  DWORD code = 0;
  GetExitCodeProcess(process_, &code);
  return code;
}

HANDLE StartProgram(const std::wstring& executable, const std::wstring& arguments,
                    const std::wstring& workingDirectory, const Environment& environment) {
  Apply(environment);
  STARTUPINFOW startup{};
  startup.cb = sizeof(startup);
  PROCESS_INFORMATION started{};
  std::wstring commandLine = L"\"" + executable + L"\" " + arguments;
  const bool created =
      CreateProcessW(executable.c_str(), commandLine.data(), nullptr, nullptr, FALSE,
                     CREATE_NO_WINDOW, nullptr, workingDirectory.c_str(), &startup, &started) != 0;
  if (!created) throw std::runtime_error("cannot start a program");
  CloseHandle(started.hThread);
  return started.hProcess;
}

void ServiceProcess::Kill() {
  TerminateProcess(process_, 99);
  WaitForExitCode();
}

}  // namespace e2e
