#include "src/control/pipe_server.h"

#include <windows.h>

#include <atomic>
#include <csignal>

#include "src/control/session_cache.h"
#include "src/host/wake.h"
#include "tests/sim/pipe_client.h"
#include "tests/unit/background_server.h"
#include "tests/unit/control/control_fixture.h"

namespace vpn {
namespace {

using std::string_literals::operator""s;
using unit::kOkIdle;
using unit::kOkRunning;

constexpr char kStatus[] = R"({"op":"status"})";
constexpr char kConnect[] = R"({"op":"connect"})";

const std::set<std::string> kPipeCalls = {"ConvertStringSecurityDescriptorToSecurityDescriptorW",
                                          "CreateNamedPipeW",
                                          "LocalFree",
                                          "ConnectNamedPipe",
                                          "DisconnectNamedPipe",
                                          "Sleep"};

class PipeServer : public unit::ControlTest {
 protected:
  // The server on the test's own thread, stopped in front of its first wait.
  void ServeUntilFirstWait() {
    machine.faults.Before("ConnectNamedPipe", 1, [] { WakeControlPipe(); });
    ServeControlPipe();
  }
  static int Serve() {
    ServeControlPipe();
    return 0;
  }
  std::string Exchange(std::string_view request) {
    return sim::PipeClient::Exchange(machine, request).value_or("no reply");
  }
  void StopAndExpectEnd(unit::BackgroundServer& server) {
    WakeControlPipe();
    EXPECT_TRUE(server.Ends());
  }
};

TEST_F(PipeServer, CurrentDirectoryThenTheWarmUpThenTheFirstInstance) {
  ServeUntilFirstWait();
  EXPECT_EQ(machine.calls.Sequence({"SetCurrentDirectoryW", "CreateThread", "CreateNamedPipeW"}),
            (std::vector<std::string>{
                R"(SetCurrentDirectoryW "C:\run")", "CreateThread ",
                R"(CreateNamedPipeW "\\.\pipe\TavrinService", 0x3, 0x8, 8, 4096, 4096, 0)"}));
}

TEST_F(PipeServer, InstanceIsCreatedWithExactlyTheseValues) {
  ServeUntilFirstWait();
  ASSERT_EQ(machine.pipes.Created().size(), 1u);
  const sim::PipeSettings settings = machine.pipes.Created()[0];
  EXPECT_EQ(settings.name, R"(\\.\pipe\TavrinService)");
  EXPECT_EQ(settings.openMode, 3u);
  EXPECT_EQ(settings.pipeMode, 8u);
  EXPECT_EQ(settings.maxInstances, 8u);
  EXPECT_EQ(settings.outBuffer, 4096u);
  EXPECT_EQ(settings.inBuffer, 4096u);
  EXPECT_EQ(settings.defaultTimeOut, 0u);
  EXPECT_FALSE(settings.inherit);
  EXPECT_EQ(settings.securityDescriptor, "D:P(A;;GA;;;SY)(A;;GA;;;BA)(A;;GA;;;AU)S:(ML;;NW;;;LW)");
}

TEST_F(PipeServer, DescriptorIsMadeAtRevisionOneAndFreedBeforeTheWait) {
  ServeUntilFirstWait();
  const std::vector<std::string> sequence = machine.calls.Sequence(kPipeCalls);
  EXPECT_EQ(sequence,
            (std::vector<std::string>{
                "ConvertStringSecurityDescriptorToSecurityDescriptorW "
                R"sddl("D:P(A;;GA;;;SY)(A;;GA;;;BA)(A;;GA;;;AU)S:(ML;;NW;;;LW)", 1)sddl",
                R"(CreateNamedPipeW "\\.\pipe\TavrinService", 0x3, 0x8, 8, 4096, 4096, 0)",
                "LocalFree ", "ConnectNamedPipe pipe", "DisconnectNamedPipe pipe"}));
}

TEST_F(PipeServer, MissingRuntimeDirectoryIsNoHindrance) {
  SetRuntimeDir(L"C:\\none");
  ServeUntilFirstWait();
  EXPECT_EQ(machine.pipes.Created().size(), 1u);
  EXPECT_EQ(machine.files.currentDirectory, L"C:\\Windows\\System32");
}

TEST_F(PipeServer, StopBeforeTheStartCreatesNoInstanceButWarmsUp) {
  StopRequested = 1;
  ServeControlPipe();
  EXPECT_EQ(machine.pipes.Created().size(), 0u);
  EXPECT_EQ(machine.calls.Count("CreateThread"), 1u);
}

TEST_F(PipeServer, WarmUpFillsTheCacheAheadOfTheFirstConnect) {
  ServeUntilFirstWait();
  EXPECT_EQ(machine.WaitForThreads(), 0u);
  StopRequested = 0;
  unit::BackgroundServer server(machine, Serve);
  EXPECT_EQ(Exchange(kConnect), kOkRunning);
  EXPECT_EQ(Fetches(), 1);
  StopAndExpectEnd(server);
}

TEST_F(PipeServer, WarmUpHasItsOwnCopyOfTheDirectory) {
  std::atomic<bool> changed{false};
  machine.faults.Before("_wfsopen", 1,
                        [&] { EXPECT_TRUE(unit::Eventually([&] { return changed.load(); })); });
  machine.faults.Before("CreateNamedPipeW", 1, [&] {
    RuntimeDir = L"C:\\changed";
    changed = true;
  });
  ServeUntilFirstWait();
  EXPECT_EQ(machine.WaitForThreads(), 0u);
  EXPECT_EQ(machine.calls.TextsOf("_wfsopen").front(), R"("C:\run\panel.json", "rb", 64)");
}

TEST_F(PipeServer, WarmUpThatFailsLeavesNoTrace) {
  machine.files.Remove(L"C:\\run\\session.json");
  ServeUntilFirstWait();
  EXPECT_EQ(machine.WaitForThreads(), 0u);
  EXPECT_EQ(Log(), "");
}

TEST_F(PipeServer, WarmUpThreadsHandleIsClosedAtOnce) {
  ServeUntilFirstWait();
  EXPECT_EQ(machine.calls.Sequence({"CloseHandle", "CreateNamedPipeW"}).front(),
            "CloseHandle thread");
}

using PipeServerDeath = PipeServer;

TEST_F(PipeServerDeath, WarmUpThatCannotBeStartedEndsTheProcess) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(
      {
        machine.faults.Fail("CreateThread");
        ServeControlPipe();
      },
      ::testing::KilledBySignal(SIGABRT), "terminate called without an active exception");
}

TEST_F(PipeServer, DescriptorThatCannotBeMadeIsTriedAgainEvery500Milliseconds) {
  machine.faults.Fail("ConvertStringSecurityDescriptorToSecurityDescriptorW");
  machine.faults.Fail("ConvertStringSecurityDescriptorToSecurityDescriptorW", {.nth = 2});
  const std::uint64_t start = machine.clock.Now();
  ServeUntilFirstWait();
  EXPECT_EQ(machine.calls.TextsOf("Sleep"), (std::vector<std::string>{"500", "500"}));
  EXPECT_EQ(machine.clock.Now() - start, 1000u);
  EXPECT_EQ(machine.pipes.Created().size(), 1u);
  EXPECT_EQ(Log(), "");
}

TEST_F(PipeServer, InstanceThatCannotBeCreatedIsTriedAgainEvery500Milliseconds) {
  for (const std::uint64_t nth : {1u, 2u, 3u}) {
    machine.faults.Fail("CreateNamedPipeW", {.nth = nth, .code = 231});
  }
  ServeUntilFirstWait();
  EXPECT_EQ(machine.calls.TextsOf("Sleep"), (std::vector<std::string>{"500", "500", "500"}));
  EXPECT_EQ(machine.calls.Count("LocalFree"), 4u);
  EXPECT_EQ(machine.calls.Count("DisconnectNamedPipe"), 1u);
  EXPECT_EQ(Log(), "");
}

TEST_F(PipeServer, StopEndsARetryingServerToo) {
  machine.faults.FailAlways("CreateNamedPipeW");
  machine.faults.Before("Sleep", 3, [] { WakeControlPipe(); });
  ServeControlPipe();
  EXPECT_EQ(machine.calls.Count("Sleep"), 3u);
}

TEST_F(PipeServer, FailedWaitJustClosesTheInstanceAndTakesTheNextAtOnce) {
  machine.faults.Fail("ConnectNamedPipe", {.code = 232});
  machine.faults.Fail("ConnectNamedPipe", {.nth = 2, .code = 1450});
  machine.faults.Before("ConnectNamedPipe", 3, [] { WakeControlPipe(); });
  ServeControlPipe();
  EXPECT_EQ(machine.pipes.Created().size(), 3u);
  EXPECT_EQ(machine.calls.Count("Sleep"), 0u);
  EXPECT_EQ(machine.calls.Count("ReadFile"), 0u);
  EXPECT_EQ(machine.calls.Count("DisconnectNamedPipe"), 3u);
  EXPECT_EQ(Log(), "");
}

TEST_F(PipeServer, ClientThatComesBeforeTheWaitIsServed) {
  sim::PipeClient client(machine);
  std::string reply;
  machine.faults.Before("ConnectNamedPipe", 1, [&] {
    EXPECT_EQ(client.TryConnect(), 0u);
    EXPECT_TRUE(client.SendFrame(kStatus));
  });
  machine.faults.Before("FlushFileBuffers", 1,
                        [&] { reply = client.ReceiveFrame().value_or("no reply"); });
  machine.faults.Before("ConnectNamedPipe", 2, [] { WakeControlPipe(); });
  ServeControlPipe();
  EXPECT_EQ(reply, kOkIdle);
}

TEST_F(PipeServer, EachConnectionCarriesOneExchangeOnAnInstanceOfItsOwn) {
  unit::BackgroundServer server(machine, Serve);
  for (int i = 0; i < 3; ++i) {
    sim::PipeClient client(machine);
    ASSERT_TRUE(client.Connect());
    ASSERT_TRUE(client.SendFrame(kStatus));
    EXPECT_EQ(client.ReceiveFrame(), kOkIdle);
    EXPECT_EQ(client.ReadToEnd(), "");  // the server has disconnected
  }
  ASSERT_TRUE(server.HasCreated(4));
  StopAndExpectEnd(server);
  EXPECT_EQ(machine.pipes.Created().size(), 4u);
  EXPECT_EQ(machine.calls.Count("DisconnectNamedPipe"), 4u);
}

TEST_F(PipeServer, InstanceIsDisconnectedAndClosedBeforeTheNextIsCreated) {
  sim::PipeClient between(machine);
  std::uint32_t attempt = 0;
  machine.faults.Before("CreateNamedPipeW", 2, [&] { attempt = between.TryConnect(); });
  unit::BackgroundServer server(machine, Serve);
  EXPECT_EQ(Exchange(kStatus), kOkIdle);
  ASSERT_TRUE(server.HasCreated(2));
  EXPECT_EQ(attempt, 2u);  // there is no pipe of this name
  StopAndExpectEnd(server);
  const std::vector<std::string> sequence =
      machine.calls.Sequence({"DisconnectNamedPipe", "CreateNamedPipeW", "FlushFileBuffers"});
  ASSERT_GE(sequence.size(), 4u);
  EXPECT_EQ(sequence[1], "FlushFileBuffers pipe");
  EXPECT_EQ(sequence[2], "DisconnectNamedPipe pipe");
  EXPECT_EQ(sequence[3].substr(0, 16), "CreateNamedPipeW");
}

TEST_F(PipeServer, LengthBytesOneAtATimeAndAPayloadInPiecesAreReadCorrectly) {
  unit::BackgroundServer server(machine, Serve);
  sim::PipeClient client(machine);
  ASSERT_TRUE(client.Connect());
  for (const std::string& piece :
       {"\x0F"s, "\0"s, "\0"s, "\0"s, R"({"op":)"s, R"("sta)"s, R"(tus"})"s}) {
    const size_t reads = machine.calls.Count("ReadFile");
    ASSERT_TRUE(client.Write(piece));
    // The next piece goes out only when the server has taken this one and asks for more.
    if (piece.back() != '}') {
      ASSERT_TRUE(unit::Eventually([&] { return machine.calls.Count("ReadFile") > reads; }));
    }
  }
  EXPECT_EQ(client.ReceiveFrame(), kOkIdle);
  StopAndExpectEnd(server);
}

TEST_F(PipeServer, Length65536IsAccepted) {
  std::string request = R"({"op":"status","node":")";
  request += std::string(65536 - request.size() - 2, 'x') + "\"}";
  ASSERT_EQ(request.size(), 65536u);
  unit::BackgroundServer server(machine, Serve);
  EXPECT_EQ(Exchange(request), kOkIdle);
  StopAndExpectEnd(server);
}

