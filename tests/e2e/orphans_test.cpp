// What a run that was killed leaves behind, and how the next one deals with it.
#include "tests/e2e/harness/expect.h"
#include "tests/e2e/harness/service_test.h"
#include "tests/e2e/harness/waiting.h"
#include "tests/standins/text.h"

namespace e2e {
namespace {

using standins::MachineState;

constexpr char kTun2socks[] = "tun2socks-windows-amd64.exe";

// A process that the test starts in the service's stead, ended with the object at the latest.
class Straggler {
 public:
  Straggler(const std::wstring& executable, const std::wstring& arguments,
            const std::wstring& machineDirectory)
      : process_(StartProgram(executable, arguments,
                              executable.substr(0, executable.find_last_of(L'\\')),
                              {{L"TAVRIN_TEST_MACHINE", machineDirectory}})) {}
  ~Straggler() {
    TerminateProcess(process_, 1);
    WaitForSingleObject(process_, kPatience);
    CloseHandle(process_);
  }
  Straggler(const Straggler&) = delete;
  Straggler& operator=(const Straggler&) = delete;

  bool IsRunning() const { return WaitForSingleObject(process_, 0) == WAIT_TIMEOUT; }
  bool Ends() const { return WaitForSingleObject(process_, kPatience) == WAIT_OBJECT_0; }
  DWORD ExitCode() const {
    DWORD code = 0;
    GetExitCodeProcess(process_, &code);
    return code;
  }

