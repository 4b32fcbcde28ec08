// What can go wrong once children are started: the text, the children's end, the pins' removal, and
// what remains of the tunnel's side.
#include "tests/e2e/harness/expect.h"
#include "tests/e2e/harness/service_test.h"

namespace e2e {
namespace {

using standins::kNever;
using standins::MachineState;

constexpr char kXrayText[] = "连接核心无法启动，请换一条线路或重新登录后再试。";

class Failures : public ServiceTest {
 protected:
  // Fails a connect, with a panel host pinned so that there is more than one pin to remove.
  void ExpectFailed(const std::string& text, const std::string& lastLabel) {
    WriteText(box.runtime() + L"\\panel.json", R"({"updateUrl":"https://198.51.100.7/"})");
    StartService();
    EXPECT_EQ(Ask(R"({"op":"connect"})"), Refusal(text));
    EXPECT_EQ(TraceLabels().back(), lastLabel);
    EXPECT_EQ(machine.Starts("netsh.exe"), 0U);
    ExpectRun(machine.Calls(),
              {"InitializeIpForwardEntry()", "ConvertInterfaceAliasToLuid(以太网) = 0",
               "ConvertInterfaceLuidToIndex(以太网) = 0",
               "DeleteIpForwardEntry2(以太网 index 12, 198.51.100.7/32 via 192.168.1.1) = 0"});
    ExpectEnds(machine.OpenLast("xray.exe"));
    ExpectEnds(machine.OpenLast("tun2socks-windows-amd64.exe"));
    EXPECT_EQ(Ask(R"({"op":"status"})"), kDown);
  }
  void ExpectNothingRemains() { ExpectSameNetwork(machine.Network(), netmodel::TypicalNetwork()); }
  // The failure was the machine's mood, and no trace of it hinders the next connect.
  void ExpectNextConnectWorks() {
    machine.Edit([](MachineState& state) {
      state.xray = {};
      state.tun2socks = {};
      state.faults = {};
    });
    EXPECT_EQ(Ask(R"({"op":"connect"})"), kUp);
    EXPECT_EQ(Ask(R"({"op":"disconnect"})"), kDown);
    ExpectNothingRemains();
  }
};

TEST_F(Failures, XrayThatRefusesItsConfiguration) {
  Account account;
  account.publicKey = "too short";
  WriteAccount(account);
  ExpectFailed(kXrayText, "spawn xray");
  ExpectNothingRemains();
  EXPECT_EQ(ReadText(box.runtime() + L"\\xray-error.log"), "");
}

// Raw control characters pass into the file, and JSON does not allow them.
TEST_F(Failures, XrayThatCannotParseItsConfiguration) {
  Account account;
  account.sni = "www.tokyo\t.example";
  WriteAccount(account);
  ExpectFailed(kXrayText, "spawn xray");
  ExpectNothingRemains();
}

TEST_F(Failures, XrayThatEndsBeforeItListens) {
  machine.Edit([](MachineState& state) {
    state.xray.delayMs = 100;
    state.xray.exitCode = 23;
  });
  ExpectFailed(kXrayText, "spawn xray");
  ExpectNothingRemains();
  ExpectNextConnectWorks();
}

TEST_F(Failures, XrayThatNeverListens) {
  machine.Edit([](MachineState& state) { state.xray.listens = false; });
  ExpectFailed(kXrayText, "spawn xray");
  ExpectNothingRemains();
  ExpectNextConnectWorks();
}

TEST_F(Failures, XrayThatIsNoProgram) {
  WriteText(box.runtime() + L"\\xray\\xray.exe", "not a program");
  ExpectFailed("CreateProcess failed err=193", "pin panel hosts");
  ExpectNothingRemains();
}

TEST_F(Failures, Tun2socksThatIsNoProgram) {
  WriteText(box.runtime() + L"\\tun2socks\\tun2socks-windows-amd64.exe", "not a program");
  ExpectFailed("CreateProcess failed err=193", "xray socks listening");
  ExpectNothingRemains();
}

// Its early end is noticed only when the wait for the adapter is over.
TEST_F(Failures, Tun2socksThatEndsAtOnce) {
  machine.Edit([](MachineState& state) { state.tun2socks.exitCode = 1; });
  ExpectFailed("wintun adapter not created", "spawn tun2socks");
  ExpectNothingRemains();
}

TEST_F(Failures, AdapterThatNeverComesUp) {
  machine.Edit([](MachineState& state) { state.tun2socks.comesUp = false; });
  ExpectFailed("wintun adapter not created", "spawn tun2socks");
  ExpectNothingRemains();
  ExpectNextConnectWorks();
}

// The adapter of an old tun2socks bears another description, and is not taken for the tunnel's.
TEST_F(Failures, AdapterOfAnOldTun2socks) {
  machine.Edit([](MachineState& state) { state.tun2socks.description = "WireGuard Tunnel"; });
  ExpectFailed("wintun adapter not created", "spawn tun2socks");
  ExpectNothingRemains();
}

TEST_F(Failures, Tun2socksThatDiesWhenTheAdapterIsUp) {
  machine.Edit([](MachineState& state) {
    state.tun2socks.adapterOutlives = true;
    state.tun2socks.diesAfterMs = 0;
  });
  ExpectFailed("tun2socks exited early", "wintun adapter up");
  ExpectNextConnectWorks();
}

TEST_F(Failures, AdapterThatHasNoGuid) {
  machine.Edit([](MachineState& state) {
    state.faults = {{.call = "ConvertInterfaceLuidToGuid", .times = 1, .code = 87}};
  });
  ExpectFailed("failed to assign TUN address: guid lookup failed for tavrin", "wintun adapter up");
  ExpectNothingRemains();
}

TEST_F(Failures, AddressThatIsRefused) {
  machine.Edit([](MachineState& state) {
    state.faults = {{.call = "CreateUnicastIpAddressEntry", .times = 1, .code = 5}};
  });
  ExpectFailed("failed to assign TUN address: CreateUnicastIpAddressEntry failed 5",
               "wintun adapter up");
  ExpectNothingRemains();
  ExpectNextConnectWorks();
}

// "Exists already" counts as success, so that only the wait for the address notices the lie.
TEST_F(Failures, AddressThatNeverShows) {
  machine.Edit([](MachineState& state) {
    state.faults = {{.call = "CreateUnicastIpAddressEntry", .times = 1, .code = 5010}};
  });
  ExpectFailed("TUN adapter has no IPv4 address", "set tun dns (api)");
  ExpectNothingRemains();
}

// The first creation is the panel host's, which may fail in silence; the node's may not.
TEST_F(Failures, NodeRouteThatIsRefused) {
  machine.Edit([](MachineState& state) {
    state.faults = {{.call = "CreateIpForwardEntry2", .pass = 1, .times = 1, .code = 5}};
  });
  ExpectFailed("CreateIpForwardEntry2 failed 5 for 203.0.113.9", "tun ipv4 ready");
  ExpectNothingRemains();
  ExpectNextConnectWorks();
}

TEST_F(Failures, FirstHalfOfTheDefaultRouteThatIsRefused) {
  machine.Edit([](MachineState& state) {
    state.faults = {{.call = "CreateIpForwardEntry2", .pass = 2, .times = 1, .code = 1450}};
  });
  ExpectFailed("CreateIpForwardEntry2 failed 1450 for 0.0.0.0", "tun ipv4 ready");
  ExpectNothingRemains();
}

// Nothing takes the first half away but the end of the adapter, which here is late.
TEST_F(Failures, SecondHalfOfTheDefaultRouteThatIsRefusedLeavesTheFirstToTheAdapter) {
  machine.Edit([](MachineState& state) {
    state.tun2socks.adapterOutlives = true;
    state.faults = {{.call = "CreateIpForwardEntry2", .pass = 3, .times = 1, .code = 5}};
  });
  ExpectFailed("CreateIpForwardEntry2 failed 5 for 128.0.0.0", "tun ipv4 ready");
  netmodel::Network expected = netmodel::TypicalNetwork();
  netmodel::Adapter tunnel;
  tunnel.friendlyName = "tavrin";
  tunnel.description = "tun2socks Tunnel";
  tunnel.ifType = 53;
  tunnel.mtu = 65535;
  tunnel.addresses = {{0xC0A87B01, 24}};
  tunnel.dnsServers = {"1.1.1.1"};
  tunnel.dnsFromDhcp = false;
  tunnel.dadTransmits = 0;
  const std::uint64_t luid = expected.AddAdapter(tunnel).luid;
  expected.CreateRoute({luid, 0, 1, 0xC0A87B01, 5});
  ExpectSameNetwork(machine.Network(), expected);
  ExpectNextConnectWorks();
}

// "Exists already" again: only reading the table back shows that the route is not there.
TEST_F(Failures, FirstHalfOfTheDefaultRouteThatIsNotInTheTable) {
  machine.Edit([](MachineState& state) {
    state.faults = {{.call = "CreateIpForwardEntry2", .pass = 2, .times = 1, .code = 5010}};
  });
  ExpectFailed("split default routes were not installed on TUN", "tun ipv4 ready");
  ExpectNothingRemains();
  ExpectNextConnectWorks();
}

TEST_F(Failures, SecondHalfOfTheDefaultRouteThatIsNotInTheTable) {
  machine.Edit([](MachineState& state) {
    state.faults = {{.call = "CreateIpForwardEntry2", .pass = 3, .times = 1, .code = 5010}};
  });
  ExpectFailed("split default routes were not installed on TUN", "tun ipv4 ready");
  ExpectNothingRemains();
}

// A failure makes the next connect ask for the account anew.
TEST_F(Failures, AccountIsFetchedAgainAfterAFailedStart) {
  machine.Edit([](MachineState& state) { state.xray.exitCode = 23; });
  StartService();
  ASSERT_EQ(Ask(R"({"op":"connect"})"), Refusal(kXrayText));
  machine.Edit([](MachineState& state) { state.xray.exitCode = kNever; });
  Account moved;
  moved.address = "198.51.100.77";
  WriteAccount(moved);
  ASSERT_EQ(Ask(R"({"op":"connect"})"), kUp);
  EXPECT_EQ(RouteTexts(machine.Network()).at(4),
            "198.51.100.77/32 via 192.168.1.1 metric 1 on 以太网");
}

}  // namespace
}  // namespace e2e
