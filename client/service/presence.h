// What the service manager and the list of processes know about the service.
#ifndef TAVRIN_CLIENT_SERVICE_PRESENCE_H_
#define TAVRIN_CLIENT_SERVICE_PRESENCE_H_

#include <windows.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace vpn {

struct RunningProcess {
  DWORD id = 0;
  std::wstring image;                    // full path, empty when the platform does not tell
  std::optional<std::uint64_t> runsFor;  // seconds, when the platform tells
};

// Until now; 0 for a moment to come.
std::uint64_t SecondsSince(const FILETIME& moment);

// Processes with this image name, case ignored, that have not ended. None when the platform does
// not list them.
std::vector<RunningProcess> FindProcesses(const std::wstring& imageName);

bool CanListProcesses();

// Image name of a process without its directory, empty when it does not run.
std::wstring ImageNameOf(DWORD id);

// As `FindProcesses`, and only those whose executable lies in or below `directory`.
std::vector<RunningProcess> FindProcessesUnder(const std::wstring& directory,
                                               const std::wstring& imageName);

struct InstalledService {
  bool isInstalled = false;
  bool isReadable = true;    // false: the service manager told nothing about it
  DWORD state = 0;           // SERVICE_RUNNING and the like
  std::wstring commandLine;  // as it was installed
};

InstalledService FindInstalledService();

// Runs or starts, under the service manager or otherwise.
bool IsServiceAlive();

struct ServicePlace {
  std::wstring directory;  // of its executable
  std::wstring runtimeDir;
  InstalledService installed;
};

// Of the running service, of the installed one, else of the one that would run from beside this
// program. `chosenRuntime` is what the user named, possibly nothing.
ServicePlace FindServicePlace(const std::wstring& chosenRuntime);

// The directory alone. While the service runs, the service manager is not asked, which takes long.
std::wstring FindServiceDirectory();

// The value of --runtime in a command line, without its quotes; empty when there is none.
std::wstring RuntimeOfCommandLine(const std::wstring& commandLine);

// Path of the executable in a command line, quoted or not.
std::wstring ProgramOfCommandLine(const std::wstring& commandLine);

// Of an executable, as "0.1.0"; empty when it has none.
std::wstring FileVersion(const std::wstring& path);

}  // namespace vpn

#endif  // TAVRIN_CLIENT_SERVICE_PRESENCE_H_
