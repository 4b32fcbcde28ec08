#include "tests/standins/shared_machine.h"

#include <windows.h>

#include <stdexcept>

#include "tests/standins/files.h"
#include "tests/standins/text.h"

namespace standins {
namespace {

// A mutex name holds no separators; the directory makes it the test's own.
std::wstring MutexName(const std::wstring& directory) {
  std::wstring name = L"Local\\TavrinTestMachine";
  for (const wchar_t c : directory) name += (c == L'\\' || c == L'/' || c == L':') ? L'_' : c;
  return name;
}

std::uint64_t TicksOf(const FILETIME& time) {
  return (static_cast<std::uint64_t>(time.dwHighDateTime) << 32) | time.dwLowDateTime;
}

std::uint64_t StartTime(HANDLE process) {
  FILETIME created{}, exited{}, kernel{}, user{};
  if (GetProcessTimes(process, &created, &exited, &kernel, &user) == 0) return 0;
  return TicksOf(created);
}

bool IsAlive(const AdapterOwner& owner) {
  const HANDLE process =
      OpenProcess(SYNCHRONIZE | PROCESS_QUERY_LIMITED_INFORMATION, FALSE, owner.processId);
  if (process == nullptr) return false;
  const bool alive =
      WaitForSingleObject(process, 0) == WAIT_TIMEOUT && StartTime(process) == owner.started;
  CloseHandle(process);
  return alive;
}

std::wstring ImagePath() {
  wchar_t buffer[MAX_PATH] = {};
  const DWORD length = GetModuleFileNameW(nullptr, buffer, MAX_PATH);
  return std::wstring(buffer, length);
}

std::wstring WorkingDirectory() {
  wchar_t buffer[MAX_PATH] = {};
  const DWORD length = GetCurrentDirectoryW(MAX_PATH, buffer);
  return std::wstring(buffer, length);
}

}  // namespace

std::wstring MachineDirectoryFromEnvironment() {
  wchar_t buffer[MAX_PATH] = {};
  const DWORD length = GetEnvironmentVariableW(kMachineVariable, buffer, MAX_PATH);
  return length < MAX_PATH ? std::wstring(buffer, length) : std::wstring();
}

SharedMachine::SharedMachine(std::wstring directory) : directory_(std::move(directory)) {
  if (directory_.empty()) throw std::runtime_error("TAVRIN_TEST_MACHINE names no directory");
  mutex_ = CreateMutexW(nullptr, FALSE, MutexName(directory_).c_str());
  if (mutex_ == nullptr) throw std::runtime_error("no mutex for the test machine");
  // Abandoned counts as taken: the state file is replaced in one step and so always whole.
  WaitForSingleObject(mutex_, INFINITE);
  try {
    Load();
    DropAdapters(false);
  } catch (...) {
    ReleaseMutex(mutex_);
    CloseHandle(mutex_);
    throw;
  }
}

SharedMachine::~SharedMachine() {
  Save();
  ReleaseMutex(mutex_);
  CloseHandle(mutex_);
}

void SharedMachine::Save() {
  const std::string text = FormatMachineState(state_);
  if (text != loadedText_) ReplaceWholeFile(directory_ + L"\\machine.json", text);
  loadedText_ = text;
}

void SharedMachine::Load() {
  const auto text = ReadWholeFile(directory_ + L"\\machine.json");
  if (!text) return;
  loadedText_ = *text;
  state_ = ParseMachineState(loadedText_);
}

void SharedMachine::DropAdapters(bool alsoOutliving) {
  std::erase_if(state_.owners, [&](const AdapterOwner& owner) {
    if ((owner.outlives && !alsoOutliving) || IsAlive(owner)) return false;
    state_.network.RemoveAdapter(owner.luid);
    return true;
  });
}

void SharedMachine::Log(std::string_view line) {
  AppendToFile(directory_ + L"\\calls.log", std::string(line) + "\n");
  Note(line, MomentNow());
}

void SharedMachine::Note(std::string_view what, std::uint64_t moment) const {
  if (!state_.keepsMoments) return;
  AppendToFile(directory_ + L"\\" + kMomentsFile,
               std::to_string(moment) + " " + std::string(what) + "\n");
}

std::uint64_t MomentNow() {
  FILETIME now{};
  GetSystemTimePreciseAsFileTime(&now);
  return TicksOf(now);
}

std::uint64_t MomentOfOwnStart() {
  return StartTime(GetCurrentProcess());
}

std::vector<std::string> ReadCallLog(const std::wstring& directory) {
  std::vector<std::string> lines;
  const std::string text = ReadWholeFile(directory + L"\\calls.log").value_or("");
  std::size_t start = 0;
  for (std::size_t end; (end = text.find('\n', start)) != std::string::npos; start = end + 1) {
    lines.push_back(text.substr(start, end - start));
  }
  return lines;
}

void OwnAdapter(MachineState& state, std::uint64_t luid, bool outlives) {
  state.owners.push_back({luid, GetCurrentProcessId(), StartTime(GetCurrentProcess()), outlives});
}

MachineState LogOwnStart() {
  const std::wstring path = ImagePath();
  const std::wstring image = path.substr(path.find_last_of(L"\\/") + 1);
  SharedMachine machine;
  machine.Log(ToUtf8(image) + " [" + std::to_string(GetCurrentProcessId()) + "] in " +
              ToUtf8(WorkingDirectory()) + ": " + ToUtf8(GetCommandLineW()));
  machine.Note("start of " + ToUtf8(image), MomentOfOwnStart());
  return machine.state();
}

}  // namespace standins