TEST_F(PipeServer, LengthOf65537IsRefusedAndTheNextClientIsServed) {
  unit::BackgroundServer server(machine, Serve);
  sim::PipeClient client(machine);
  ASSERT_TRUE(client.Connect());
  (void)client.Write("\x01\0\x01\0"s);
  EXPECT_EQ(client.ReadToEnd(), "");
  EXPECT_EQ(Exchange(kStatus), kOkIdle);
  StopAndExpectEnd(server);
  EXPECT_EQ(Log().substr(0, 20), "ipc read failed err=");
}

TEST_F(PipeServer, LengthOf0IsRefusedAndTheNextClientIsServed) {
  unit::BackgroundServer server(machine, Serve);
  sim::PipeClient client(machine);
  ASSERT_TRUE(client.Connect());
  (void)client.Write("\0\0\0\0"s);
  EXPECT_EQ(client.ReadToEnd(), "");
  EXPECT_EQ(Exchange(kStatus), kOkIdle);
  StopAndExpectEnd(server);
  EXPECT_EQ(Log().substr(0, 20), "ipc read failed err=");
}

TEST_F(PipeServer, UnreadPayloadOfARefusedFrameReachesNobody) {
  unit::BackgroundServer server(machine, Serve);
  sim::PipeClient client(machine);
  ASSERT_TRUE(client.Connect());
  (void)client.Write("\x01\0\x01\0"s + std::string(100, 'x'));
  EXPECT_EQ(client.ReadToEnd(), "");
  EXPECT_EQ(Exchange(kStatus), kOkIdle);
  StopAndExpectEnd(server);
}

