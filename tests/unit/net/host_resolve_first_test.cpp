// The look-up of the node's address.
#include "src/net/host_resolve.h"

#include <cstdint>
#include <string>
#include <vector>

#include "tests/sim/fixture.h"

namespace vpn {
namespace {

using Texts = std::vector<std::string>;

class NodeAddress : public sim::MachineTest {};

TEST_F(NodeAddress, TheFirstResultOfTheLookUpIsTaken) {
  machine.names.Set("node.example", {"203.0.113.9", "203.0.113.8"});
  EXPECT_EQ(ResolveFirstIpv4("node.example"), "203.0.113.9");
}

TEST_F(NodeAddress, TheLookUpHasNoServiceAndItsListIsFreed) {
  machine.names.Set("node.example", {"255.255.255.255"});
  EXPECT_EQ(ResolveFirstIpv4("node.example"), "255.255.255.255");
  EXPECT_EQ(machine.calls.Names(),
            (Texts{"WSAStartup", "getaddrinfo", "inet_ntop", "freeaddrinfo", "WSACleanup"}));
  EXPECT_EQ(machine.calls.TextsOf("getaddrinfo"),
            Texts{R"("node.example", null, family 2, type 1)"});
  EXPECT_EQ(machine.calls.TextsOf("inet_ntop"), Texts{"2, 22"});
}

TEST_F(NodeAddress, AHostWithoutAnIpv4AddressGivesNothing) {
  sim::HostEntry entry;
  entry.hasIpv6 = true;
  machine.names.Set("six.example", entry);
  EXPECT_EQ(ResolveFirstIpv4("six.example"), "");
}

TEST_F(NodeAddress, ALookUpThatSucceedsWithNoResultGivesNothing) {
  sim::HostEntry entry;
  entry.ipv4 = {"203.0.113.9"};
  entry.noList = true;
  machine.names.Set("odd.example", entry);
  EXPECT_EQ(ResolveFirstIpv4("odd.example"), "");
  EXPECT_EQ(machine.calls.Names(), (Texts{"WSAStartup", "getaddrinfo", "WSACleanup"}));
}

TEST_F(NodeAddress, AnyFailureOfTheLookUpGivesNothing) {
  EXPECT_EQ(ResolveFirstIpv4("nowhere.example"), "");
  machine.names.Set("node.example", {"203.0.113.9"});
  for (const char* call : {"WSAStartup", "getaddrinfo", "inet_ntop"}) {
    SCOPED_TRACE(call);
    machine.faults.Fail(call);
    EXPECT_EQ(ResolveFirstIpv4("node.example"), "");
    EXPECT_EQ(ResolveFirstIpv4("node.example"), "203.0.113.9") << "and works again afterwards";
  }
}

TEST_F(NodeAddress, TheLookUpTakesAsLongAsTheSystemTakes) {
  sim::HostEntry entry;
  entry.ipv4 = {"203.0.113.9"};
  entry.takes = 30'000;
  machine.names.Set("slow.example", entry);
  const std::uint64_t before = machine.clock.Now();
  EXPECT_EQ(ResolveFirstIpv4("slow.example"), "203.0.113.9");
  EXPECT_EQ(machine.clock.Now() - before, 30'000u);
}

}  // namespace
}  // namespace vpn
