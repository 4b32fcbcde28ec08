#include "client/service/presence.h"

#include <tlhelp32.h>

#include <algorithm>
#include <array>
#include <vector>

#include "src/common/environment.h"
#include "src/common/text.h"
#include "src/common/unique_handle.h"
#include "src/runtime/runtime_dir.h"

namespace vpn {
namespace {

struct ServiceHandleTraits : NullIsEmpty<SC_HANDLE> {
  static void close(SC_HANDLE value) { (void)CloseServiceHandle(value); }
};
using ServiceHandle = UniqueHandle<ServiceHandleTraits>;

constexpr wchar_t kServiceKey[] = L"TavrinService";
constexpr wchar_t kServiceImage[] = L"TavrinService.exe";
constexpr std::uint64_t kTicksPerSecond = 10'000'000;

std::uint64_t TicksOf(const FILETIME& time) {
  return static_cast<std::uint64_t>(time.dwHighDateTime) << 32 | time.dwLowDateTime;
}

// A process that may not be opened is listed by its id alone.
RunningProcess LookAt(DWORD id) {
  RunningProcess found;
  found.id = id;
  const KernelHandle process(OpenProcess(PROCESS_QUERY_LIMITED_INFORMATION, FALSE, id));
  if (!process) {
    return found;
  }
  std::array<wchar_t, 521> path{};
  DWORD length = 520;
  if (QueryFullProcessImageNameW(process.get(), 0, path.data(), &length) != FALSE) {
    found.image = path.data();
  }
  FILETIME creation = {};
  FILETIME unused = {};
  if (GetProcessTimes(process.get(), &creation, &unused, &unused, &unused) != FALSE) {
    found.runsFor = SecondsSince(creation);
  }
  return found;
}

template <class Visit>
void ForEachProcess(const Visit& visit) {
  const KernelHandle snapshot(CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0));
  PROCESSENTRY32W entry = {};
  entry.dwSize = sizeof(entry);
  BOOL more = snapshot ? Process32FirstW(snapshot.get(), &entry) : FALSE;
  for (; more != FALSE; more = Process32NextW(snapshot.get(), &entry)) {
    visit(entry);
  }
}

std::wstring DirectoryOf(const std::wstring& path) {
  const size_t separator = LastSeparator(path);
  return separator == std::wstring::npos ? std::wstring() : path.substr(0, separator);
}

// Empty when none runs, and when none may be opened: such a process does not tell it.
std::wstring DirectoryOfRunningService() {
  for (const RunningProcess& process : FindProcesses(kServiceImage)) {
    if (std::wstring directory = DirectoryOf(process.image); !directory.empty()) {
      return directory;
    }
  }
  return {};
}

// Where the service's program is when none runs: as it is installed, else beside this program.
std::wstring DirectoryAtRest(const std::wstring& commandLine) {
  std::wstring directory = DirectoryOf(ProgramOfCommandLine(commandLine));
  return directory.empty() ? DirectoryOf(ModulePath()) : directory;
}

std::wstring CommandLineOf(SC_HANDLE service) {
  DWORD size = 0;
  (void)QueryServiceConfigW(service, nullptr, 0, &size);  // fails; tells the size
  std::vector<std::uint64_t> buffer(size / sizeof(std::uint64_t) + 1);
  auto* const config = reinterpret_cast<QUERY_SERVICE_CONFIGW*>(buffer.data());
  if (QueryServiceConfigW(service, config, size, &size) == FALSE ||
      config->lpBinaryPathName == nullptr) {
    return {};
  }
  return config->lpBinaryPathName;
}

}  // namespace

std::uint64_t SecondsSince(const FILETIME& moment) {
  FILETIME now = {};
  GetSystemTimeAsFileTime(&now);
  const std::uint64_t start = TicksOf(moment);
  const std::uint64_t end = TicksOf(now);
  return end > start ? (end - start) / kTicksPerSecond : 0;
}

std::vector<RunningProcess> FindProcesses(const std::wstring& imageName) {
  std::vector<RunningProcess> found;
  const std::wstring wanted = ToLowerText(imageName);
  ForEachProcess([&](const PROCESSENTRY32W& entry) {
    if (ToLowerText(entry.szExeFile) == wanted) {
      found.push_back(LookAt(entry.th32ProcessID));
    }
  });
  return found;
}

