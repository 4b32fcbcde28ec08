// What clients of pipe_server.h see.
#include "src/control/pipe_server.h"

#include "tests/unit/control/pipe_server_fixture.h"

namespace vpn {
namespace {

using std::string_literals::operator""s;
using unit::kConnect;
using unit::kOkIdle;
using unit::kOkRunning;
using unit::kStatus;
using unit::PipeServer;

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
  machine.faults.Before("WriteFile", 2, [&] { client.Close(); });  // the first is the log's
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
  machine.faults.Before("WriteFile", 2, [&] { beforeReply = second.TryConnect(); });
  unit::BackgroundServer server(machine, Serve);
  EXPECT_EQ(Exchange(kConnect), kOkRunning);
  EXPECT_EQ(during, 231u);  // busy
  EXPECT_EQ(beforeReply, 231u);
  ASSERT_TRUE(second.Connect());
  ASSERT_TRUE(second.SendFrame(kStatus));
  EXPECT_EQ(second.ReceiveFrame(), kOkRunning);
  StopAndExpectEnd(server);
}

}  // namespace
}  // namespace vpn
