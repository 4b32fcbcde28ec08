#include <algorithm>
#include <map>
#include <set>

#include "tests/unit/client/doctor/doctor_test.h"

namespace vpn {
namespace {

class DoctorCommandTest : public unit::DoctorTest {};

TEST_F(DoctorCommandTest, AHealthyMachine) {
  machine.services.Install({.name = "TavrinService", .state = SERVICE_RUNNING});
  unit::ScriptedService service(machine);
  service.RepliesAfter(5, unit::kDownReply);
  EXPECT_EQ(Run({L"doctor"}), 0);
  EXPECT_EQ(Out(),
            "✓ Windows            version 10.0, build 19045\n"
            "✓ Service            running as a Windows service, answers in 10 ms, "
            "C:\\Program Files\\Tavrin\\runtime\n"
            "✓ Runtime directory  only administrators may write to "
            "C:\\Program Files\\Tavrin\\runtime and to the service's programs\n"
            "✓ Programs           Xray 26.3.27, tun2socks 2.6.0, wintun.dll\n"
            "✓ Configuration      none generated yet\n"
            "✓ Account            so***@mail.example, plan until 2999-12-31, 1 node\n"
            "✓ Panel              none configured; the account is a file of this machine\n"
            "✓ Physical route     以太网 via 192.168.1.1\n"
            "✓ Other tunnels      none is up\n"
            "✓ Your proxy         off\n"
            "✓ Service's proxy    off\n"
            "✓ Port 17593         free\n"
            "✓ Leftovers          none\n"
            "✓ Last connect       none so far\n"
            "Everything is as it should be.\n");
}

TEST_F(DoctorCommandTest, EachFindingSaysWhatToDo) {
  UseTerminal(120);
  machine.files.SetAccessList(unit::kRuntime, "D:(A;OICI;FA;;;WD)");
  EXPECT_EQ(Run({L"doctor"}), 1);
  const std::vector<std::string> lines = machine.console.terminal.Lines();
  EXPECT_EQ(lines[1], "✗ Service            not installed and not running");
  EXPECT_EQ(lines[2], "    run TavrinService.exe --install with administrator's rights.");
  EXPECT_EQ(lines[3],
            "! Runtime directory  everyone may write to C:\\Program Files\\Tavrin\\runtime");
  EXPECT_EQ(lines[lines.size() - 2], "1 problem, 1 remark.");
  EXPECT_EQ(machine.console.terminal.ColourOf(L"✗"), 0x0C);
  EXPECT_EQ(machine.console.terminal.ColourOf(L"!"), 0x0E);
}

TEST_F(DoctorCommandTest, AsJson) {
  machine.windowsBuild = 18363;
  EXPECT_EQ(Run({L"doctor", L"--json"}), 1);
  EXPECT_EQ(Out().find(R"({
  "schema": 1,
  "problems": 2,
  "remarks": 0,
  "findings": [
    {
      "check": "windows",
      "verdict": "problem",
      "text": "version 10.0, build 18363",
      "whatToDo": "update Windows to version 10 2004 (build 19041) or newer"
    },
)"),
            0u);
}

// Everything of a machine that a program could leave changed.
struct Lasting {
  std::vector<std::string> files;  // with their contents, access lists and times
  std::map<std::wstring, sim::Registry::Values> registry;
  netmodel::Network network;
  std::string service;

  explicit Lasting(sim::Machine& machine)
      : registry(machine.registry.All()), network(machine.network) {
    for (const sim::FileNode& node : machine.files.All()) {
      files.push_back(std::string(node.path.begin(), node.path.end()) + "|" + node.content + "|" +
                      node.accessList + "|" + std::to_string(node.changes));
    }
    const auto record = machine.services.Find("TavrinService");
    service = record ? record->binaryPath + "|" + std::to_string(record->state) : "";
  }
};

TEST_F(DoctorCommandTest, ItChangesNothingOnTheMachine) {
  machine.services.Install({.name = "TavrinService", .state = SERVICE_RUNNING});
  unit::ScriptedService service(machine);
  service.RepliesAfter(5, unit::kDownReply);
  machine.files.Put(unit::kTrace, unit::RecordedConnect());
  machine.files.Put(InRuntime(L"session.json.xray.json"),
                    R"({ "log": { "error": "C:\\x\\xray-error.log" } })");
  machine.files.Put(InRuntime(L"xray-error.log"), "as it was");
  machine.files.Put(InRuntime(L"panel.json"), R"({"apiBase":"https://panel.example"})");
  const Lasting before(machine);
  Run({L"doctor"});
  const Lasting after(machine);
  EXPECT_EQ(before.files, after.files);
  EXPECT_TRUE(before.registry == after.registry);
  EXPECT_TRUE(before.network == after.network);
  EXPECT_EQ(before.service, after.service);
  EXPECT_EQ(machine.processes.Alive(), std::vector<std::string>());
}

const std::set<std::string> kReading = {
    // the machine
    "GetAdaptersAddresses", "GetConsoleMode", "GetEnvironmentVariableW", "GetExtendedTcpTable",
    "GetIpForwardTable2", "GetIpInterfaceEntry", "GetModuleFileNameW", "GetStdHandle",
    "GetSystemTimeAsFileTime", "GetTickCount64", "GetVersionExW", "ConvertInterfaceAliasToLuid",
    "SetConsoleCtrlHandler", "ConvertInterfaceLuidToAlias", "ConvertInterfaceLuidToIndex",
    "InitializeIpInterfaceEntry", "InetNtopW", "InetPtonW", "GetSystemTime",
    // files, the registry, services, processes
    "_wfsopen", "FindFirstFileW", "GetFileAttributesExW", "GetFileAttributesW", "GetFullPathNameW",
    "GetNamedSecurityInfoW", "ConvertSecurityDescriptorToStringSecurityDescriptorW",
    "RegOpenKeyExW", "RegQueryValueExW", "OpenSCManagerW", "OpenServiceW", "QueryServiceStatus",
    "QueryServiceConfigW", "CreateToolhelp32Snapshot", "Process32FirstW", "Process32NextW",
    "OpenProcess", "QueryFullProcessImageNameW", "GetProcessTimes",
    // the helper programs, the pipe, the panel, the port
    "CreatePipe", "SetHandleInformation", "CreateProcessW", "WaitForSingleObject",
    "GetExitCodeProcess", "PeekNamedPipe", "ReadFile", "CreateFileW", "WriteFile", "WSAStartup",
    "WSACleanup", "socket", "connect", "select", "getsockopt", "ioctlsocket", "WinHttpCrackUrl",
    "WinHttpOpen", "WinHttpSetTimeouts", "WinHttpConnect", "WinHttpOpenRequest",
    "WinHttpSendRequest", "WinHttpReceiveResponse", "WinHttpQueryHeaders",
    "WinHttpQueryDataAvailable", "WinHttpReadData",
    // what they handed out is given back
    "CloseHandle", "CloseServiceHandle", "FindClose", "FreeMibTable", "LocalFree", "RegCloseKey",
    "WinHttpCloseHandle", "closesocket", "GetLastError", "WSAGetLastError", "Sleep",
    "MultiByteToWideChar", "WideCharToMultiByte"};

// Whatever is not among these has to be looked at first: it may change something.
TEST_F(DoctorCommandTest, EachOfItsCallsOnlyReads) {
  machine.services.Install({.name = "TavrinService", .state = SERVICE_RUNNING});
  unit::ScriptedService service(machine);
  service.RepliesAfter(5, unit::kDownReply);
  machine.files.Put(unit::kTrace, unit::RecordedConnect());
  machine.files.Put(InRuntime(L"session.json.xray.json"), "{}");
  machine.files.Put(InRuntime(L"panel.json"), R"({"apiBase":"https://panel.example"})");
  machine.listeners.Listen(17593, 4711);
  Run({L"doctor"});
  for (const std::string& name : machine.calls.Names()) {
    EXPECT_EQ(kReading.count(name), 1u) << name;
  }
  for (const std::string& opening : machine.calls.TextsOf("_wfsopen")) {
    EXPECT_NE(opening.find(", \"rb\", "), std::string::npos) << opening;
  }
  // KEY_QUERY_VALUE
  for (const std::string& opening : machine.calls.TextsOf("RegOpenKeyExW")) {
    EXPECT_TRUE(opening.ends_with(", 0x1")) << opening;
  }
  // The pipe, and nothing but the request on it and the configuration for Xray.
  EXPECT_EQ(machine.calls.Count("CreateFileW"), 1u);
  const std::vector<std::string> writes = machine.calls.TextsOf("WriteFile");
  EXPECT_EQ(
      std::count_if(writes.begin(), writes.end(),
                    [](const std::string& text) { return text.find("pipe") != std::string::npos; }),
      2);
  EXPECT_EQ(service.Request(), R"({"op":"status"})");
  EXPECT_EQ(machine.processes.StartedCommandLines().size(), 3u);
}

}  // namespace
}  // namespace vpn