 private:
  HANDLE process_;
};

class Orphans : public ServiceTest {
 protected:
  // A connect and a disconnect, for the configuration that a straggling Xray needs.
  void SetUp() override {
    StartService();
    ASSERT_EQ(Ask(R"({"op":"connect"})"), kUp);
    ASSERT_EQ(Ask(R"({"op":"disconnect"})"), kDown);
    RemoveFile(box.trace());
    machine.ForgetCalls();
  }
  std::unique_ptr<Straggler> StartXray(const std::wstring& directory) {
    const std::size_t starts = machine.Starts("xray.exe");
    auto process = std::make_unique<Straggler>(
        directory + L"\\xray.exe", L"run -c \"" + box.runtime() + L"\\session.json.xray.json\"",
        box.machine());
    WaitUntil("xray starts", [&] { return machine.Starts("xray.exe") > starts; });
    return process;
  }
  std::unique_ptr<Straggler> StartTun2socks(const std::wstring& directory) {
    auto process = std::make_unique<Straggler>(directory + L"\\tun2socks-windows-amd64.exe",
                                               L"--device tavrin --proxy socks5://127.0.0.1:17593",
                                               box.machine());
    WaitUntil("the adapter comes up", [this] {
      const netmodel::Network network = machine.Network();
      const netmodel::Adapter* adapter = network.FindByAlias("tavrin");
      return adapter != nullptr && adapter->operStatus == netmodel::kOperStatusUp;
    });
    return process;
  }
};

TEST_F(Orphans, BothChildrenOfAKilledRunAreFoundAndKilled) {
  const auto xray = StartXray(box.runtime() + L"\\xray");
  const auto tun2socks = StartTun2socks(box.runtime() + L"\\tun2socks");
  EXPECT_EQ(Ask(R"({"op":"connect"})"), kUp);
  EXPECT_TRUE(xray->Ends());
  EXPECT_TRUE(tun2socks->Ends());
  EXPECT_EQ(xray->ExitCode(), 0U);
  EXPECT_EQ(tun2socks->ExitCode(), 0U);
  EXPECT_EQ(TraceLabels().at(1), "kill stale (hit)");
  EXPECT_EQ(Ask(R"({"op":"disconnect"})"), kDown);
  ExpectSameNetwork(machine.Network(), netmodel::TypicalNetwork());
}

TEST_F(Orphans, ProcessOfTheSameNameElsewhereSurvives) {
  machine.Edit([](MachineState& state) { state.xray.listens = false; });
  MakeDirectories(box.root() + L"\\xray");
  CopyProgram(L"standins\\xray.exe", box.root() + L"\\xray\\xray.exe");
  const auto elsewhere = StartXray(box.root() + L"\\xray");
  machine.Edit([](MachineState& state) { state.xray.listens = true; });
  EXPECT_EQ(Ask(R"({"op":"connect"})"), kUp);
  EXPECT_TRUE(elsewhere->IsRunning());
  EXPECT_EQ(TraceLabels().at(1), "kill stale (clean)");
}

TEST_F(Orphans, AnyTun2socksBelowItsDirectoryIsKilled) {
  const std::wstring below = box.runtime() + L"\\tun2socks\\old";
  MakeDirectories(below);
  CopyProgram(L"standins\\tun2socks-windows-amd64.exe", below + L"\\TUN2SOCKS-v2.exe");
  WriteText(below + L"\\wintun.dll", "");
  const Straggler orphan(below + L"\\TUN2SOCKS-v2.exe",
                         L"--device other --proxy socks5://127.0.0.1:1", box.machine());
  WaitUntil("the adapter appears", [this] {
    const netmodel::Network network = machine.Network();
    return network.FindByAlias("other") != nullptr;
  });
  EXPECT_EQ(Ask(R"({"op":"connect"})"), kUp);
  EXPECT_TRUE(orphan.Ends());
  EXPECT_EQ(TraceLabels().at(1), "kill stale (hit)");
}

// The adapter is still there when the leftovers are cleaned, with the routes and the name server of
// the run that was killed.
TEST_F(Orphans, LeftoversOfTheTunnelAreCleanedBeforeTheNewChildrenStart) {
  machine.Edit([](MachineState& state) { state.tun2socks.adapterOutlives = true; });
  const auto tun2socks = StartTun2socks(box.runtime() + L"\\tun2socks");
  machine.Edit([](MachineState& state) {
    netmodel::Network& network = state.network;
    const std::uint64_t luid = network.FindByAlias("tavrin")->luid;
    network.CreateRoute({luid, 0x00000000, 1, 0xC0A87B01, 5});
    network.CreateRoute({luid, 0x80000000, 1, 0xC0A87B01, 5});
    network.SetDnsServers(network.FindByLuid(luid)->guid, "1.1.1.1");
    network.FindByAlias("以太网")->ipv6RouterDiscovery = false;
    network.ipv6Routes.clear();
    state.tun2socks.adapterOutlives = false;
  });
  machine.ForgetCalls();
  ASSERT_EQ(Ask(R"({"op":"connect"})"), kUp);
  ExpectRun(
      machine.CallsWithOnePoll(),
      {"netsh.exe [pid] in <box>\\runtime: netsh interface ipv6 set interface \"以太网\" "
       "routerdiscovery=enabled store=active",
       "GetAdaptersAddresses(family 0, flags 0, for the size) = 111",
       "GetAdaptersAddresses(family 0, flags 0, into a buffer) = 0", "InitializeIpForwardEntry()",
       "ConvertInterfaceAliasToLuid(tavrin) = 0", "ConvertInterfaceLuidToIndex(tavrin) = 0",
       "DeleteIpForwardEntry2(tavrin index 41, 0.0.0.0/1 via 192.168.123.1) = 0",
       "InitializeIpForwardEntry()", "ConvertInterfaceAliasToLuid(tavrin) = 0",
       "ConvertInterfaceLuidToIndex(tavrin) = 0",
       "DeleteIpForwardEntry2(tavrin index 41, 128.0.0.0/1 via 192.168.123.1) = 0",
       "ConvertInterfaceAliasToLuid(tavrin) = 0", "ConvertInterfaceLuidToGuid(tavrin) = 0",
       "SetInterfaceDnsSettings(tavrin, version 1, flags 2, name server \"\") = 0",
       "netsh.exe [pid] in <box>\\runtime: netsh interface ipv6 delete route ::/1 "
       "interface=\"tavrin\"",
       "netsh.exe [pid] in <box>\\runtime: netsh interface ipv6 delete route 8000::/1 "
       "interface=\"tavrin\"",
       "GetAdaptersAddresses(family 0, flags 0, for the size) = 111",
       "GetAdaptersAddresses(family 0, flags 0, into a buffer) = 0"});
  EXPECT_EQ(Ask(R"({"op":"disconnect"})"), kDown);
  ExpectSameNetwork(machine.Network(), netmodel::TypicalNetwork());
}

// Without a route to any physical interface the alias is unknown, and the clean-up goes on without.
TEST_F(Orphans, NoPhysicalRouteDuringTheCleanUpIsNoFailure) {
  const auto tun2socks = StartTun2socks(box.runtime() + L"\\tun2socks");
  machine.Edit([](MachineState& state) {
    state.faults = {{.call = "GetIpForwardTable2", .pass = 1, .times = 1, .code = 8}};
  });
  EXPECT_EQ(Ask(R"({"op":"connect"})"), kUp);
  EXPECT_EQ(machine.Starts("netsh.exe"), 5U) << "the IPv6 block alone";
  EXPECT_EQ(TraceLabels().at(1), "kill stale (hit)");
}

TEST_F(Orphans, KillingTheServiceTakesBothChildrenWithIt) {
  ASSERT_EQ(Ask(R"({"op":"connect"})"), kUp);
  const HANDLE xray = machine.OpenLast("xray.exe");
  const HANDLE tun2socks = machine.OpenLast(kTun2socks);
  ASSERT_NE(xray, nullptr);
  ASSERT_NE(tun2socks, nullptr);
  service().Kill();
  ExpectEnds(xray);
  ExpectEnds(tun2socks);
}

// The pin, and IPv6 as it was blocked, are what a killed run leaves; the next one puts them right.
TEST_F(Orphans, NextRunPutsRightWhatAKilledOneLeft) {
  ASSERT_EQ(Ask(R"({"op":"connect"})"), kUp);
  const HANDLE tun2socks = machine.OpenLast(kTun2socks);
  service().Kill();
  ExpectEnds(tun2socks);
  netmodel::Network left = netmodel::TypicalNetwork();
  left.FindByAlias("以太网")->ipv6RouterDiscovery = false;
  left.ipv6Routes.clear();
  left.CreateRoute({left.FindByAlias("以太网")->luid, 0xCB007109, 32, 0xC0A80101, 1});
  ExpectSameNetwork(machine.Network(), left);

  StartService();
  ASSERT_EQ(Ask(R"({"op":"connect"})"), kUp);
  EXPECT_EQ(TraceLabels().at(14), "kill stale (clean)");
  EXPECT_EQ(Ask(R"({"op":"disconnect"})"), kDown);
  ExpectSameNetwork(machine.Network(), netmodel::TypicalNetwork());
}

}  // namespace
}  // namespace e2e
