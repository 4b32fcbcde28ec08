// Child processes and jobs.
#include "tests/sim/call.h"
#include "tests/sim/path.h"
#include "tests/sim/text.h"

#include <windows.h>

#include <algorithm>
#include <optional>

using sim::Arg;
using sim::Call;

namespace {

std::uintptr_t ValueOf(HANDLE handle) {
  return reinterpret_cast<std::uintptr_t>(handle);
}

bool IsProgram(const sim::Files& files, const std::wstring& path) {
  const auto node = files.Find(path);
  return node && !node->directory;
}

// Where the platform looks for a program that is named without a directory.
std::optional<std::wstring> SearchProgram(sim::Machine& machine, std::wstring name) {
  if (sim::BaseName(name).find(L'.') == std::wstring::npos) {
    name += L".exe";
  }
  if (name.find_first_of(L"\\/:") != std::wstring::npos) {
    const std::wstring path = machine.files.Absolute(name);
    return IsProgram(machine.files, path) ? std::optional(path) : std::nullopt;
  }
  const std::wstring directories[] = {sim::DirectoryName(machine.modulePath),
                                      machine.files.currentDirectory, L"C:\\Windows\\System32",
                                      L"C:\\Windows"};
  for (const std::wstring& directory : directories) {
    const std::wstring path = directory + L"\\" + name;
    if (IsProgram(machine.files, path)) {
      return path;
    }
  }
  return std::nullopt;
}

// The program of a bare command line: the quoted first word; without quotes, the shortest text in
// front of a blank that is a program.
std::optional<std::wstring> ProgramOf(sim::Machine& machine, const std::wstring& line) {
  if (!line.empty() && line[0] == L'"') {
    return SearchProgram(machine, line.substr(1, line.find(L'"', 1) - 1));
  }
  for (size_t end = line.find(L' ');; end = line.find(L' ', end + 1)) {
    if (const auto found = SearchProgram(machine, line.substr(0, end))) {
      return found;
    }
    if (end == std::wstring::npos) {
      return std::nullopt;
    }
  }
}

struct Creation {
  std::wstring image;
  std::wstring directory;
  sim::Script script;
};

// The code with which the creation fails, or 0.
DWORD Prepare(sim::Machine& machine, LPCWSTR application, LPCWSTR commandLine, LPCWSTR directory,
              Creation* creation) {
  const std::optional<std::wstring> image = application != nullptr
                                                ? std::optional(machine.files.Absolute(application))
                                                : ProgramOf(machine, commandLine);
  if (!image || !machine.files.Find(*image)) {
    return ERROR_FILE_NOT_FOUND;
  }
  if (!IsProgram(machine.files, *image)) {
    return ERROR_ACCESS_DENIED;
  }
  creation->directory = machine.files.currentDirectory;
  if (directory != nullptr) {
    const auto node = machine.files.Find(directory);
    if (!node || !node->directory) {
      return ERROR_DIRECTORY;
    }
    creation->directory = node->path;
  }
  creation->image = *image;
  creation->script = machine.programs.Take(*image);
  return creation->script.createError;
}

std::shared_ptr<sim::Process> Start(const Call& call, const Creation& creation, LPCWSTR commandLine,
                                    DWORD flags) {
  const auto process = call->processes.Add(creation.image, 0);
  process->parentId = call.process()->id;
  process->commandLine = commandLine != nullptr ? commandLine : creation.image;
  process->directory = creation.directory;
  process->flags = flags;
  process->script = creation.script;
  call->processes.NoteStarted(process);
  if ((flags & CREATE_SUSPENDED) == 0) {
    call->processes.Resume(process);
  }
  return process;
}

}  // namespace

BOOL CreateProcessW(LPCWSTR applicationName, LPWSTR commandLine,
                    SECURITY_ATTRIBUTES* /*processAttributes*/,
                    SECURITY_ATTRIBUTES* /*threadAttributes*/, BOOL inheritHandles, DWORD flags,
                    LPVOID /*environment*/, LPCWSTR currentDirectory, STARTUPINFOW* startupInfo,
                    PROCESS_INFORMATION* information) {
  Call call("CreateProcessW",
            {applicationName, commandLine, Arg(std::string(inheritHandles ? "inherit" : "own")),
             Arg::OfHex(flags), currentDirectory, startupInfo->dwFlags,
             static_cast<int>(startupInfo->wShowWindow)});
  if (call.failed()) {
    return call.Fail(FALSE);
  }
  Creation creation;
  const DWORD error =
      Prepare(call.machine(), applicationName, commandLine, currentDirectory, &creation);
  if (error != 0) {
    return call.Fail(FALSE, error);
  }
  const auto process = Start(call, creation, commandLine, flags);
  if ((startupInfo->dwFlags & STARTF_USESTDHANDLES) != 0) {
    const auto writer = call.Kernel<sim::AnonymousWriter>(startupInfo->hStdOutput);
    process->output = writer ? writer->pipe : nullptr;
    if (startupInfo->hStdInput != nullptr) {
      process->input = call.Kernel<sim::AnonymousReader>(startupInfo->hStdInput)->pipe;
    }
  }
  const auto thread = std::make_shared<sim::ChildThread>();
  thread->process = process;
  information->hProcess = call.OpenHandle(process, PROCESS_ALL_ACCESS);
  information->hThread = call.OpenHandle(thread);
  information->dwProcessId = process->id;
  information->dwThreadId = process->id + 1;
  return TRUE;
}

