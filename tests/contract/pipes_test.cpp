// Named pipes in byte mode.
#include <string>
#include <thread>

#include "tests/contract/world.h"

#include <sddl.h>

namespace contract {
namespace {

constexpr wchar_t kName[] = L"\\\\.\\pipe\\tavrin-contract";

class Pipe : public ContractTest {
 protected:
  void TearDown() override {
    Close(server);
    Close(client);
  }

  HANDLE Create(DWORD instances = 1) {
    return CreateNamedPipeW(kName, PIPE_ACCESS_DUPLEX, PIPE_REJECT_REMOTE_CLIENTS, instances, 4096,
                            4096, 0, nullptr);
  }
  HANDLE Open() {
    return CreateFileW(kName, GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING,
                       FILE_ATTRIBUTE_NORMAL, nullptr);
  }
  void Close(HANDLE& handle) {
    if (handle != INVALID_HANDLE_VALUE) {
      CloseHandle(handle);
      handle = INVALID_HANDLE_VALUE;
    }
  }
  // Server and client, connected.
  void Connect() {
    server = Create();
    client = Open();
    ASSERT_NE(client, INVALID_HANDLE_VALUE);
    EXPECT_EQ(ConnectNamedPipe(server, nullptr), FALSE);
  }
  // The error of a call that has to fail.
  static DWORD ErrorOf(BOOL result) {
    const DWORD error = GetLastError();
    EXPECT_EQ(result, FALSE);
    return error;
  }
  static DWORD ReadError(HANDLE pipe) {
    char byte = 0;
    DWORD count = 0;
    return ErrorOf(ReadFile(pipe, &byte, 1, &count, nullptr));
  }
  static DWORD WriteError(HANDLE pipe) {
    DWORD count = 0;
    return ErrorOf(WriteFile(pipe, "x", 1, &count, nullptr));
  }
  static std::string Read(HANDLE pipe, DWORD size) {
    std::string bytes(size, '\0');
    DWORD count = 0;
    EXPECT_NE(ReadFile(pipe, bytes.data(), size, &count, nullptr), FALSE);
    bytes.resize(count);
    return bytes;
  }
  static void Write(HANDLE pipe, const std::string& bytes) {
    DWORD count = 0;
    EXPECT_NE(WriteFile(pipe, bytes.data(), static_cast<DWORD>(bytes.size()), &count, nullptr),
              FALSE);
    EXPECT_EQ(count, bytes.size());
  }

