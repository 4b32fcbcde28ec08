#include "tests/sim/api_table.h"

#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <string>
#include <unordered_map>

#include <win/errors.h>
#include <win/http.h>

namespace sim {
namespace {

constexpr std::uint32_t kEacces = 13;
constexpr std::uint32_t kUnsuccessful = 0xC0000001;  // STATUS_UNSUCCESSFUL

constexpr ApiEntry Never(std::string_view name) {
  return {name, FailureStyle::kNone, 0, false};
}
constexpr ApiEntry Named(std::string_view name, std::uint32_t code) {
  return {name, FailureStyle::kLastError, code, false};
}
constexpr ApiEntry Last(std::string_view name, std::uint32_t code) {
  return {name, FailureStyle::kLastError, code, true};
}
constexpr ApiEntry Result(std::string_view name, std::uint32_t code) {
  return {name, FailureStyle::kResult, code, true};
}

constexpr ApiEntry kTable[] = {
    // Time, last error, handles
    Never("GetLastError"),
    Never("SetLastError"),
    Never("WSAGetLastError"),
    Never("Sleep"),
    Never("GetTickCount"),
    Never("GetTickCount64"),
    Never("QueryPerformanceCounter"),
    Never("QueryPerformanceFrequency"),
    Never("GetSystemTime"),
    Never("GetSystemTimeAsFileTime"),
    Named("FileTimeToSystemTime", ERROR_INVALID_PARAMETER),
    Never("GetCurrentProcessId"),
    Named("CloseHandle", ERROR_INVALID_HANDLE),
    Last("WaitForSingleObject", ERROR_INVALID_HANDLE),
    Named("LocalFree", ERROR_INVALID_HANDLE),
    // Console
    Last("SetConsoleOutputCP", ERROR_INVALID_HANDLE),
    Last("SetConsoleCtrlHandler", ERROR_NOT_ENOUGH_MEMORY),
    Last("FreeConsole", ERROR_INVALID_PARAMETER),
    Never("_setmode"),
    Named("GetStdHandle", ERROR_INVALID_HANDLE),
    Named("GetConsoleMode", ERROR_INVALID_HANDLE),
    Named("GetConsoleScreenBufferInfo", ERROR_INVALID_HANDLE),
    Named("SetConsoleTextAttribute", ERROR_INVALID_HANDLE),
    Named("SetConsoleCursorInfo", ERROR_INVALID_HANDLE),
    Named("GetConsoleCursorInfo", ERROR_INVALID_HANDLE),
    Last("WriteConsoleW", ERROR_INVALID_HANDLE),
    Last("SetConsoleMode", ERROR_INVALID_HANDLE),
    Last("ReadConsoleW", ERROR_INVALID_HANDLE),
    // Services
    Last("StartServiceCtrlDispatcherW", ERROR_FAILED_SERVICE_CONTROLLER_CONNECT),
    Last("RegisterServiceCtrlHandlerExW", ERROR_SERVICE_DOES_NOT_EXIST),
    Last("SetServiceStatus", ERROR_INVALID_HANDLE),
    Last("OpenSCManagerW", ERROR_ACCESS_DENIED),
    Last("OpenServiceW", ERROR_SERVICE_DOES_NOT_EXIST),
    Last("CreateServiceW", ERROR_SERVICE_EXISTS),
    Last("DeleteService", ERROR_ACCESS_DENIED),
    Named("CloseServiceHandle", ERROR_INVALID_HANDLE),
    Last("ChangeServiceConfig2W", ERROR_ACCESS_DENIED),
    Last("StartServiceW", ERROR_SERVICE_REQUEST_TIMEOUT),
    Last("ControlService", ERROR_SERVICE_NOT_ACTIVE),
    Last("QueryServiceStatus", ERROR_ACCESS_DENIED),
    Last("QueryServiceConfigW", ERROR_ACCESS_DENIED),
    // Threads, processes, jobs
    Last("CreateThread", ERROR_NOT_ENOUGH_MEMORY),
    Last("CreateProcessW", ERROR_ACCESS_DENIED),
    Last("ResumeThread", ERROR_ACCESS_DENIED),
    Last("TerminateProcess", ERROR_ACCESS_DENIED),
    Never("ExitProcess"),
    Last("OpenProcess", ERROR_ACCESS_DENIED),
    Last("GetExitCodeProcess", ERROR_ACCESS_DENIED),
    Last("QueryFullProcessImageNameW", ERROR_GEN_FAILURE),
    Last("GetProcessTimes", ERROR_ACCESS_DENIED),
    Named("GetVersionExW", ERROR_INVALID_PARAMETER),
    Last("CreatePipe", ERROR_NOT_ENOUGH_MEMORY),
    Named("SetHandleInformation", ERROR_INVALID_HANDLE),
    Named("SystemTimeToFileTime", ERROR_INVALID_PARAMETER),
    Last("CreateJobObjectW", ERROR_NO_SYSTEM_RESOURCES),
    Last("SetInformationJobObject", ERROR_ACCESS_DENIED),
    Last("AssignProcessToJobObject", ERROR_ACCESS_DENIED),
    Last("CreateToolhelp32Snapshot", ERROR_NOT_ENOUGH_MEMORY),
    Last("Process32FirstW", ERROR_NO_MORE_FILES),
    Last("Process32NextW", ERROR_NO_MORE_FILES),
    // Files, environment
    Last("CreateFileW", ERROR_ACCESS_DENIED),
    Last("ReadFile", ERROR_BROKEN_PIPE),
    Last("WriteFile", ERROR_NO_DATA),
    Last("FlushFileBuffers", ERROR_BROKEN_PIPE),
    Last("LockFileEx", ERROR_INVALID_FUNCTION),
    Named("UnlockFileEx", ERROR_NOT_LOCKED),
    Last("DeleteFileW", ERROR_ACCESS_DENIED),
    Last("MoveFileExW", ERROR_ACCESS_DENIED),
    Last("GetFileAttributesW", ERROR_ACCESS_DENIED),
    Last("GetFileAttributesExW", ERROR_ACCESS_DENIED),
    Last("GetFileVersionInfoSizeW", 1813),
    Last("GetFileVersionInfoW", ERROR_ACCESS_DENIED),
    Named("VerQueryValueW", ERROR_INVALID_PARAMETER),
    Last("FindFirstFileW", ERROR_ACCESS_DENIED),
    Named("FindClose", ERROR_INVALID_HANDLE),
    Last("GetFullPathNameW", ERROR_NOT_ENOUGH_MEMORY),
    Last("SetCurrentDirectoryW", ERROR_ACCESS_DENIED),
    Last("GetModuleFileNameW", ERROR_NOT_ENOUGH_MEMORY),
    Last("GetEnvironmentVariableW", ERROR_ENVVAR_NOT_FOUND),
    Named("MultiByteToWideChar", ERROR_INVALID_PARAMETER),
    Named("WideCharToMultiByte", ERROR_INVALID_PARAMETER),
    Named("CryptStringToBinaryA", ERROR_INVALID_DATA),
    {"_wfsopen", FailureStyle::kErrno, kEacces, true},
    {"_wfopen_s", FailureStyle::kErrno, kEacces, true},
    // Pipes
    Last("CreateNamedPipeW", ERROR_PIPE_BUSY),
    Last("ConnectNamedPipe", ERROR_NO_DATA),
    Last("DisconnectNamedPipe", ERROR_PIPE_NOT_CONNECTED),
    Last("PeekNamedPipe", ERROR_BROKEN_PIPE),
    Last("ConvertStringSecurityDescriptorToSecurityDescriptorW", ERROR_INVALID_PARAMETER),
    Result("GetNamedSecurityInfoW", ERROR_ACCESS_DENIED),
    Last("ConvertSecurityDescriptorToStringSecurityDescriptorW", ERROR_INVALID_PARAMETER),
    // The user and the user's files
    Last("OpenProcessToken", ERROR_ACCESS_DENIED),
    Last("GetTokenInformation", ERROR_ACCESS_DENIED),
    Named("ConvertSidToStringSidW", ERROR_INVALID_PARAMETER),
    Last("SetFileSecurityW", ERROR_ACCESS_DENIED),
    Result("BCryptGenRandom", kUnsuccessful),
    // Registry
    Result("RegOpenKeyExW", ERROR_ACCESS_DENIED),
    Result("RegQueryValueExW", ERROR_ACCESS_DENIED),
    {"RegCloseKey", FailureStyle::kResult, ERROR_INVALID_HANDLE, false},
    // Winsock
    Result("WSAStartup", WSASYSNOTREADY),
    Named("WSACleanup", WSANOTINITIALISED),
    Last("socket", WSAENOBUFS),
    Named("closesocket", WSAENOTSOCK),
    Last("ioctlsocket", WSAENETDOWN),
    Last("connect", WSAENOBUFS),
    Last("select", WSAENETDOWN),
    Last("getsockopt", WSAENETDOWN),
    Result("GetAddrInfoW", WSATRY_AGAIN),
    Result("getaddrinfo", WSATRY_AGAIN),
    Never("FreeAddrInfoW"),
    Never("freeaddrinfo"),
    Named("InetPtonW", WSAEFAULT),
    Named("InetNtopW", ERROR_INVALID_PARAMETER),
    Named("inet_ntop", ERROR_INVALID_PARAMETER),
    // WinHTTP
    Named("WinHttpCrackUrl", ERROR_WINHTTP_INVALID_URL),
    Last("WinHttpOpen", ERROR_NOT_ENOUGH_MEMORY),
    Last("WinHttpSetTimeouts", ERROR_NOT_ENOUGH_MEMORY),
    Last("WinHttpConnect", ERROR_WINHTTP_OUT_OF_HANDLES),
    Last("WinHttpOpenRequest", ERROR_NOT_ENOUGH_MEMORY),
    Last("WinHttpSendRequest", ERROR_WINHTTP_CANNOT_CONNECT),
    Last("WinHttpReceiveResponse", ERROR_WINHTTP_CONNECTION_ERROR),
    Last("WinHttpQueryHeaders", ERROR_WINHTTP_HEADER_NOT_FOUND),
    Last("WinHttpQueryDataAvailable", ERROR_WINHTTP_CONNECTION_ERROR),
    Last("WinHttpReadData", ERROR_WINHTTP_CONNECTION_ERROR),
    Named("WinHttpCloseHandle", ERROR_INVALID_HANDLE),
    // IP Helper
    Result("GetIpForwardTable2", ERROR_NOT_ENOUGH_MEMORY),
    Never("FreeMibTable"),
    Result("CreateIpForwardEntry2", ERROR_ACCESS_DENIED),
    Result("DeleteIpForwardEntry2", ERROR_ACCESS_DENIED),
    Never("InitializeIpForwardEntry"),
    Result("ConvertInterfaceAliasToLuid", ERROR_INVALID_PARAMETER),
    Result("ConvertInterfaceLuidToAlias", ERROR_INVALID_PARAMETER),
    Result("ConvertInterfaceLuidToIndex", ERROR_INVALID_PARAMETER),
    Result("ConvertInterfaceLuidToGuid", ERROR_INVALID_PARAMETER),
    Result("GetUnicastIpAddressTable", ERROR_NOT_ENOUGH_MEMORY),
    Never("InitializeUnicastIpAddressEntry"),
    Result("CreateUnicastIpAddressEntry", ERROR_ACCESS_DENIED),
    Result("DeleteUnicastIpAddressEntry", ERROR_ACCESS_DENIED),
    Never("InitializeIpInterfaceEntry"),
    Result("GetIpInterfaceEntry", ERROR_NOT_FOUND),
    Result("SetIpInterfaceEntry", ERROR_ACCESS_DENIED),
    Result("SetInterfaceDnsSettings", ERROR_ACCESS_DENIED),
    Result("GetAdaptersAddresses", ERROR_NOT_ENOUGH_MEMORY),
    Result("GetExtendedTcpTable", ERROR_ACCESS_DENIED),
};

}  // namespace

const std::vector<ApiEntry>& AllApis() {
  static const std::vector<ApiEntry>& table =
      *new std::vector<ApiEntry>(std::begin(kTable), std::end(kTable));
  return table;
}

const ApiEntry& FindApi(std::string_view name) {
  using Index = std::unordered_map<std::string_view, const ApiEntry*>;
  static const Index& index = *[] {
    Index* const made = new Index;
    for (const ApiEntry& entry : AllApis()) {
      made->emplace(entry.name, &entry);
    }
    return made;
  }();
  const auto found = index.find(name);
  if (found == index.end()) {
    std::fprintf(stderr, "sim: no such platform function: %s\n", std::string(name).c_str());
    std::abort();
  }
  return *found->second;
}

}  // namespace sim
