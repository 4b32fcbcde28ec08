// The IP Helper calls, the sockets and the resolver over the network model.
#include <string>
#include <vector>

#include "tests/sim/fixture.h"
#include "tests/sim/text.h"

#include <winsock2.h>
#include <ws2tcpip.h>
#include <iphlpapi.h>
#include <netioapi.h>

namespace sim {
namespace {

class NetworkCalls : public MachineTest {
 protected:
  std::uint64_t ethernet = machine.network.FindByAlias("以太网")->luid;
};

TEST_F(NetworkCalls, TheRoutingTableIsTheModelsAndHasToBeFreed) {
  MIB_IPFORWARD_TABLE2* table = nullptr;
  ASSERT_EQ(GetIpForwardTable2(AF_INET, &table), 0u);
  ASSERT_EQ(table->NumEntries, machine.network.routes.size());
  for (ULONG i = 0; i < table->NumEntries; ++i) {
    EXPECT_EQ(table->Table[i].InterfaceLuid.Value, machine.network.routes[i].luid);
    EXPECT_EQ(table->Table[i].Metric, machine.network.routes[i].metric);
    EXPECT_EQ(ntohl(table->Table[i].NextHop.Ipv4.sin_addr.s_addr),
              machine.network.routes[i].nextHop);
  }
  EXPECT_EQ(machine.OpenHandles(), std::vector<std::string>{"MIB table from GetIpForwardTable2"});
  FreeMibTable(table);
}

TEST_F(NetworkCalls, ARouteIsMadeOnceAndDeletedByItsKey) {
  MIB_IPFORWARD_ROW2 row = {};
  InitializeIpForwardEntry(&row);
  row.InterfaceLuid.Value = ethernet;
  row.DestinationPrefix.Prefix.si_family = AF_INET;
  ASSERT_EQ(InetPtonW(AF_INET, L"203.0.113.10", &row.DestinationPrefix.Prefix.Ipv4.sin_addr), 1);
  row.DestinationPrefix.PrefixLength = 32;
  row.NextHop.si_family = AF_INET;
  ASSERT_EQ(InetPtonW(AF_INET, L"192.168.1.1", &row.NextHop.Ipv4.sin_addr), 1);
  row.Metric = 1;
  EXPECT_EQ(CreateIpForwardEntry2(&row), 0u);
  EXPECT_EQ(CreateIpForwardEntry2(&row), 5010u);
  row.Metric = 0;
  EXPECT_EQ(DeleteIpForwardEntry2(&row), 0u);
  EXPECT_EQ(DeleteIpForwardEntry2(&row), 1168u);
  EXPECT_EQ(machine.calls.Sequence({"CreateIpForwardEntry2", "DeleteIpForwardEntry2"})[0],
            "CreateIpForwardEntry2 \"以太网\" 203.0.113.10/32 via 192.168.1.1 metric 1");
}

TEST_F(NetworkCalls, TheAdapterListIsOneBlockOfTheSizeThatWasAskedFor) {
  ULONG size = 0;
  EXPECT_EQ(GetAdaptersAddresses(AF_UNSPEC, 0, nullptr, nullptr, &size), 111u);
  std::vector<unsigned char> buffer(size);
  auto* const list = reinterpret_cast<IP_ADAPTER_ADDRESSES*>(buffer.data());
  ASSERT_EQ(GetAdaptersAddresses(AF_UNSPEC, 0, nullptr, list, &size), 0u);
  std::vector<std::string> names;
  for (const IP_ADAPTER_ADDRESSES* row = list; row != nullptr; row = row->Next) {
    names.push_back(Narrow(row->FriendlyName));
  }
  std::vector<std::string> expected;
  for (const netmodel::Adapter& adapter : machine.network.adapters) {
    expected.push_back(adapter.friendlyName);
  }
  EXPECT_EQ(names, expected);
  size -= 1;
  EXPECT_EQ(GetAdaptersAddresses(AF_UNSPEC, 0, nullptr, list, &size), 111u);
}

TEST_F(NetworkCalls, AddressesAndServersStandInTheAdapterList) {
  machine.network.FindByLuid(ethernet)->dnsServers = {"1.1.1.1", "2001:db8::1", "8.8.8.8"};
  std::vector<unsigned char> buffer(65536);
  ULONG size = static_cast<ULONG>(buffer.size());
  auto* row = reinterpret_cast<IP_ADAPTER_ADDRESSES*>(buffer.data());
  ASSERT_EQ(GetAdaptersAddresses(AF_INET, 0, nullptr, row, &size), 0u);
  while (row->Luid.Value != ethernet) {
    row = row->Next;
  }
  ASSERT_NE(row->FirstUnicastAddress, nullptr);
  EXPECT_EQ(row->FirstUnicastAddress->OnLinkPrefixLength, 24);
  std::vector<int> families;
  for (const auto* server = row->FirstDnsServerAddress; server != nullptr; server = server->Next) {
    families.push_back(server->Address.lpSockaddr->sa_family);
  }
  EXPECT_EQ(families, (std::vector<int>{AF_INET, AF_INET6, AF_INET}));
}

TEST_F(NetworkCalls, AnAddressMayTakeItsTimeToShow) {
  machine.ipHelper.addressDelay = 500;
  MIB_UNICASTIPADDRESS_ROW row = {};
  InitializeUnicastIpAddressEntry(&row);
  row.InterfaceLuid.Value = ethernet;
  row.Address.si_family = AF_INET;
  ASSERT_EQ(InetPtonW(AF_INET, L"10.9.8.7", &row.Address.Ipv4.sin_addr), 1);
  row.OnLinkPrefixLength = 24;
  const size_t before = machine.network.FindByLuid(ethernet)->addresses.size();
  EXPECT_EQ(CreateUnicastIpAddressEntry(&row), 0u);
  EXPECT_EQ(machine.network.FindByLuid(ethernet)->addresses.size(), before);
  Sleep(500);
  EXPECT_EQ(machine.network.FindByLuid(ethernet)->addresses.size(), before + 1);
}

class SocketCalls : public MachineTest {
 protected:
  void SetUp() override {
    WSADATA data = {};
    ASSERT_EQ(WSAStartup(MAKEWORD(2, 2), &data), 0);
  }
  void TearDown() override {
    WSACleanup();
    MachineTest::TearDown();
  }

