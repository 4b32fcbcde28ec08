// How the loop of pipe_server.h ends.
#include "src/control/pipe_server.h"

#include "tests/unit/control/pipe_server_fixture.h"

namespace vpn {
namespace {

using unit::kConnect;
using unit::kOkIdle;
using unit::kOkRunning;
using unit::kStatus;
using unit::PipeServer;

TEST_F(PipeServer, StopBeforeTheStartCreatesNoInstanceButWarmsUp) {
  g_stopRequested = 1;
  ServeControlPipe();
  EXPECT_EQ(machine.pipes.Created().size(), 0u);
  EXPECT_EQ(machine.calls.Count("CreateThread"), 1u);
}

TEST_F(PipeServer, StopEndsARetryingServerToo) {
  machine.faults.FailAlways("CreateNamedPipeW");
  machine.faults.Before("Sleep", 3, [] { WakeControlPipe(); });
  ServeControlPipe();
  EXPECT_EQ(machine.calls.Count("Sleep"), 3u);
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
  g_shutdownAllowed = 1;
  unit::BackgroundServer server(machine, Serve);
  EXPECT_EQ(Exchange(R"({"op":"shutdown"})"), kOkIdle);
  EXPECT_TRUE(server.Ends());
  EXPECT_EQ(machine.pipes.Created().size(), 1u);
  EXPECT_EQ(PipeConnections(), 0);
}

TEST_F(PipeServer, ShutdownThatIsNotAllowedLeavesItListening) {
  unit::BackgroundServer server(machine, Serve);
  EXPECT_EQ(Exchange(R"({"op":"shutdown"})"), kOkIdle);
  EXPECT_EQ(Exchange(kStatus), kOkIdle);
  EXPECT_FALSE(server.IsDone());
  StopAndExpectEnd(server);
}

}  // namespace
}  // namespace vpn
