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
            "C:\\Program Files\\Tavrin\\runtime\n"
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

TEST_F(DoctorCommandTest, ItChangesNothingOnTheMachine) {
  const netmodel::Network before = machine.network;
  const std::vector<std::string> files = machine.files.List(L"C:");
  machine.files.Put(unit::kTrace, unit::RecordedConnect());
  Run({L"doctor"});
  EXPECT_TRUE(machine.network == before);
  EXPECT_EQ(machine.files.List(L"C:").size(), files.size() + 1);
  EXPECT_EQ(machine.processes.Alive(), std::vector<std::string>());
  for (const char* call : {"DeleteFileW", "CreateIpForwardEntry2", "DeleteIpForwardEntry2",
                           "SetIpInterfaceEntry", "SetInterfaceDnsSettings"}) {
    EXPECT_EQ(machine.calls.Count(call), 0u) << call;
  }
}

}  // namespace
}  // namespace vpn