TEST_F(PipeServer, ClientThatConnectsAndLeavesIsLoggedAndTheNextIsServed) {
  unit::BackgroundServer server(machine, Serve);
  {
    sim::PipeClient client(machine);
    ASSERT_TRUE(client.Connect());
    ASSERT_TRUE(unit::Eventually([&] { return machine.calls.Count("ReadFile") == 1; }));
  }
  EXPECT_EQ(Exchange(kStatus), kOkIdle);
  StopAndExpectEnd(server);
  EXPECT_EQ(Log(), "ipc read failed err=109\nipc op=status\n");
}

TEST_F(PipeServer, ClientThatLeavesBeforeTheReplyIsLoggedAndTheNextIsServed) {
  sim::PipeClient client(machine);
  machine.faults.Before("WriteFile", 1, [&] { client.Close(); });
  unit::BackgroundServer server(machine, Serve);
  ASSERT_TRUE(client.Connect());
  ASSERT_TRUE(client.SendFrame(kStatus));
  EXPECT_EQ(Exchange(kStatus), kOkIdle);
  StopAndExpectEnd(server);
  EXPECT_EQ(Log(), "ipc op=status\nipc write reply failed err=232\nipc op=status\n");
}

TEST_F(PipeServer, SecondClientDuringAConnectGetsInOnlyAfterTheReply) {
  sim::PipeClient second(machine);
  std::uint32_t during = 0;
  std::uint32_t beforeReply = 0;
  machine.faults.Before("CreateJobObjectW", 1, [&] { during = second.TryConnect(); });
  machine.faults.Before("WriteFile", 1, [&] { beforeReply = second.TryConnect(); });
  unit::BackgroundServer server(machine, Serve);
  EXPECT_EQ(Exchange(kConnect), kOkRunning);
  EXPECT_EQ(during, 231u);  // busy
  EXPECT_EQ(beforeReply, 231u);
  ASSERT_TRUE(second.Connect());
  ASSERT_TRUE(second.SendFrame(kStatus));
  EXPECT_EQ(second.ReceiveFrame(), kOkRunning);
  StopAndExpectEnd(server);
}