  HANDLE server = INVALID_HANDLE_VALUE;
  HANDLE client = INVALID_HANDLE_VALUE;
};

TEST_F(Pipe, AClientThatIsThereAlreadyGives535) {
  server = Create();
  client = Open();
  EXPECT_NE(client, INVALID_HANDLE_VALUE);
  EXPECT_EQ(ErrorOf(ConnectNamedPipe(server, nullptr)), 535u);
}

TEST_F(Pipe, AClientThatCameAndWentGives232) {
  server = Create();
  client = Open();
  Close(client);
  EXPECT_EQ(ErrorOf(ConnectNamedPipe(server, nullptr)), 232u);
}

TEST_F(Pipe, ConnectNamedPipeWaitsForAClient) {
  server = Create();
  std::thread other([this] { client = Open(); });
  const BOOL connected = ConnectNamedPipe(server, nullptr);
  const DWORD error = GetLastError();
  other.join();
  EXPECT_TRUE(connected != FALSE || error == 535) << error;
  Write(client, "x");
  EXPECT_EQ(Read(server, 1), "x");
}

TEST_F(Pipe, OpeningFailsWith2WithoutAPipeAndWith231WithoutAFreeInstance) {
  EXPECT_EQ(Open(), INVALID_HANDLE_VALUE);
  EXPECT_EQ(GetLastError(), 2u);
  Connect();
  EXPECT_EQ(Open(), INVALID_HANDLE_VALUE);
  EXPECT_EQ(GetLastError(), 231u);
}

TEST_F(Pipe, MoreInstancesThanAllowedGive231) {
  server = Create(1);
  EXPECT_EQ(Create(1), INVALID_HANDLE_VALUE);
  EXPECT_EQ(GetLastError(), 231u);
}

TEST_F(Pipe, ANameThatIsNoPipeGives123) {
  EXPECT_EQ(CreateNamedPipeW(L"C:\\no-pipe", PIPE_ACCESS_DUPLEX, 0, 1, 4096, 4096, 0, nullptr),
            INVALID_HANDLE_VALUE);
  EXPECT_EQ(GetLastError(), 123u);
}

TEST_F(Pipe, AReadTakesWhatIsThereWithoutRegardToWrites) {
  Connect();
  Write(client, "abc");
  Write(client, "de");
  EXPECT_EQ(Read(server, 2), "ab");
  EXPECT_EQ(Read(server, 100), "cde");
}

TEST_F(Pipe, AReadWaitsForTheFirstByte) {
  Connect();
  std::thread other([this] { Write(client, "z"); });
  EXPECT_EQ(Read(server, 4), "z");
  other.join();
}

TEST_F(Pipe, BehindTheLastBytesOfAClosedClientComes109) {
  Connect();
  Write(client, "ab");
  Close(client);
  EXPECT_EQ(Read(server, 10), "ab");
  EXPECT_EQ(ReadError(server), 109u);
}

TEST_F(Pipe, WritingToAClosedClientGives232) {
  Connect();
  Close(client);
  EXPECT_EQ(WriteError(server), 232u);
}

TEST_F(Pipe, FlushingToAClosedClientHasNothingToWaitFor) {
  Connect();
  Write(server, "lost");
  Close(client);
  EXPECT_NE(FlushFileBuffers(server), FALSE);
}

TEST_F(Pipe, FlushingWaitsUntilTheClientHasRead) {
  Connect();
  Write(server, "reply");
  std::string got;
  std::thread other([&] { got = Read(client, 5); });
  EXPECT_NE(FlushFileBuffers(server), FALSE);
  EXPECT_NE(DisconnectNamedPipe(server), FALSE);
  other.join();
  EXPECT_EQ(got, "reply");
}

TEST_F(Pipe, AWriteThatIsLargerThanTheBufferWaitsForTheReader) {
  Connect();
  const std::string sent(20000, 'x');
  std::string got;
  std::thread other([&] {
    while (got.size() < sent.size()) {
      got += Read(client, 4096);
    }
  });
  Write(server, sent);
  other.join();
  EXPECT_EQ(got, sent);
}

TEST_F(Pipe, DisconnectingDropsWhatWasNotReadAndGivesTheClient233) {
  Connect();
  Write(server, "late");
  EXPECT_NE(DisconnectNamedPipe(server), FALSE);
  EXPECT_EQ(ReadError(client), 233u);
  EXPECT_EQ(WriteError(client), 233u);
}

TEST_F(Pipe, ADisconnectedServerGives233) {
  Connect();
  DisconnectNamedPipe(server);
  EXPECT_EQ(ReadError(server), 233u);
  EXPECT_EQ(WriteError(server), 233u);
}

TEST_F(Pipe, AListeningServerGives536) {
  server = Create();
  EXPECT_EQ(ReadError(server), 536u);
  EXPECT_EQ(WriteError(server), 536u);
}

TEST_F(Pipe, NoClientGetsIntoADisconnectedInstance) {
  Connect();
  DisconnectNamedPipe(server);
  EXPECT_EQ(Open(), INVALID_HANDLE_VALUE);
  EXPECT_EQ(GetLastError(), 231u);
}

TEST_F(Pipe, AClientReadsWhatAClosedServerHasLeftAndThen109) {
  Connect();
  Write(server, "left");
  Close(server);
  EXPECT_EQ(Read(client, 10), "left");
  EXPECT_EQ(ReadError(client), 109u);
  EXPECT_EQ(WriteError(client), 232u);
}

TEST_F(Pipe, TheAccessListOfTheControlPipeIsAccepted) {
  PSECURITY_DESCRIPTOR descriptor = nullptr;
  EXPECT_NE(ConvertStringSecurityDescriptorToSecurityDescriptorW(
                L"D:P(A;;GA;;;SY)(A;;GA;;;BA)(A;;GA;;;AU)S:(ML;;NW;;;LW)", SDDL_REVISION_1,
                &descriptor, nullptr),
            FALSE);
  SECURITY_ATTRIBUTES attributes = {sizeof attributes, descriptor, FALSE};
  server = CreateNamedPipeW(kName, PIPE_ACCESS_DUPLEX, PIPE_REJECT_REMOTE_CLIENTS, 8, 4096, 4096, 0,
                            &attributes);
  EXPECT_NE(server, INVALID_HANDLE_VALUE);
  EXPECT_EQ(LocalFree(descriptor), nullptr);
  client = Open();
  EXPECT_NE(client, INVALID_HANDLE_VALUE);
}

TEST_F(Pipe, ADescriptorOfAnotherRevisionGives1305) {
  PSECURITY_DESCRIPTOR descriptor = nullptr;
  EXPECT_EQ(ErrorOf(ConvertStringSecurityDescriptorToSecurityDescriptorW(L"D:P(A;;GA;;;SY)", 2,
                                                                         &descriptor, nullptr)),
            1305u);
}

TEST_F(Pipe, AnAnonymousOneTakesItsSizeAtOnceAndKeepsItForTheReader) {
  SECURITY_ATTRIBUTES attributes = {sizeof(attributes), nullptr, TRUE};
  HANDLE reading = nullptr;
  HANDLE writing = nullptr;
  ASSERT_NE(CreatePipe(&reading, &writing, &attributes, 65536), FALSE);
  const std::string bytes(65536, 'x');
  DWORD count = 0;
  EXPECT_NE(WriteFile(writing, bytes.data(), 65536, &count, nullptr), FALSE);
  EXPECT_EQ(count, 65536u);
  CloseHandle(writing);
  DWORD available = 0;
  EXPECT_NE(PeekNamedPipe(reading, nullptr, 0, nullptr, &available, nullptr), FALSE);
  EXPECT_EQ(available, 65536u);
  CloseHandle(reading);
}

TEST_F(Pipe, AClientMayForbidThatTheServerActsInItsName) {
  server = Create();
  client =
      CreateFileW(kName, GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING,
                  FILE_ATTRIBUTE_NORMAL | SECURITY_SQOS_PRESENT | SECURITY_IDENTIFICATION, nullptr);
  EXPECT_NE(client, INVALID_HANDLE_VALUE);
}

}  // namespace
}  // namespace contract
