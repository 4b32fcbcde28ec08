#include "src/control/connect_operation.h"

#include "src/control/account_cache.h"
#include "src/control/tunnel_instance.h"
#include "tests/unit/control/control_fixture.h"

namespace vpn {
namespace {

class ConnectOperationTest : public unit::ControlTest {
 protected:
  bool IsRunning() {
    const MutexLock lock(g_tunnelLock);
    return g_tunnel.childrenAlive();
  }
  void ExpectTunnelUntouched() {
    EXPECT_TRUE(IsRunning());
    EXPECT_EQ(Alive(), unit::BothChildren());
    EXPECT_TRUE(HasRoute("0.0.0.0", 1));
    EXPECT_TRUE(HasRoute("128.0.0.0", 1));
    EXPECT_TRUE(HasRoute("198.51.100.7", 32));
  }
  void RemoveDefaultRoute() {
    const auto lock = machine.Lock();
    std::erase_if(machine.network.routes,
                  [](const netmodel::Route& route) { return route.prefixLength == 0; });
  }
};

TEST_F(ConnectOperationTest, EmptyResultMeansThatTheTunnelIsUp) {
  EXPECT_EQ(ConnectOperation(L"").text(), L"");
  ExpectTunnelUntouched();
}

TEST_F(ConnectOperationTest, AccountComesFirstThenTheRouteThenTheFileThenTheHosts) {
  EXPECT_EQ(ConnectOperation(L"").text(), L"");
  std::vector<std::string> sequence = machine.calls.Sequence(
      {"_wfsopen", "GetIpForwardTable2", "CreateToolhelp32Snapshot", "CreateProcessW"});
  ASSERT_GE(sequence.size(), 7u);
  sequence.resize(7);
  EXPECT_EQ(sequence[0], R"(_wfsopen "C:\run\panel.json", "rb", 64)");
  EXPECT_EQ(sequence[1], R"(_wfsopen "C:\run\session.json", "rb", 64)");
  EXPECT_EQ(sequence[2], R"(_wfsopen "C:\run\account.json", "rb", 64)");
  EXPECT_EQ(sequence[3].substr(0, 18), "GetIpForwardTable2");
  EXPECT_EQ(sequence[4], R"(_wfsopen "C:\run\session.json.xray.json", "wb", 64)");
  EXPECT_EQ(sequence[5], R"(_wfsopen "C:\run\panel.json", "rb", 64)");
  EXPECT_EQ(sequence[6].substr(0, 24), "CreateToolhelp32Snapshot");  // the tunnel's start
}

TEST_F(ConnectOperationTest, ChildrenGetTheFixedDirectoriesAndTheGeneratedFile) {
  EXPECT_EQ(ConnectOperation(L"").text(), L"");
  const auto started = machine.processes.Started();
  ASSERT_GE(started.size(), 2u);
  EXPECT_EQ(machine.processes.StartedCommandLines()[0],
            R"("C:\run\xray\xray.exe" run -c "C:\run\session.json.xray.json")");
  EXPECT_EQ(started[0]->directory, L"C:\\run\\xray");
  EXPECT_EQ(started[1]->image, L"C:\\run\\tun2socks\\tun2socks-windows-amd64.exe");
  EXPECT_EQ(started[1]->directory, L"C:\\run\\tun2socks");
}

TEST_F(ConnectOperationTest, AdapterGetsTheFixedAddress) {
  EXPECT_EQ(ConnectOperation(L"").text(), L"");
  const auto lock = machine.Lock();
  const netmodel::Adapter* const adapter = machine.network.FindByAlias("tavrin");
  ASSERT_NE(adapter, nullptr);
  ASSERT_EQ(adapter->addresses.size(), 1u);
  EXPECT_EQ(netmodel::FormatIpv4(adapter->addresses[0].address), "192.168.123.1");
}

TEST_F(ConnectOperationTest, ConfigurationNamesTheNodeAndThePhysicalInterface) {
  EXPECT_EQ(ConnectOperation(L"").text(), L"");
  const std::string config = GeneratedConfig();
  EXPECT_NE(config.find("\"198.51.100.7\""), std::string::npos);
  EXPECT_NE(config.find("\"以太网\""), std::string::npos);
  EXPECT_NE(config.find("2f9f0a3c-0000-4000-8000-000000000001"), std::string::npos);
}

TEST_F(ConnectOperationTest, PanelHostsArePinned) {
  machine.names.Set("update.example", {"203.0.113.77"});
  machine.files.Put(L"C:\\run\\panel.json", R"({"updateUrl":"https://update.example/v"})");
  EXPECT_EQ(ConnectOperation(L"").text(), L"");
  EXPECT_TRUE(HasRoute("203.0.113.77", 32));
}

TEST_F(ConnectOperationTest, RuntimeDirIsJoinedByPlainConcatenation) {
  SetRuntimeDir(L"C:\\run\\");
  EXPECT_EQ(ConnectOperation(L"").text(), L"");
  const std::vector<std::string> opened = machine.calls.TextsOf("_wfsopen");
  EXPECT_NE(
      std::find(opened.begin(), opened.end(), R"("C:\run\\session.json.xray.json", "wb", 64)"),
      opened.end());
  EXPECT_EQ(machine.processes.StartedCommandLines()[0],
            R"("C:\run\\xray\xray.exe" run -c "C:\run\\session.json.xray.json")");
}

TEST_F(ConnectOperationTest, SignedOutUserSeesTheBackendsText) {
  machine.files.Remove(L"C:\\run\\session.json");
  EXPECT_EQ(ConnectOperation(L"").text(), L"not logged in");
  EXPECT_EQ(machine.calls.Count("GetIpForwardTable2"), 0u);
}

TEST_F(ConnectOperationTest, MissingAccountFileIsNamed) {
  machine.files.Remove(L"C:\\run\\account.json");
  EXPECT_EQ(ConnectOperation(L"").text(), L"cannot read C:\\run\\account.json");
}

TEST_F(ConnectOperationTest, DamagedAccountFileGetsTheBackendsAnswer) {
  machine.files.Put(L"C:\\run\\account.json", "no JSON at all");
  EXPECT_EQ(ConnectOperation(L"").text(), L"session does not match account");
  machine.files.Put(L"C:\\run\\account.json",
                    R"({"email":"a@b.example","expireAt":"2030-01-01","address":"x"})");
  EXPECT_EQ(ConnectOperation(L"").text(), L"account.json is missing node fields");
}

TEST_F(ConnectOperationTest, MissingPhysicalRouteIsNamedBeforeAnythingIsWritten) {
  AllowNetworkChanges();
  RemoveDefaultRoute();
  EXPECT_EQ(ConnectOperation(L"").text(), L"no physical default gateway");
  EXPECT_EQ(GeneratedConfig(), "");
  EXPECT_EQ(machine.processes.Started().size(), 0u);
}

TEST_F(ConnectOperationTest, UnreadableRouteTableIsNamed) {
  machine.faults.Fail("GetIpForwardTable2");
  EXPECT_EQ(ConnectOperation(L"").text(), L"GetIpForwardTable2 failed");
}

TEST_F(ConnectOperationTest, ConfigurationThatCannotBeWrittenIsNamed) {
  machine.files.SetReadOnly(L"C:\\run", true);
  EXPECT_EQ(ConnectOperation(L"").text(), L"cannot write generated xray config");
  EXPECT_EQ(machine.processes.Started().size(), 0u);
}

TEST_F(ConnectOperationTest, FailureOfTheStartIsHandedOn) {
  machine.files.Remove(L"C:\\run\\tun2socks\\wintun.dll");
  EXPECT_EQ(ConnectOperation(L"").text(), L"wintun.dll not found next to tun2socks");
  EXPECT_FALSE(IsRunning());
}

TEST_F(ConnectOperationTest, FailureBeforeTheStartLeavesARunningTunnelUp) {
  EXPECT_EQ(ConnectOperation(L"").text(), L"");
  InvalidateAccountCache();
  {
    SCOPED_TRACE("no account");
    machine.files.Remove(L"C:\\run\\session.json");
    EXPECT_EQ(ConnectOperation(L"").text(), L"not logged in");
    ExpectTunnelUntouched();
    unit::PutLocalAccount(machine);
  }
  {
    SCOPED_TRACE("no route");
    machine.faults.Fail("GetIpForwardTable2");
    EXPECT_EQ(ConnectOperation(L"").text(), L"GetIpForwardTable2 failed");
    ExpectTunnelUntouched();
  }
  {
    SCOPED_TRACE("no file");
    machine.files.SetLocked(L"C:\\run\\session.json.xray.json", true);
    EXPECT_EQ(ConnectOperation(L"").text(), L"cannot write generated xray config");
    ExpectTunnelUntouched();
  }
  EXPECT_EQ(machine.calls.Count("TerminateProcess"), 0u);
}

TEST_F(ConnectOperationTest, FailedStartLeavesNoOldTunnel) {
  EXPECT_EQ(ConnectOperation(L"").text(), L"");
  machine.files.Remove(L"C:\\run\\xray\\xray.exe");
  EXPECT_EQ(ConnectOperation(L"").text(), L"xray.exe not found");
  EXPECT_FALSE(IsRunning());
  EXPECT_EQ(Alive(), std::vector<std::string>());
  EXPECT_FALSE(HasRoute("0.0.0.0", 1));
}

TEST_F(ConnectOperationTest, SecondConnectReplacesTheTunnel) {
  EXPECT_EQ(ConnectOperation(L"").text(), L"");
  std::vector<std::string> aliveAtWrite;
  machine.faults.Before("_wfsopen", 1, [&] { aliveAtWrite = Alive(); });
  EXPECT_EQ(ConnectOperation(L"").text(), L"");
  EXPECT_EQ(aliveAtWrite, unit::BothChildren());  // the file is rewritten under the old tunnel
  ExpectTunnelUntouched();
  EXPECT_EQ(machine.calls.Count("TerminateProcess"), 2u);
}

TEST_F(ConnectOperationTest, TwoConnectsWithin90SecondsFetchOnce) {
  EXPECT_EQ(ConnectOperation(L"Tokyo").text(), L"");
  EXPECT_EQ(ConnectOperation(L"Tokyo").text(), L"");
  EXPECT_EQ(Fetches(), 1);
}

TEST_F(ConnectOperationTest, ConnectAfterMoreThan90SecondsFetchesAgain) {
  EXPECT_EQ(ConnectOperation(L"Tokyo").text(), L"");
  machine.clock.Advance(90001);
  EXPECT_EQ(ConnectOperation(L"Tokyo").text(), L"");
  EXPECT_EQ(Fetches(), 2);
}

TEST_F(ConnectOperationTest, EmptyNodeNeverCausesASecondFetch) {
  EXPECT_EQ(ConnectOperation(L"").text(), L"");
  EXPECT_EQ(ConnectOperation(L"").text(), L"");
  EXPECT_EQ(Fetches(), 1);
}

TEST_F(ConnectOperationTest, UnknownNodeFetchesAfreshAndTakesTheFirst) {
  EXPECT_EQ(ConnectOperation(L"Tokyo").text(), L"");
  EXPECT_EQ(ConnectOperation(L"Atlantis").text(), L"");
  EXPECT_EQ(Fetches(), 2);
  ExpectTunnelUntouched();
}

TEST_F(ConnectOperationTest, UnknownNodeOnAnEmptyCacheFetchesTwice) {
  EXPECT_EQ(ConnectOperation(L"Atlantis").text(), L"");
  EXPECT_EQ(Fetches(), 2);
}

TEST_F(ConnectOperationTest, FailureBeforeTheStartKeepsTheCache) {
  machine.faults.Fail("GetIpForwardTable2");
  EXPECT_EQ(ConnectOperation(L"").text(), L"GetIpForwardTable2 failed");
  EXPECT_EQ(ConnectOperation(L"").text(), L"");
  EXPECT_EQ(Fetches(), 1);
}

TEST_F(ConnectOperationTest, FailedStartMakesTheNextConnectFetchAfresh) {
  machine.programs.OnNext(L"xray.exe", sim::Script().Exits(23, 100));
  EXPECT_EQ(ConnectOperation(L"").text(), L"连接核心无法启动，请换一条线路或重新登录后再试。");
  EXPECT_EQ(ConnectOperation(L"").text(), L"");
  EXPECT_EQ(Fetches(), 2);
}
}  // namespace
}  // namespace vpn