TEST_F(PipeServer, StopDuringTheWaitEndsWithinOneAttemptAndTakesTheTunnelDown) {
  unit::BackgroundServer server(machine, Serve);
  EXPECT_EQ(Exchange(kConnect), kOkRunning);
  ASSERT_TRUE(server.HasCreated(2));
  StopAndExpectEnd(server);
  EXPECT_EQ(machine.pipes.Created().size(), 2u);
  EXPECT_EQ(Alive(), std::vector<std::string>());  // before the server has returned
  EXPECT_FALSE(HasRoute("0.0.0.0", 1));
}

TEST_F(PipeServer, StopConnectionIsNotServed) {
  unit::BackgroundServer server(machine, Serve);
  ASSERT_TRUE(server.HasCreated(1));
  StopAndExpectEnd(server);
  EXPECT_EQ(machine.calls.Count("ReadFile"), 0u);
  EXPECT_EQ(Log(), "");
}

TEST_F(PipeServer, ClientThatIsConnectedWhenTheStopComesIsNotServed) {
  sim::PipeClient client(machine);
  machine.faults.Before("ConnectNamedPipe", 1, [&] {
    EXPECT_EQ(client.TryConnect(), 0u);
    EXPECT_TRUE(client.SendFrame(kStatus));
    WakeControlPipe();  // finds the instance busy
  });
  ServeControlPipe();
  EXPECT_EQ(client.ReadToEnd(), "");
  EXPECT_EQ(machine.calls.Count("ReadFile"), 0u);
  EXPECT_EQ(machine.pipes.Created().size(), 1u);
}

