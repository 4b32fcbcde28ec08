// Frames on the pipe, broken off in every way: the next client is always served.
#include "tests/e2e/harness/expect.h"
#include "tests/e2e/harness/service_test.h"
#include "tests/e2e/harness/waiting.h"

namespace e2e {
namespace {

constexpr char kStatus[] = R"({"op":"status"})";

class Frames : public ServiceTest {
 protected:
  void SetUp() override { StartService(); }
  void ExpectNextClientIsServed() { EXPECT_EQ(Ask(kStatus), kDown); }
  // Lines of a failed reading, whose code is the platform's affair.
  std::ptrdiff_t FailedReads() const {
    const Lines log = ServiceLog();
    return std::count_if(log.begin(), log.end(), [](const std::string& line) {
      return line.starts_with("ipc read failed err=");
    });
  }
  void ExpectReadFailureIsLogged() { EXPECT_EQ(FailedReads(), 1); }
  void LeaveBehind(const std::string& bytes) {
    PipeClient client;
    client.Write(bytes);
    client.WaitUntilRead();
    client.Close();
    ExpectNextClientIsServed();
  }
};

TEST_F(Frames, LengthBytesMayComeOneAtATime) {
  PipeClient client;
  for (const char byte : LengthPrefix(15)) {
    client.Write({&byte, 1});
    PipeClient::Pause();
  }
  client.Write(kStatus);
  EXPECT_EQ(client.ReadReply(), kDown);
  EXPECT_EQ(client.ReadUntilClosed(), "");
}

TEST_F(Frames, PayloadMayComeInPieces) {
  PipeClient client;
  const std::string frame = Frame(kStatus);
  for (std::size_t at = 0; at < frame.size(); at += 3) {
    client.Write(frame.substr(at, 3));
    PipeClient::Pause();
  }
  EXPECT_EQ(client.ReadReply(), kDown);
}

TEST_F(Frames, PayloadOfOneByteIsAnswered) {
  EXPECT_EQ(Ask(" "), Refusal("op not allowed"));
}

TEST_F(Frames, PayloadOf65536BytesIsAnswered) {
  std::string payload = kStatus;
  payload.resize(65536, ' ');
  EXPECT_EQ(Ask(payload), kDown);
}

TEST_F(Frames, LengthOf65537IsRefusedAndTheNextClientIsServed) {
  PipeClient client;
  client.Write(LengthPrefix(65537));
  EXPECT_EQ(client.ReadUntilClosed(), "");
  ExpectNextClientIsServed();
  ExpectReadFailureIsLogged();
}

TEST_F(Frames, LengthOfZeroIsRefusedAndTheNextClientIsServed) {
  PipeClient client;
  client.Write(LengthPrefix(0));
  EXPECT_EQ(client.ReadUntilClosed(), "");
  ExpectNextClientIsServed();
  ExpectReadFailureIsLogged();
}

TEST_F(Frames, GreatestLengthIsRefusedAndTheNextClientIsServed) {
  PipeClient client;
  client.Write(LengthPrefix(0xFFFFFFFF));
  EXPECT_EQ(client.ReadUntilClosed(), "");
  ExpectNextClientIsServed();
}

TEST_F(Frames, ClientThatLeavesAtOnceDoesNoHarm) {
  PipeClient().Close();
  ExpectNextClientIsServed();
}

TEST_F(Frames, ClientThatLeavesWithinTheLengthDoesNoHarm) {
  LeaveBehind(LengthPrefix(15).substr(0, 2));
  ExpectReadFailureIsLogged();
}

TEST_F(Frames, ClientThatLeavesWithinThePayloadDoesNoHarm) {
  LeaveBehind(Frame(kStatus).substr(0, 9));
  ExpectReadFailureIsLogged();
}

TEST_F(Frames, BytesBehindTheRequestAreNotASecondOne) {
  PipeClient client;
  client.Write(Frame(kStatus) + Frame(kStatus));
  EXPECT_EQ(client.ReadReply(), kDown);
  EXPECT_EQ(client.ReadUntilClosed(), "");
  ExpectNextClientIsServed();
}

// The operation is carried out to its end, and only its reply is lost.
TEST_F(Frames, ClientThatLeavesBeforeTheReplyLosesTheReplyAlone) {
  machine.Edit([](standins::MachineState& state) { state.xray.delayMs = 300; });
  PipeClient client;
  client.Write(Frame(R"({"op":"connect"})"));
  WaitUntil("xray starts", [this] { return machine.Starts("xray.exe") == 1; });
  client.Close();
  EXPECT_EQ(Ask(kStatus), kUp);
  EXPECT_TRUE(ServiceLog().at(4).starts_with("ipc write reply failed err=")) << ServiceLog().at(4);
}

TEST_F(Frames, SecondClientGetsInOnlyAfterTheFirstOnesReply) {
  machine.Edit([](standins::MachineState& state) { state.xray.delayMs = 1500; });
  PipeClient first;
  first.Write(Frame(R"({"op":"connect"})"));
  WaitUntil("xray starts", [this] { return machine.Starts("xray.exe") == 1; });
  EXPECT_EQ(TryToConnect(), static_cast<DWORD>(ERROR_PIPE_BUSY));
  EXPECT_EQ(machine.Starts("tun2socks-windows-amd64.exe"), 0U) << "the connect was still going on";
  EXPECT_EQ(first.ReadReply(), kUp);
  EXPECT_EQ(Ask(kStatus), kUp);
}

}  // namespace
}  // namespace e2e