  // One attempt as a port probe makes it: whether it connected.
  bool Attempt(USHORT port) {
    const SOCKET socket = ::socket(AF_INET, SOCK_STREAM, IPPROTO_TCP);
    u_long on = 1;
    ioctlsocket(socket, FIONBIO, &on);
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    bool connected = connect(socket, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0;
    if (!connected && WSAGetLastError() == WSAEWOULDBLOCK) {
      fd_set writable;
      FD_ZERO(&writable);
      FD_SET(socket, &writable);
      const timeval limit = {0, 5000};
      int error = 0;
      int length = sizeof error;
      connected =
          select(0, nullptr, &writable, nullptr, &limit) > 0 &&
          getsockopt(socket, SOL_SOCKET, SO_ERROR, reinterpret_cast<char*>(&error), &length) == 0 &&
          error == 0;
    }
    closesocket(socket);
    return connected;
  }
};

TEST_F(SocketCalls, AnAttemptFindsAListenerOrCostsFiveMilliseconds) {
  const ULONGLONG before = GetTickCount64();
  EXPECT_FALSE(Attempt(17593));
  EXPECT_EQ(GetTickCount64() - before, 5u);
  machine.listeners.Listen(17593);
  EXPECT_TRUE(Attempt(17593));
  EXPECT_EQ(GetTickCount64() - before, 5u);
}

TEST_F(SocketCalls, AttemptsFollowTheirPlans) {
  machine.listeners.Listen(17593);
  machine.connects.Next({ConnectPlan::Kind::kRefusedAtOnce, WSAECONNREFUSED});
  machine.connects.Next({ConnectPlan::Kind::kSocketError, WSAECONNREFUSED});
  machine.connects.Next({ConnectPlan::Kind::kNeverWritable});
  machine.connects.Next({ConnectPlan::Kind::kConnectsAtOnce});
  EXPECT_FALSE(Attempt(17593));
  EXPECT_FALSE(Attempt(17593));
  EXPECT_FALSE(Attempt(17593));
  EXPECT_TRUE(Attempt(17593));
  EXPECT_TRUE(Attempt(17593));
}

TEST_F(SocketCalls, NamesResolveInOrderAndTheListHasToBeFreed) {
  machine.names.Set("panel.example", {"203.0.113.2", "203.0.113.1"});
  ADDRINFOW hints = {};
  hints.ai_family = AF_INET;
  ADDRINFOW* list = nullptr;
  ASSERT_EQ(GetAddrInfoW(L"panel.example", nullptr, &hints, &list), 0);
  wchar_t text[22] = {};
  std::vector<std::string> addresses;
  for (const ADDRINFOW* entry = list; entry != nullptr; entry = entry->ai_next) {
    const auto* const address = reinterpret_cast<const sockaddr_in*>(entry->ai_addr);
    addresses.push_back(Narrow(InetNtopW(AF_INET, &address->sin_addr, text, 22)));
  }
  EXPECT_EQ(addresses, (std::vector<std::string>{"203.0.113.2", "203.0.113.1"}));
  FreeAddrInfoW(list);
  EXPECT_EQ(GetAddrInfoW(L"unknown.example", nullptr, &hints, &list), 11001);
  machine.names.Set("six.example", HostEntry{.ipv4 = {}, .hasIpv6 = true});
  EXPECT_EQ(GetAddrInfoW(L"six.example", nullptr, &hints, &list), 11004);
}

TEST_F(MachineTest, SocketsNeedWinsock) {
  EXPECT_EQ(socket(AF_INET, SOCK_STREAM, IPPROTO_TCP), INVALID_SOCKET);
  EXPECT_EQ(WSAGetLastError(), 10093);
  WSADATA data = {};
  WSAStartup(MAKEWORD(2, 2), &data);
  EXPECT_EQ(machine.OpenHandles(), std::vector<std::string>{"Winsock from WSAStartup"});
  WSACleanup();
}

}  // namespace
}  // namespace sim