DWORD ResumeThread(HANDLE thread) {
  Call call("ResumeThread", {thread});
  constexpr DWORD kFailed = 0xFFFFFFFF;
  if (call.failed()) {
    return call.Fail(kFailed);
  }
  const auto target = call.Kernel<sim::ChildThread>(thread);
  if (!target) {
    return call.Fail(kFailed, ERROR_INVALID_HANDLE);
  }
  const DWORD before = target->process->suspended ? 1 : 0;
  call->processes.Resume(target->process);
  return before;
}

BOOL TerminateProcess(HANDLE process, UINT exitCode) {
  Call call("TerminateProcess", {process, exitCode});
  if (call.failed()) {
    return call.Fail(FALSE);
  }
  const auto target = call.Kernel<sim::Process>(process);
  if (!target) {
    return call.Fail(FALSE, ERROR_INVALID_HANDLE);
  }
  const bool mayTerminate = (call->handles.AccessOf(ValueOf(process)) & PROCESS_TERMINATE) != 0;
  if (!mayTerminate || !call->processes.Terminate(target, exitCode)) {
    return call.Fail(FALSE, ERROR_ACCESS_DENIED);
  }
  return TRUE;
}

void ExitProcess(UINT exitCode) {
  Call call("ExitProcess", {exitCode});
  call.EndProcess(exitCode);
}

HANDLE OpenProcess(DWORD access, BOOL inheritHandle, DWORD processId) {
  Call call("OpenProcess",
            {Arg::OfHex(access), Arg(std::string(inheritHandle ? "inherit" : "own")), processId});
  if (call.failed()) {
    return call.Fail<HANDLE>(nullptr);
  }
  const auto target = call->processes.Find(processId);
  // A process that has ended can be opened as long as somebody still holds it.
  if (!target || (target->exited && target->handleCount == 0)) {
    return call.Fail<HANDLE>(nullptr, ERROR_INVALID_PARAMETER);
  }
  if (target->openError != 0) {
    return call.Fail<HANDLE>(nullptr, target->openError);
  }
  return call.OpenHandle(target, access);
}

BOOL GetExitCodeProcess(HANDLE process, DWORD* exitCode) {
  Call call("GetExitCodeProcess", {process});
  if (call.failed()) {
    return call.Fail(FALSE);
  }
  const auto target = call.Kernel<sim::Process>(process);
  if (!target) {
    return call.Fail(FALSE, ERROR_INVALID_HANDLE);
  }
  *exitCode = target->exitCode;
  return TRUE;
}

BOOL QueryFullProcessImageNameW(HANDLE process, DWORD /*flags*/, LPWSTR name, DWORD* size) {
  Call call("QueryFullProcessImageNameW", {process});
  if (call.failed()) {
    return call.Fail(FALSE);
  }
  const auto target = call.Kernel<sim::Process>(process);
  if (!target) {
    return call.Fail(FALSE, ERROR_INVALID_HANDLE);
  }
  if (target->nameError != 0) {
    return call.Fail(FALSE, target->nameError);
  }
  if (*size <= target->image.size()) {
    return call.Fail(FALSE, ERROR_INSUFFICIENT_BUFFER);
  }
  std::copy_n(target->image.c_str(), target->image.size() + 1, name);
  *size = static_cast<DWORD>(target->image.size());
  return TRUE;
}

DWORD GetCurrentProcessId() {
  Call call("GetCurrentProcessId");
  return call.process()->id;
}

HANDLE CreateJobObjectW(SECURITY_ATTRIBUTES* /*attributes*/, LPCWSTR name) {
  Call call("CreateJobObjectW", {name});
  if (call.failed()) {
    return call.Fail<HANDLE>(nullptr);
  }
  return call.OpenHandle(std::make_shared<sim::Job>(call->processes));
}

BOOL SetInformationJobObject(HANDLE job, JOBOBJECTINFOCLASS informationClass, LPVOID information,
                             DWORD length) {
  const auto* const limits = static_cast<JOBOBJECT_EXTENDED_LIMIT_INFORMATION*>(information);
  Call call("SetInformationJobObject", {job, static_cast<int>(informationClass), length,
                                        Arg::OfHex(limits->BasicLimitInformation.LimitFlags)});
  if (call.failed()) {
    return call.Fail(FALSE);
  }
  const auto target = call.Kernel<sim::Job>(job);
  if (!target) {
    return call.Fail(FALSE, ERROR_INVALID_HANDLE);
  }
  if (informationClass != JobObjectExtendedLimitInformation) {
    return call.Fail(FALSE, ERROR_INVALID_PARAMETER);
  }
  if (length != sizeof *limits) {
    return call.Fail(FALSE, ERROR_BAD_LENGTH);
  }
  target->limitFlags = limits->BasicLimitInformation.LimitFlags;
  return TRUE;
}

BOOL AssignProcessToJobObject(HANDLE job, HANDLE process) {
  Call call("AssignProcessToJobObject", {job, process});
  if (call.failed()) {
    return call.Fail(FALSE);
  }
  const auto target = call.Kernel<sim::Job>(job);
  const auto member = call.Kernel<sim::Process>(process);
  if (!target || !member) {
    return call.Fail(FALSE, ERROR_INVALID_HANDLE);
  }
  if (member->exited) {
    return call.Fail(FALSE, ERROR_ACCESS_DENIED);
  }
  target->members.push_back(member);
  member->job = target;
  return TRUE;
}
