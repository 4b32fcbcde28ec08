// Sockets, names, addresses as text, the registry, the adapter list.
#include "tests/contract/world.h"

#include <iphlpapi.h>
#include <netioapi.h>

#include <string>
#include <utility>
#include <vector>

namespace contract {
namespace {

class Socket : public ContractTest {
 protected:
  void SetUp() override {
    WSADATA data = {};
    ASSERT_EQ(WSAStartup(MAKEWORD(2, 2), &data), 0);
  }
  void TearDown() override { EXPECT_EQ(WSACleanup(), 0); }

  static int Connect(SOCKET socket, USHORT port) {
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    EXPECT_EQ(InetPtonW(AF_INET, L"127.0.0.1", &address.sin_addr), 1);
    return connect(socket, reinterpret_cast<sockaddr*>(&address), sizeof address);
  }
  static SOCKET NonBlocking() {
    const SOCKET socket = ::socket(AF_INET, SOCK_STREAM, IPPROTO_TCP);
    EXPECT_NE(socket, INVALID_SOCKET);
    u_long on = 1;
    EXPECT_EQ(ioctlsocket(socket, FIONBIO, &on), 0);
    return socket;
  }
  static int SelectForWriting(SOCKET socket, int microseconds) {
    fd_set writable;
    FD_ZERO(&writable);
    FD_SET(socket, &writable);
    timeval limit = {0, microseconds};
    return select(0, nullptr, &writable, nullptr, &limit);
  }
  static int SocketError(SOCKET socket) {
    int error = -1;
    int length = sizeof error;
    EXPECT_EQ(getsockopt(socket, SOL_SOCKET, SO_ERROR, reinterpret_cast<char*>(&error), &length),
              0);
    return error;
  }
};

TEST_F(Socket, ANonBlockingAttemptIsUnderWayAndThenWritable) {
  const Listener listener;
  const SOCKET socket = NonBlocking();
  EXPECT_EQ(Connect(socket, listener.port()), SOCKET_ERROR);
  EXPECT_EQ(WSAGetLastError(), 10035);
  EXPECT_EQ(SelectForWriting(socket, 900000), 1);
  EXPECT_EQ(SocketError(socket), 0);
  closesocket(socket);
}

TEST_F(Socket, WithoutAListenerItIsNotWritableWithin5Milliseconds) {
  const SOCKET socket = NonBlocking();
  EXPECT_EQ(Connect(socket, FreePort()), SOCKET_ERROR);
  // Windows repeats the refused attempt for about two seconds; Wine's refusal is there at once,
  // and makes the socket writable with an error.
  EXPECT_EQ(WSAGetLastError(), 10035);
  const int ready = SelectForWriting(socket, 5000);
  if (IsWine()) {
    EXPECT_TRUE(ready == 0 || SocketError(socket) == 10061);
  } else {
    EXPECT_EQ(ready, 0);
  }
  closesocket(socket);
}

TEST_F(Socket, ABlockingAttemptIsAcceptedOrRefused) {
  const Listener listener;
  const SOCKET good = ::socket(AF_INET, SOCK_STREAM, IPPROTO_TCP);
  EXPECT_EQ(Connect(good, listener.port()), 0);
  closesocket(good);
  const SOCKET bad = ::socket(AF_INET, SOCK_STREAM, IPPROTO_TCP);
  EXPECT_EQ(Connect(bad, FreePort()), SOCKET_ERROR);
  EXPECT_EQ(WSAGetLastError(), 10061);
  closesocket(bad);
}

TEST_F(Socket, ALiteralResolvesToItself) {
  ADDRINFOW hints = {};
  hints.ai_family = AF_INET;
  hints.ai_socktype = SOCK_STREAM;
  ADDRINFOW* list = nullptr;
  ASSERT_EQ(GetAddrInfoW(L"203.0.113.9", nullptr, &hints, &list), 0);
  ASSERT_NE(list, nullptr);
  EXPECT_EQ(list->ai_family, AF_INET);
  wchar_t text[22] = {};
  const auto* const address = reinterpret_cast<const sockaddr_in*>(list->ai_addr);
  EXPECT_EQ(std::wstring(InetNtopW(AF_INET, &address->sin_addr, text, 22)), L"203.0.113.9");
  EXPECT_EQ(list->ai_next, nullptr);
  FreeAddrInfoW(list);
}

TEST_F(Socket, AddressTextIsReadStrictly) {
  const std::pair<const wchar_t*, int> cases[] = {
      {L"1.2.3.4", 1},   {L"255.255.255.255", 1}, {L"0.0.0.0", 1},  {L"1.2.3", 0},
      {L"1.2.3.4.5", 0}, {L"1.2.3.256", 0},       {L"...", 0},      {L"", 0},
      {L"1..2.3", 0},    {L" 1.2.3.4", 0},        {L"1.2.3.4 ", 0}, {L"1.2.3.x", 0},
      {L"host.name", 0}, {L"1.2.3.4/32", 0},      {L"::1", 0}};
  for (const auto& [text, result] : cases) {
    in_addr address = {};
    EXPECT_EQ(InetPtonW(AF_INET, text, &address), result) << std::string(text, text + wcslen(text));
  }
}

TEST_F(Socket, AddressTextIsWrittenWhereItFits) {
  in_addr address = {};
  ASSERT_EQ(InetPtonW(AF_INET, L"192.168.123.1", &address), 1);
  wchar_t wide[16] = {};
  EXPECT_EQ(InetNtopW(AF_INET, &address, wide, 16), wide);
  EXPECT_EQ(std::wstring(wide), L"192.168.123.1");
  char narrow[22] = {};
  EXPECT_EQ(std::string(inet_ntop(AF_INET, &address, narrow, 22)), "192.168.123.1");
  EXPECT_EQ(InetNtopW(AF_INET, &address, wide, 13), nullptr);
}

using Winsock = ContractTest;

TEST_F(Winsock, NothingWorksBeforeItIsStarted) {
  EXPECT_EQ(::socket(AF_INET, SOCK_STREAM, IPPROTO_TCP), INVALID_SOCKET);
  EXPECT_EQ(WSAGetLastError(), 10093);
  ADDRINFOA hints = {};
  hints.ai_family = AF_INET;
  ADDRINFOA* list = nullptr;
  const int result = getaddrinfo("203.0.113.9", nullptr, &hints, &list);
  EXPECT_EQ(result, IsWine() ? 0 : 10093);  // Wine resolves without being started
  if (result == 0) {
    freeaddrinfo(list);
  }
}

class Registry : public ContractTest {
 protected:
  void SetUp() override {
    PutDword(L"Number", 5);
    PutText(L"Text", L"host:1");
    ASSERT_EQ(RegOpenKeyExW(HKEY_CURRENT_USER, kTestKey, 0, KEY_QUERY_VALUE, &key), 0);
  }
  void TearDown() override { RegCloseKey(key); }
  HKEY key = nullptr;
};

TEST_F(Registry, AMissingKeyAndAMissingValueGive2) {
  HKEY other = nullptr;
  EXPECT_EQ(RegOpenKeyExW(HKEY_CURRENT_USER, L"Software\\TavrinNone", 0, KEY_QUERY_VALUE, &other),
            2);
  DWORD size = 4;
  EXPECT_EQ(RegQueryValueExW(key, L"None", nullptr, nullptr, nullptr, &size), 2);
}

TEST_F(Registry, ANumberComesWithItsTypeAndSize) {
  DWORD type = 0;
  DWORD value = 0;
  DWORD size = sizeof value;
  EXPECT_EQ(
      RegQueryValueExW(key, L"number", nullptr, &type, reinterpret_cast<BYTE*>(&value), &size), 0);
  EXPECT_EQ(type, static_cast<DWORD>(REG_DWORD));
  EXPECT_EQ(value, 5u);
  EXPECT_EQ(size, 4u);
}

TEST_F(Registry, ATextThatDoesNotFitGives234AndItsSizeAndType) {
  DWORD type = 0;
  DWORD value = 77;
  DWORD size = sizeof value;
  EXPECT_EQ(RegQueryValueExW(key, L"Text", nullptr, &type, reinterpret_cast<BYTE*>(&value), &size),
            234);
  EXPECT_EQ(type, static_cast<DWORD>(REG_SZ));
  EXPECT_EQ(size, 7 * sizeof(wchar_t));
}

TEST_F(Registry, ATextComesWithItsTerminator) {
  wchar_t text[16] = {};
  DWORD size = sizeof text;
  EXPECT_EQ(RegQueryValueExW(key, L"Text", nullptr, nullptr, reinterpret_cast<BYTE*>(text), &size),
            0);
  EXPECT_EQ(std::wstring(text), L"host:1");
  EXPECT_EQ(size, 7 * sizeof(wchar_t));
}

using Adapters = ContractTest;

TEST_F(Adapters, TheListIsAskedForTwice) {
  ULONG size = 0;
  ASSERT_EQ(GetAdaptersAddresses(AF_UNSPEC, 0, nullptr, nullptr, &size), 111u);
  std::vector<ULONGLONG> buffer(size / sizeof(ULONGLONG) + 1);
  auto* const list = reinterpret_cast<IP_ADAPTER_ADDRESSES*>(buffer.data());
  EXPECT_EQ(GetAdaptersAddresses(AF_UNSPEC, 0, nullptr, list, &size), 0u);
  EXPECT_NE(list->FriendlyName, nullptr);
  EXPECT_NE(list->Description, nullptr);
}

TEST_F(Adapters, AnAliasThatNobodyHasGives87) {
  NET_LUID luid = {};
  EXPECT_EQ(ConvertInterfaceAliasToLuid(L"tavrin-no-such-adapter", &luid), 87u);
}

TEST_F(Adapters, ATableOfRoutesIsHandedOutAndFreed) {
  MIB_IPFORWARD_TABLE2* table = nullptr;
  ASSERT_EQ(GetIpForwardTable2(AF_INET, &table), 0u);
  ASSERT_NE(table, nullptr);
  FreeMibTable(table);
}

}  // namespace
}  // namespace contract