bool CanListProcesses() {
  bool sawOne = false;  // at least this one runs
  ForEachProcess([&sawOne](const PROCESSENTRY32W&) { sawOne = true; });
  return sawOne;
}

std::wstring ImageNameOf(DWORD id) {
  std::wstring name;
  ForEachProcess([&](const PROCESSENTRY32W& entry) {
    if (entry.th32ProcessID == id) {
      name = entry.szExeFile;
    }
  });
  return name;
}

std::vector<RunningProcess> FindProcessesUnder(const std::wstring& directory,
                                               const std::wstring& imageName) {
  std::vector<RunningProcess> found = FindProcesses(imageName);
  const std::wstring prefix = ToLowerText(directory) + L"\\";
  std::erase_if(found, [&prefix](const RunningProcess& process) {
    return !ToLowerText(process.image).starts_with(prefix);
  });
  return found;
}

InstalledService FindInstalledService() {
  InstalledService found;
  const ServiceHandle manager(OpenSCManagerW(nullptr, nullptr, SC_MANAGER_CONNECT));
  if (!manager) {
    found.isReadable = false;
    return found;
  }
  const ServiceHandle service(
      OpenServiceW(manager.get(), kServiceKey, SERVICE_QUERY_STATUS | SERVICE_QUERY_CONFIG));
  const DWORD error = GetLastError();
  if (!service) {
    found.isReadable = error == ERROR_SERVICE_DOES_NOT_EXIST;
    return found;
  }
  found.isInstalled = true;
  SERVICE_STATUS status = {};
  found.isReadable = QueryServiceStatus(service.get(), &status) != FALSE;
  found.state = status.dwCurrentState;
  found.commandLine = CommandLineOf(service.get());
  return found;
}

bool IsServiceAlive() {
  const InstalledService installed = FindInstalledService();
  return installed.state == SERVICE_RUNNING || installed.state == SERVICE_START_PENDING ||
         !FindProcesses(kServiceImage).empty();
}

ServicePlace FindServicePlace(const std::wstring& chosenRuntime) {
  ServicePlace place;
  place.installed = FindInstalledService();
  const std::wstring& commandLine = place.installed.commandLine;
  place.directory = DirectoryOfRunningService();
  if (place.directory.empty()) {
    place.directory = DirectoryAtRest(commandLine);
  }
  place.runtimeDir = chosenRuntime;
  if (place.runtimeDir.empty()) {
    place.runtimeDir = RuntimeOfCommandLine(commandLine);
  }
  if (place.runtimeDir.empty()) {
    place.runtimeDir = FindRuntimeDir();
  }
  return place;
}

std::wstring FindServiceDirectory() {
  const std::wstring running = DirectoryOfRunningService();
  return running.empty() ? DirectoryAtRest(FindInstalledService().commandLine) : running;
}

std::wstring RuntimeOfCommandLine(const std::wstring& commandLine) {
  constexpr std::wstring_view kOption = L" --runtime ";
  const size_t option = commandLine.find(kOption);
  if (option == std::wstring::npos) {
    return {};
  }
  return ProgramOfCommandLine(commandLine.substr(option + kOption.size()));
}

std::wstring ProgramOfCommandLine(const std::wstring& commandLine) {
  if (commandLine.starts_with(L'"')) {
    return commandLine.substr(1, commandLine.find(L'"', 1) - 1);
  }
  return commandLine.substr(0, commandLine.find(L' '));
}

std::wstring FileVersion(const std::wstring& path) {
  DWORD unused = 0;
  const DWORD size = GetFileVersionInfoSizeW(path.c_str(), &unused);
  std::vector<BYTE> data(size);
  void* value = nullptr;
  UINT length = 0;
  if (size == 0 || GetFileVersionInfoW(path.c_str(), 0, size, data.data()) == FALSE ||
      VerQueryValueW(data.data(), L"\\", &value, &length) == FALSE ||
      length < sizeof(VS_FIXEDFILEINFO)) {
    return {};
  }
  const auto* const info = static_cast<const VS_FIXEDFILEINFO*>(value);
  return std::to_wstring(info->dwFileVersionMS >> 16) + L"." +
         std::to_wstring(info->dwFileVersionMS & 0xFFFF) + L"." +
         std::to_wstring(info->dwFileVersionLS >> 16);
}

}  // namespace vpn
