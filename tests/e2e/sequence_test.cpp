// Every platform call and every child's command line of a connect and a disconnect, in order.
#include "tests/e2e/harness/expect.h"
#include "tests/e2e/harness/service_test.h"

namespace e2e {
namespace {

class Sequence : public ServiceTest {};

const Lines kPhysicalRoute = {
    "GetIpForwardTable2(family 2) = 0",
    "ConvertInterfaceLuidToAlias(以太网, room for 257) = 0",
    "ConvertInterfaceLuidToIndex(以太网) = 0",
    "FreeMibTable()",
};

const Lines kAdapterListing = {
    "GetAdaptersAddresses(family 0, flags 0, for the size) = 111",
    "GetAdaptersAddresses(family 0, flags 0, into a buffer) = 0",
};

const Lines kIpv4Listing = {
    "GetAdaptersAddresses(family 2, flags 16, for the size) = 111",
    "GetAdaptersAddresses(family 2, flags 16, into a buffer) = 0",
};

const Lines kChildren = {
    "xray.exe [pid] in <box>\\runtime\\xray: \"<box>\\runtime\\xray\\xray.exe\" run -c "
    "\"<box>\\runtime\\session.json.xray.json\"",
    "tun2socks-windows-amd64.exe [pid] in <box>\\runtime\\tun2socks: "
    "\"<box>\\runtime\\tun2socks\\tun2socks-windows-amd64.exe\" --loglevel warn --device tavrin "
    "--mtu 1400 --tcp-auto-tuning --tcp-sndbuf 4m --tcp-rcvbuf 4m "
    "--proxy socks5://127.0.0.1:17593",
};

const Lines kAddressAndNameServer = {
    "ConvertInterfaceAliasToLuid(tavrin) = 0",
    "ConvertInterfaceLuidToGuid(tavrin) = 0",
    "GetUnicastIpAddressTable(family 2) = 0",
    "FreeMibTable()",
    "InitializeIpInterfaceEntry()",
    "GetIpInterfaceEntry(tavrin, family 2) = 0",
    "SetIpInterfaceEntry(tavrin, family 2, dad transmits 0) = 0",
    "InitializeUnicastIpAddressEntry()",
    "ConvertInterfaceLuidToIndex(tavrin) = 0",
    "CreateUnicastIpAddressEntry(tavrin, 192.168.123.1/24, index 40, valid 4294967295, "
    "preferred 4294967295) = 0",
    "ConvertInterfaceAliasToLuid(tavrin) = 0",
    "ConvertInterfaceLuidToGuid(tavrin) = 0",
    "SetInterfaceDnsSettings(tavrin, version 1, flags 2, name server \"1.1.1.1\") = 0",
};

const Lines kNodePin = {
    "InitializeIpForwardEntry()",
    "ConvertInterfaceAliasToLuid(以太网) = 0",
    "ConvertInterfaceLuidToIndex(以太网) = 0",
    "DeleteIpForwardEntry2(以太网 index 12, 203.0.113.9/32 via 192.168.1.1) = 1168",
    "InitializeIpForwardEntry()",
    "ConvertInterfaceAliasToLuid(以太网) = 0",
    "ConvertInterfaceLuidToIndex(以太网) = 0",
    "CreateIpForwardEntry2(以太网 index 12, 203.0.113.9/32 via 192.168.1.1, metric 1, protocol 3, "
    "valid 4294967295, preferred 4294967295) = 0",
};

const Lines kSplitRoutes = {
    "InitializeIpForwardEntry()",
    "ConvertInterfaceAliasToLuid(tavrin) = 0",
    "ConvertInterfaceLuidToIndex(tavrin) = 0",
    "CreateIpForwardEntry2(tavrin index 40, 0.0.0.0/1 via 192.168.123.1, metric 5, protocol 3, "
    "valid 4294967295, preferred 4294967295) = 0",
    "InitializeIpForwardEntry()",
    "ConvertInterfaceAliasToLuid(tavrin) = 0",
    "ConvertInterfaceLuidToIndex(tavrin) = 0",
    "CreateIpForwardEntry2(tavrin index 40, 128.0.0.0/1 via 192.168.123.1, metric 5, protocol 3, "
    "valid 4294967295, preferred 4294967295) = 0",
};

const Lines kReadBack = {
    "ConvertInterfaceAliasToLuid(tavrin) = 0", "GetIpForwardTable2(family 2) = 0", "FreeMibTable()",
    "ConvertInterfaceAliasToLuid(tavrin) = 0", "GetIpForwardTable2(family 2) = 0", "FreeMibTable()",
};

const Lines kIpv6Block = {
    "netsh.exe [pid] in <box>\\runtime: netsh interface ipv6 set interface \"以太网\" "
    "routerdiscovery=disabled store=active",
    "netsh.exe [pid] in <box>\\runtime: netsh interface ipv6 delete route ::/0 "
    "interface=\"以太网\"",
    "netsh.exe [pid] in <box>\\runtime: netsh interface ipv6 set interface \"tavrin\" "
    "admin=disabled store=active",
    "netsh.exe [pid] in <box>\\runtime: netsh interface ipv6 delete route ::/1 "
    "interface=\"tavrin\"",
    "netsh.exe [pid] in <box>\\runtime: netsh interface ipv6 delete route 8000::/1 "
    "interface=\"tavrin\"",
};

const Lines kIpv6Release = {
    "netsh.exe [pid] in <box>\\runtime: netsh interface ipv6 set interface \"以太网\" "
    "routerdiscovery=enabled store=active",
    "netsh.exe [pid] in <box>\\runtime: netsh interface ipv6 delete route ::/1 "
    "interface=\"tavrin\"",
    "netsh.exe [pid] in <box>\\runtime: netsh interface ipv6 delete route 8000::/1 "
    "interface=\"tavrin\"",
};

Lines Together(std::initializer_list<Lines> parts) {
  Lines all;
  for (const Lines& part : parts) all.insert(all.end(), part.begin(), part.end());
  return all;
}

TEST_F(Sequence, FirstConnectTouchesTheMachineStepByStep) {
  StartService();
  ASSERT_EQ(Ask(R"({"op":"connect"})"), kUp);
  ExpectLines(machine.CallsWithOnePoll(),
              Together({kPhysicalRoute, kAdapterListing, kPhysicalRoute, kIpv4Listing, kChildren,
                        kAdapterListing, kAddressAndNameServer, kIpv4Listing, kNodePin,
                        kSplitRoutes, kReadBack, kIpv6Block}));
}

// The adapter goes with its process, so the calls on it find nothing any more.
TEST_F(Sequence, DisconnectRemovesThePinsAndReleasesIpv6) {
  StartService();
  ASSERT_EQ(Ask(R"({"op":"connect"})"), kUp);
  machine.ForgetCalls();
  ASSERT_EQ(Ask(R"({"op":"disconnect"})"), kDown);
  const Lines pins = {
      "InitializeIpForwardEntry()",
      "ConvertInterfaceAliasToLuid(以太网) = 0",
      "ConvertInterfaceLuidToIndex(以太网) = 0",
      "DeleteIpForwardEntry2(以太网 index 12, 203.0.113.9/32 via 192.168.1.1) = 0",
      "InitializeIpForwardEntry()",
      "ConvertInterfaceAliasToLuid(以太网) = 0",
      "ConvertInterfaceLuidToIndex(以太网) = 0",
      "DeleteIpForwardEntry2(以太网 index 12, 203.0.113.9/32 via 192.168.1.1) = 1168",
  };
  const Lines vanished = {
      "InitializeIpForwardEntry()",
      "ConvertInterfaceAliasToLuid(tavrin) = 87",
      "InitializeIpForwardEntry()",
      "ConvertInterfaceAliasToLuid(tavrin) = 87",
      "ConvertInterfaceAliasToLuid(tavrin) = 87",
  };
  ExpectLines(machine.Calls(), Together({pins, vanished, kIpv6Release}));
}

TEST_F(Sequence, DisconnectClearsAnAdapterThatIsStillThere) {
  machine.Edit([](standins::MachineState& state) { state.tun2socks.adapterOutlives = true; });
  StartService();
  ASSERT_EQ(Ask(R"({"op":"connect"})"), kUp);
  machine.ForgetCalls();
  ASSERT_EQ(Ask(R"({"op":"disconnect"})"), kDown);
  const Lines clearing = {
      "InitializeIpForwardEntry()",
      "ConvertInterfaceAliasToLuid(tavrin) = 0",
      "ConvertInterfaceLuidToIndex(tavrin) = 0",
      "DeleteIpForwardEntry2(tavrin index 40, 0.0.0.0/1 via 192.168.123.1) = 0",
      "InitializeIpForwardEntry()",
      "ConvertInterfaceAliasToLuid(tavrin) = 0",
      "ConvertInterfaceLuidToIndex(tavrin) = 0",
      "DeleteIpForwardEntry2(tavrin index 40, 128.0.0.0/1 via 192.168.123.1) = 0",
      "ConvertInterfaceAliasToLuid(tavrin) = 0",
      "ConvertInterfaceLuidToGuid(tavrin) = 0",
      "SetInterfaceDnsSettings(tavrin, version 1, flags 2, name server \"\") = 0",
  };
  ExpectRun(machine.Calls(), Together({clearing, kIpv6Release}));
}

TEST_F(Sequence, PanelHostsArePinnedBeforeTheChildrenStart) {
  WriteText(box.runtime() + L"\\panel.json",
            R"({"deviceApi":"http://198.51.100.7:8080/api","updateUrl":"https://localhost/u",)"
            R"("downloadHost":"198.51.100.7"})");
  StartService();
  ASSERT_EQ(Ask(R"({"op":"connect"})"), kUp);
  const Lines pins = {
      "InitializeIpForwardEntry()",
      "ConvertInterfaceAliasToLuid(以太网) = 0",
      "ConvertInterfaceLuidToIndex(以太网) = 0",
      "DeleteIpForwardEntry2(以太网 index 12, 198.51.100.7/32 via 192.168.1.1) = 1168",
      "InitializeIpForwardEntry()",
      "ConvertInterfaceAliasToLuid(以太网) = 0",
      "ConvertInterfaceLuidToIndex(以太网) = 0",
      "CreateIpForwardEntry2(以太网 index 12, 198.51.100.7/32 via 192.168.1.1, metric 1, "
      "protocol 3, valid 4294967295, preferred 4294967295) = 0",
      "InitializeIpForwardEntry()",
      "ConvertInterfaceAliasToLuid(以太网) = 0",
      "ConvertInterfaceLuidToIndex(以太网) = 0",
      "DeleteIpForwardEntry2(以太网 index 12, 127.0.0.1/32 via 192.168.1.1) = 1168",
      "InitializeIpForwardEntry()",
      "ConvertInterfaceAliasToLuid(以太网) = 0",
      "ConvertInterfaceLuidToIndex(以太网) = 0",
      "CreateIpForwardEntry2(以太网 index 12, 127.0.0.1/32 via 192.168.1.1, metric 1, protocol 3, "
      "valid 4294967295, preferred 4294967295) = 0",
  };
  ExpectRun(machine.CallsWithOnePoll(), Together({kIpv4Listing, pins, kChildren}));
}

// A crashed run of an earlier kind left the tunnel's name server on the physical interface.
TEST_F(Sequence, LeftOverNameServerIsGivenBackToDhcpBeforeTheChildrenStart) {
  machine.Edit([](standins::MachineState& state) {
    netmodel::Adapter* ethernet = state.network.FindByAlias("以太网");
    state.network.SetDnsServers(ethernet->guid, "1.1.1.1");
  });
  StartService();
  ASSERT_EQ(Ask(R"({"op":"connect"})"), kUp);
  const Lines reset = {
      "netsh.exe [pid] in <box>\\runtime: netsh interface ipv4 set dnsservers name=\"以太网\" "
      "source=dhcp"};
  ExpectRun(machine.CallsWithOnePoll(), Together({kIpv4Listing, reset, kChildren}));
  EXPECT_EQ(TraceLabels().at(3), "reset physical dns (netsh)");
  ASSERT_EQ(Ask(R"({"op":"disconnect"})"), kDown);
  ExpectSameNetwork(machine.Network(), netmodel::TypicalNetwork());
}

}  // namespace
}  // namespace e2e
