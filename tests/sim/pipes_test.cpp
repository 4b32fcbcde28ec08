#include "tests/sim/pipes.h"

#include <string>
#include <thread>

#include "tests/sim/fixture.h"
#include "tests/sim/pipe_client.h"

#include <windows.h>

namespace sim {
namespace {

constexpr wchar_t kName[] = L"\\\\.\\pipe\\TavrinService";

class PipeCalls : public MachineTest {
 protected:
  HANDLE Create(DWORD instances = 1) {
    return CreateNamedPipeW(kName, PIPE_ACCESS_DUPLEX, PIPE_REJECT_REMOTE_CLIENTS, instances, 4096,
                            4096, 0, nullptr);
  }
  DWORD ReadError(HANDLE pipe) {
    char byte = 0;
    DWORD count = 0;
    EXPECT_EQ(ReadFile(pipe, &byte, 1, &count, nullptr), FALSE);
    return GetLastError();
  }
  PipeClient client{machine};
};

TEST_F(PipeCalls, AClientInFrontOfConnectNamedPipeIsTold) {
  const HANDLE pipe = Create();
  EXPECT_EQ(client.TryConnect(), 0u);
  EXPECT_EQ(ConnectNamedPipe(pipe, nullptr), FALSE);
  EXPECT_EQ(GetLastError(), 535u);
  CloseHandle(pipe);
}

TEST_F(PipeCalls, AClientThatCameAndWentGives232) {
  const HANDLE pipe = Create();
  EXPECT_EQ(client.TryConnect(), 0u);
  client.Close();
  EXPECT_EQ(ConnectNamedPipe(pipe, nullptr), FALSE);
  EXPECT_EQ(GetLastError(), 232u);
  CloseHandle(pipe);
}

TEST_F(PipeCalls, ConnectNamedPipeWaitsForAClient) {
  const HANDLE pipe = Create();
  std::thread other([this] {
    // The call is noted under the lock that it keeps until it waits.
    while (machine.calls.Count("ConnectNamedPipe") == 0) {
      std::this_thread::yield();
    }
    EXPECT_TRUE(client.Connect());
  });
  EXPECT_NE(ConnectNamedPipe(pipe, nullptr), FALSE);
  other.join();
  CloseHandle(pipe);
}

TEST_F(PipeCalls, ReadsGiveWhatIsThereAndThen109) {
  const HANDLE pipe = Create();
  client.TryConnect();
  client.Write("abc");
  char buffer[8] = {};
  DWORD count = 0;
  EXPECT_NE(ReadFile(pipe, buffer, 2, &count, nullptr), FALSE);
  EXPECT_EQ(std::string(buffer, count), "ab");
  client.Close();
  EXPECT_NE(ReadFile(pipe, buffer, 8, &count, nullptr), FALSE);
  EXPECT_EQ(std::string(buffer, count), "c");
  EXPECT_EQ(ReadError(pipe), 109u);
  EXPECT_EQ(WriteFile(pipe, "x", 1, &count, nullptr), FALSE);
  EXPECT_EQ(GetLastError(), 232u);
  CloseHandle(pipe);
}

TEST_F(PipeCalls, ALargeWriteWaitsForTheReader) {
  const HANDLE pipe = Create();
  client.TryConnect();
  const std::string sent(100000, 'x');
  std::thread other([&] { EXPECT_EQ(client.ReadToEnd(), sent); });
  DWORD count = 0;
  EXPECT_NE(WriteFile(pipe, sent.data(), static_cast<DWORD>(sent.size()), &count, nullptr), FALSE);
  EXPECT_EQ(count, sent.size());
  EXPECT_NE(FlushFileBuffers(pipe), FALSE);
  EXPECT_NE(DisconnectNamedPipe(pipe), FALSE);
  other.join();
  CloseHandle(pipe);
}

TEST_F(PipeCalls, DisconnectingDropsWhatWasNotRead) {
  const HANDLE pipe = Create();
  client.TryConnect();
  DWORD count = 0;
  WriteFile(pipe, "late", 4, &count, nullptr);
  DisconnectNamedPipe(pipe);
  EXPECT_EQ(client.ReadToEnd(), "");
  CloseHandle(pipe);
}

TEST_F(PipeCalls, InstancesAreLimitedAndBusyOnesKeepClientsOut) {
  EXPECT_EQ(client.TryConnect(), 2u);
  const HANDLE pipe = Create(1);
  EXPECT_EQ(Create(1), INVALID_HANDLE_VALUE);
  EXPECT_EQ(GetLastError(), 231u);
  EXPECT_EQ(client.TryConnect(), 0u);
  PipeClient second(machine);
  EXPECT_EQ(second.TryConnect(), 231u);
  CloseHandle(pipe);
  EXPECT_EQ(second.TryConnect(), 2u);
}

TEST_F(PipeCalls, FramesTravelBothWays) {
  const HANDLE pipe = Create();
  std::thread other([this] {
    EXPECT_EQ(PipeClient::Exchange(machine, "hello"), std::optional<std::string>("hello"));
  });
  ConnectNamedPipe(pipe, nullptr);
  char frame[9] = {};
  for (DWORD at = 0, count = 0; at < sizeof frame; at += count) {
    ASSERT_NE(ReadFile(pipe, frame + at, static_cast<DWORD>(sizeof frame) - at, &count, nullptr),
              FALSE);
  }
  EXPECT_EQ(std::string(frame, 4), std::string("\5\0\0\0", 4));
  DWORD count = 0;
  WriteFile(pipe, frame, sizeof frame, &count, nullptr);
  other.join();
  CloseHandle(pipe);
}

TEST_F(PipeCalls, TheSecurityDescriptorIsKeptAndHasToBeFreed) {
  PSECURITY_DESCRIPTOR descriptor = nullptr;
  ASSERT_NE(ConvertStringSecurityDescriptorToSecurityDescriptorW(L"D:P(A;;GA;;;SY)", 1, &descriptor,
                                                                 nullptr),
            FALSE);
  SECURITY_ATTRIBUTES attributes = {sizeof attributes, descriptor, FALSE};
  const HANDLE pipe = CreateNamedPipeW(kName, PIPE_ACCESS_DUPLEX, 0, 8, 4096, 4096, 0, &attributes);
  EXPECT_EQ(machine.pipes.Created()[0].securityDescriptor, "D:P(A;;GA;;;SY)");
  CloseHandle(pipe);
  EXPECT_EQ(machine.OpenHandles(),
            std::vector<std::string>{"security descriptor from "
                                     "ConvertStringSecurityDescriptorToSecurityDescriptorW"});
  EXPECT_EQ(LocalFree(descriptor), nullptr);
}

}  // namespace
}  // namespace sim
