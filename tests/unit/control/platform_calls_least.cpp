// The least that the ordered steps allow: one call for each thing that a step has to learn or to
// do. A step that stands on its own learns for itself, since what it learns may have changed since
// the step before. "Row" is a route as the platform takes it: prepared, its interface by LUID and
// index, and two addresses read.
#include "tests/unit/control/platform_calls.h"

namespace unit {
namespace {

struct Line {
  const char* step;
  const char* call;
  int count;
};

// A line of the trace: the time, and the file, opened for each line.
constexpr const char* kTracedSteps[] = {
    "stop() idle",       "kill stale (clean)", "find physical route",
    "pin panel hosts",   "spawn xray",         "xray socks listening",
    "spawn tun2socks",   "wintun adapter up",  "set tun address (api)",
    "set tun dns (api)", "tun ipv4 ready",     "routes installed",
    "ipv6 leak blocked"};

constexpr Line kConnect[] = {
    {"stop() idle", "ReadFile", 2},        // the request: its length, itself
    {"stop() idle", "GetTickCount64", 2},  // the remembered account: too old; stored anew
    {"stop() idle", "_wfsopen", 5},        // panel.json for the choice of the backend,
                                           // session.json, account.json, the configuration,
                                           // and panel.json for the hosts to pin
    {"stop() idle", "GetEnvironmentVariableW", 2},  // the panel's address, for each of those two
    {"stop() idle", "MultiByteToWideChar", 11},     // each text that was read: 1 of panel.json,
                                                    // twice; 1 of session.json; 8 of account.json
    {"stop() idle", "GetSystemTime", 1},            // is the account expired?
    {"stop() idle", "GetIpForwardTable2", 1},       // the physical route, for the configuration
    {"stop() idle", "ConvertInterfaceLuidToAlias", 1},
    {"stop() idle", "ConvertInterfaceLuidToIndex", 1},
    {"stop() idle", "InetNtopW", 1},
    {"stop() idle", "FreeMibTable", 1},
    {"stop() idle", "WideCharToMultiByte", 18},     // 9 texts of the configuration: size, bytes
    {"stop() idle", "GetEnvironmentVariableW", 1},  // where the trace goes,
    {"stop() idle", "GetModuleFileNameW", 1},       // which is beside the executable,
    {"stop() idle", "GetTickCount64", 1},           // and when it began

    {"kill stale (clean)", "CreateToolhelp32Snapshot", 2},  // one hunt for each program
    {"kill stale (clean)", "Process32FirstW", 2},
    {"kill stale (clean)", "Process32NextW", 6},  // of 3 processes, none of which is ours
    {"kill stale (clean)", "CloseHandle", 2},

    {"find physical route", "GetAdaptersAddresses", 2},  // other tunnels: the size, the list
    {"find physical route", "RegOpenKeyExW", 1},         // the system proxy
    {"find physical route", "WSAStartup", 1},            // the port: one attempt, and its pause
    {"find physical route", "InetPtonW", 1},
    {"find physical route", "GetTickCount64", 3},
    {"find physical route", "socket", 1},
    {"find physical route", "ioctlsocket", 1},
    {"find physical route", "connect", 1},
    {"find physical route", "select", 1},
    {"find physical route", "closesocket", 1},
    {"find physical route", "Sleep", 1},
    {"find physical route", "WSACleanup", 1},
    {"find physical route", "FindFirstFileW", 1},  // tun2socks, whatever its suffix
    {"find physical route", "FindClose", 1},
    {"find physical route", "GetFileAttributesW", 3},  // xray.exe, wintun.dll, the configuration
    {"find physical route", "GetIpForwardTable2", 1},  // the route that the tunnel remembers
    {"find physical route", "ConvertInterfaceLuidToAlias", 1},
    {"find physical route", "ConvertInterfaceLuidToIndex", 1},
    {"find physical route", "InetNtopW", 1},
    {"find physical route", "FreeMibTable", 1},

    {"pin panel hosts", "GetAdaptersAddresses", 2},  // the physical side's name servers
    {"pin panel hosts", "InetNtopW", 2},             // one name server, one address of the host
    {"pin panel hosts", "WSAStartup", 1},
    {"pin panel hosts", "GetAddrInfoW", 1},  // one host
    {"pin panel hosts", "FreeAddrInfoW", 1},
    {"pin panel hosts", "WSACleanup", 1},
    {"pin panel hosts", "InitializeIpForwardEntry", 2},  // a row to delete, a row to add
    {"pin panel hosts", "ConvertInterfaceAliasToLuid", 2},
    {"pin panel hosts", "ConvertInterfaceLuidToIndex", 2},
    {"pin panel hosts", "InetPtonW", 4},
    {"pin panel hosts", "DeleteIpForwardEntry2", 1},
    {"pin panel hosts", "CreateIpForwardEntry2", 1},

    {"spawn xray", "CreateJobObjectW", 1},
    {"spawn xray", "SetInformationJobObject", 1},
    {"spawn xray", "CreateProcessW", 1},
    {"spawn xray", "AssignProcessToJobObject", 1},
    {"spawn xray", "ResumeThread", 1},

    {"xray socks listening", "WSAStartup", 1},
    {"xray socks listening", "InetPtonW", 1},
    {"xray socks listening", "GetTickCount64", 2},       // the deadline; not over yet
    {"xray socks listening", "WaitForSingleObject", 2},  // alive in front of the attempt, and after
    {"xray socks listening", "socket", 1},
    {"xray socks listening", "ioctlsocket", 1},
    {"xray socks listening", "connect", 1},
    {"xray socks listening", "select", 1},
    {"xray socks listening", "getsockopt", 1},
    {"xray socks listening", "closesocket", 1},
    {"xray socks listening", "WSACleanup", 1},

    {"spawn tun2socks", "CreateProcessW", 1},
    {"spawn tun2socks", "AssignProcessToJobObject", 1},
    {"spawn tun2socks", "ResumeThread", 1},

    {"wintun adapter up", "GetTickCount", 2},          // the start; not over yet
    {"wintun adapter up", "GetAdaptersAddresses", 2},  // one look

    {"set tun address (api)", "WaitForSingleObject", 1},  // tun2socks lives
    {"set tun address (api)", "ConvertInterfaceAliasToLuid", 1},
    {"set tun address (api)", "ConvertInterfaceLuidToGuid", 1},
    {"set tun address (api)", "InetPtonW", 1},
    {"set tun address (api)", "GetUnicastIpAddressTable", 1},  // no other address stands there
    {"set tun address (api)", "FreeMibTable", 1},
    {"set tun address (api)", "InitializeIpInterfaceEntry", 1},  // no duplicate address detection
    {"set tun address (api)", "GetIpInterfaceEntry", 1},
    {"set tun address (api)", "SetIpInterfaceEntry", 1},
    {"set tun address (api)", "InitializeUnicastIpAddressEntry", 1},
    {"set tun address (api)", "ConvertInterfaceLuidToIndex", 1},
    {"set tun address (api)", "CreateUnicastIpAddressEntry", 1},

    {"set tun dns (api)", "ConvertInterfaceAliasToLuid", 1},
    {"set tun dns (api)", "ConvertInterfaceLuidToGuid", 1},
    {"set tun dns (api)", "SetInterfaceDnsSettings", 1},

    {"tun ipv4 ready", "GetTickCount", 2},
    {"tun ipv4 ready", "GetAdaptersAddresses", 2},  // one look

    {"routes installed", "InitializeIpForwardEntry", 4},  // rows: the node's pin to delete and to
                                                          // add, and the two split routes
    {"routes installed", "ConvertInterfaceAliasToLuid", 6},  // and for the two looks
    {"routes installed", "ConvertInterfaceLuidToIndex", 4},
    {"routes installed", "InetPtonW", 10},  // two for a row, one for a look
    {"routes installed", "DeleteIpForwardEntry2", 1},
    {"routes installed", "CreateIpForwardEntry2", 3},
    {"routes installed", "GetIpForwardTable2", 2},  // a look for each split route
    {"routes installed", "FreeMibTable", 2},

    {"ipv6 leak blocked", "CreateProcessW", 5},  // one netsh for each command
    {"ipv6 leak blocked", "WaitForSingleObject", 5},
    {"ipv6 leak blocked", "GetExitCodeProcess", 5},
    {"ipv6 leak blocked", "CloseHandle", 10},  // process and thread

    {"reply", "WaitForSingleObject", 2},  // do both children live?
};

// What every request ends with: the reply's length, the reply, and the next client's pipe.
constexpr Line kReply[] = {
    {"reply", "WriteFile", 2},
    {"reply", "FlushFileBuffers", 1},
    {"reply", "DisconnectNamedPipe", 1},
    {"reply", "CloseHandle", 1},
    {"reply", "ConvertStringSecurityDescriptorToSecurityDescriptorW", 1},
    {"reply", "CreateNamedPipeW", 1},
    {"reply", "LocalFree", 1},
    {"reply", "ConnectNamedPipe", 1},
};

constexpr Line kDisconnect[] = {
    {"stop", "ReadFile", 2},
    {"stop", "WaitForSingleObject", 7},  // is each child alive, is it gone; and three of netsh
    {"stop", "TerminateProcess", 2},
    {"stop", "CloseHandle", 11},              // 2 for each child, the job, 2 for each netsh
    {"stop", "InitializeIpForwardEntry", 5},  // rows: both pins, the node's once more, the splits
    {"stop", "ConvertInterfaceAliasToLuid", 6},  // and for the name server: the last three fail,
                                                 // since the adapter has gone with tun2socks
    {"stop", "ConvertInterfaceLuidToIndex", 3},
    {"stop", "InetPtonW", 6},
    {"stop", "DeleteIpForwardEntry2", 3},
    {"stop", "CreateProcessW", 3},  // router discovery, and two routes
    {"stop", "GetExitCodeProcess", 3},
};

// One line of the service log: its size and bytes, the file, and its turn among processes.
constexpr Line kLog[] = {
    {"log", "CreateFileW", 1}, {"log", "WideCharToMultiByte", 2}, {"log", "LockFileEx", 1},
    {"log", "WriteFile", 1},   {"log", "UnlockFileEx", 1},        {"log", "CloseHandle", 1},
};

template <std::size_t Size>
void Add(const Line (&lines)[Size], CallCounts& counts) {
  for (const Line& line : lines) {
    counts[line.step][line.call] += line.count;
  }
}

}  // namespace

CallCounts LeastOfConnect() {
  CallCounts counts;
  Add(kConnect, counts);
  Add(kReply, counts);
  Add(kLog, counts);
  for (const char* step : kTracedSteps) {
    ++counts[step]["GetTickCount64"];
    ++counts[step]["_wfopen_s"];
  }
  return counts;
}

CallCounts LeastOfDisconnect() {
  CallCounts counts;
  Add(kDisconnect, counts);
  Add(kReply, counts);
  Add(kLog, counts);
  return counts;
}

}  // namespace unit