TEST_F(PipeServer, StopDuringARequestTakesEffectWhenItIsAnswered) {
  machine.faults.Before("CreateJobObjectW", 1, [] { WakeControlPipe(); });
  unit::BackgroundServer server(machine, Serve);
  EXPECT_EQ(Exchange(kConnect), kOkRunning);
  EXPECT_TRUE(server.Ends());
  EXPECT_EQ(machine.pipes.Created().size(), 1u);
  EXPECT_EQ(Alive(), std::vector<std::string>());
}

TEST_F(PipeServer, StopBetweenTwoInstancesIsNotMissed) {
  machine.faults.Before("CreateNamedPipeW", 1, [] { WakeControlPipe(); });
  ServeControlPipe();  // would wait for ever, since the stop's connection found no pipe
  EXPECT_EQ(machine.calls.Count("ConnectNamedPipe"), 0u);
}

TEST_F(PipeServer, AllowedShutdownIsAnsweredAndEndsTheServerWithoutAnyConnection) {
  ShutdownAllowed = 1;
  unit::BackgroundServer server(machine, Serve);
  EXPECT_EQ(Exchange(R"({"op":"shutdown"})"), kOkIdle);
  EXPECT_TRUE(server.Ends());
  EXPECT_EQ(machine.pipes.Created().size(), 1u);
  EXPECT_EQ(machine.calls.Count("CreateFileW"), 0u);
}

TEST_F(PipeServer, ShutdownThatIsNotAllowedLeavesItListening) {
  unit::BackgroundServer server(machine, Serve);
  EXPECT_EQ(Exchange(R"({"op":"shutdown"})"), kOkIdle);
  EXPECT_EQ(Exchange(kStatus), kOkIdle);
  EXPECT_FALSE(server.IsDone());
  StopAndExpectEnd(server);
}

TEST_F(PipeServer, ForeignServerThatHoldsAllInstancesIsWaitedFor) {
  machine.pipes.AddForeign(L"\\\\.\\pipe\\TavrinService");
  machine.faults.Before("Sleep", 2, [] { WakeControlPipe(); });
  ServeControlPipe();
  EXPECT_EQ(machine.calls.TextsOf("Sleep"), (std::vector<std::string>{"500", "500"}));
}

}  // namespace
}  // namespace vpn
