#include "src/control/frame.h"

#include "tests/sim/pipe_client.h"
#include "tests/unit/product_state.h"

namespace vpn {
namespace {

using std::string_literals::operator""s;

// A connected pipe whose buffers are so large that neither end ever waits for the other.
class FramePipe : public unit::ProductTest {
 protected:
  FramePipe() {
    server = CreateNamedPipeW(L"\\\\.\\pipe\\TavrinService", PIPE_ACCESS_DUPLEX, 0, 8, 1 << 20,
                              1 << 20, 0, nullptr);
    EXPECT_TRUE(client.Connect());
    machine.calls.Clear();
  }
  void TearDown() override {
    (void)CloseHandle(server);
    client.Close();
    ProductTest::TearDown();
  }

  // Hands out one piece in front of each ReadFile, so that every read finds only that.
  void FeedInPieces(std::vector<std::string> pieces) {
    for (size_t i = 0; i < pieces.size(); ++i) {
      machine.faults.Before("ReadFile", i + 1, [this, piece = pieces[i]] { client.Write(piece); });
    }
  }

  // The flush lasts until the client has read what was written.
  void ReadWhenFlushed(size_t count) {
    machine.faults.Before("FlushFileBuffers", 1, [this, count] { received = client.Read(count); });
  }

  HANDLE server;
  sim::PipeClient client{machine};
  std::string text = "before";
  std::string received;
};

class Frame : public FramePipe {};
class ReadExactTest : public FramePipe {};
class WriteExactTest : public FramePipe {};

TEST_F(Frame, LengthIsLittleEndianAndThePayloadIsKeptWhole) {
  client.Write(
      "\x04\x00\x00\x00"
      "a\0\xFF\n"s);
  EXPECT_TRUE(ReadFrame(server, text));
  EXPECT_EQ(text, "a\0\xFF\n"s);
}

TEST_F(Frame, EveryByteOfTheLengthCounts) {
  const std::string payload(0x0102, 'x');
  client.Write("\x02\x01\x00\x00"s + payload);
  EXPECT_TRUE(ReadFrame(server, text));
  EXPECT_EQ(text, payload);
}

TEST_F(Frame, HeaderAndPayloadAreReadByTheirExactSizes) {
  client.Write("\x03\x00\x00\x00xyz"s);
  EXPECT_TRUE(ReadFrame(server, text));
  EXPECT_EQ(machine.calls.TextsOf("ReadFile"), (std::vector<std::string>{"pipe, 4", "pipe, 3"}));
}

TEST_F(Frame, WhatFollowsTheFrameStaysUnread) {
  client.Write("\x01\x00\x00\x00xyz"s);
  EXPECT_TRUE(ReadFrame(server, text));
  EXPECT_EQ(text, "x");
  EXPECT_EQ(machine.calls.Count("ReadFile"), 2u);
}

TEST_F(Frame, LengthBytesThatArriveOneAtATimeAreReadTogether) {
  FeedInPieces({"\x05", "\0"s, "\0"s, "\0"s, "hello"});
  EXPECT_TRUE(ReadFrame(server, text));
  EXPECT_EQ(text, "hello");
  EXPECT_EQ(machine.calls.TextsOf("ReadFile"),
            (std::vector<std::string>{"pipe, 4", "pipe, 3", "pipe, 2", "pipe, 1", "pipe, 5"}));
}

TEST_F(Frame, PayloadSplitOverManyWritesIsReadTogether) {
  FeedInPieces({"\x05\x00\x00\x00"s, "h", "el", "l", "o"});
  EXPECT_TRUE(ReadFrame(server, text));
  EXPECT_EQ(text, "hello");
  EXPECT_EQ(machine.calls.TextsOf("ReadFile"),
            (std::vector<std::string>{"pipe, 4", "pipe, 5", "pipe, 4", "pipe, 2", "pipe, 1"}));
}

TEST_F(Frame, LengthsFrom1To65536AreAccepted) {
  for (const std::uint32_t length : {1u, 2u, 4095u, 4096u, 4097u, 65535u, 65536u}) {
    SCOPED_TRACE(length);
    std::string payload(length, 'x');
    payload.back() = 'z';
    client.Write(sim::FrameHeader(length) + payload);
    EXPECT_TRUE(ReadFrame(server, text));
    EXPECT_EQ(text, payload);
  }
}

TEST_F(Frame, LengthsOf0AndAbove65536AreRefusedWithoutReadingOn) {
  for (const std::string& header :
       {"\x00\x00\x00\x00"s, "\x01\x00\x01\x00"s, "\x00\x00\x02\x00"s, "\x00\x00\x00\x01"s,
        "\xFF\xFF\xFF\xFF"s, "\x00\x00\x00\x80"s}) {
    SCOPED_TRACE(::testing::PrintToString(header));
    machine.calls.Clear();
    client.Write(header);
    EXPECT_FALSE(ReadFrame(server, text));
    EXPECT_EQ(machine.calls.TextsOf("ReadFile"), std::vector<std::string>{"pipe, 4"});
  }
}

TEST_F(Frame, RefusedLengthLeavesTheLastErrorAsItStood) {
  client.Write("\x00\x00\x00\x00"s);
  SetLastError(4711);
  EXPECT_FALSE(ReadFrame(server, text));
  EXPECT_EQ(GetLastError(), 4711u);
}

TEST_F(Frame, NullPipeIsNeitherReadNorWritten) {
  EXPECT_FALSE(ReadFrame(nullptr, text));
  EXPECT_FALSE(WriteFrame(nullptr, "x"));
  EXPECT_EQ(machine.calls.Names(), std::vector<std::string>());
}

TEST_F(Frame, ClientThatLeavesBeforeTheHeaderIsABrokenPipe) {
  client.Close();
  EXPECT_FALSE(ReadFrame(server, text));
  EXPECT_EQ(GetLastError(), 109u);
}

TEST_F(Frame, ClientThatLeavesInsideTheHeaderIsABrokenPipe) {
  client.Write("\x05\x00"s);
  client.Close();
  EXPECT_FALSE(ReadFrame(server, text));
  EXPECT_EQ(GetLastError(), 109u);
}

TEST_F(Frame, ClientThatLeavesInsideThePayloadIsABrokenPipe) {
  client.Write("\x05\x00\x00\x00hel"s);
  client.Close();
  EXPECT_FALSE(ReadFrame(server, text));
  EXPECT_EQ(GetLastError(), 109u);
}

TEST_F(Frame, FailedReadOfThePayloadFailsTheFrame) {
  client.Write("\x05\x00\x00\x00hello"s);
  machine.faults.Fail("ReadFile", {.nth = 2, .code = 1450});
  EXPECT_FALSE(ReadFrame(server, text));
  EXPECT_EQ(GetLastError(), 1450u);
}

TEST_F(Frame, SuccessfulReadOfNoBytesFailsTheFrame) {
  machine.pipes.LimitNextTransfer(0);
  client.Write("\x05\x00\x00\x00hello"s);
  EXPECT_FALSE(ReadFrame(server, text));
  EXPECT_EQ(machine.calls.Count("ReadFile"), 1u);
}

TEST_F(Frame, WrittenFrameIsTheLengthAndThePayload) {
  ReadWhenFlushed(9);
  EXPECT_TRUE(WriteFrame(server, "a\0\xFF\nz"s));
  EXPECT_EQ(received,
            "\x05\x00\x00\x00"
            "a\0\xFF\nz"s);
  EXPECT_EQ(machine.calls.Sequence({"WriteFile", "FlushFileBuffers"}),
            (std::vector<std::string>{"WriteFile pipe, 4", "WriteFile pipe, 5",
                                      "FlushFileBuffers pipe"}));
}

TEST_F(Frame, LengthsUpTo65536AreWritten) {
  const struct {
    size_t length;
    std::string header;
  } rows[] = {{1, "\x01\x00\x00\x00"s},     {255, "\xFF\x00\x00\x00"s},
              {256, "\x00\x01\x00\x00"s},   {4097, "\x01\x10\x00\x00"s},
              {65535, "\xFF\xFF\x00\x00"s}, {65536, "\x00\x00\x01\x00"s}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.length);
    const std::string payload(row.length, 'x');
    ReadWhenFlushed(row.length + 4);
    EXPECT_TRUE(WriteFrame(server, payload));
    EXPECT_EQ(received, row.header + payload);
  }
}

TEST_F(Frame, EmptyTextIsWrittenAsABareLength) {
  ReadWhenFlushed(4);
  EXPECT_TRUE(WriteFrame(server, ""));
  EXPECT_EQ(received, "\x00\x00\x00\x00"s);
}

TEST_F(Frame, TextOf65537BytesIsNotWrittenAndTheLastErrorStays) {
  SetLastError(4711);
  EXPECT_FALSE(WriteFrame(server, std::string(65537, 'x')));
  EXPECT_EQ(GetLastError(), 4711u);
  EXPECT_EQ(machine.calls.Names(), std::vector<std::string>());
}

TEST_F(Frame, FailedWriteOfTheLengthEndsTheFrame) {
  machine.faults.Fail("WriteFile", {.code = 232});
  EXPECT_FALSE(WriteFrame(server, "x"));
  EXPECT_EQ(GetLastError(), 232u);
  EXPECT_EQ(machine.calls.Count("WriteFile"), 1u);
}

TEST_F(Frame, FailedWriteOfThePayloadEndsTheFrameUnflushed) {
  machine.faults.Fail("WriteFile", {.nth = 2, .code = 232});
  EXPECT_FALSE(WriteFrame(server, "x"));
  EXPECT_EQ(GetLastError(), 232u);
  EXPECT_EQ(machine.calls.Count("FlushFileBuffers"), 0u);
}

TEST_F(Frame, ClientThatIsGoneFailsTheWrite) {
  client.Close();
  EXPECT_FALSE(WriteFrame(server, "x"));
  EXPECT_EQ(GetLastError(), 232u);
}

TEST_F(Frame, ResultOfTheFlushIsIgnored) {
  machine.faults.Fail("FlushFileBuffers", {.code = 109});
  EXPECT_TRUE(WriteFrame(server, "x"));
}

TEST_F(Frame, WriteOfNoBytesIsAWriteFaultInTheLengthAndInThePayload) {
  machine.pipes.LimitNextTransfer(0);
  EXPECT_FALSE(WriteFrame(server, "x"));
  EXPECT_EQ(GetLastError(), 29u);
  machine.pipes.LimitNextTransfer(4);
  machine.pipes.LimitNextTransfer(0);
  SetLastError(0);
  EXPECT_FALSE(WriteFrame(server, "x"));
  EXPECT_EQ(GetLastError(), 29u);
}

TEST_F(Frame, LengthAndPayloadThatAreTakenInPartsAreWrittenOn) {
  for (const std::uint32_t part : {1u, 2u, 1u, 3u, 1u}) {
    machine.pipes.LimitNextTransfer(part);
  }
  ReadWhenFlushed(9);
  EXPECT_TRUE(WriteFrame(server, "hello"));
  EXPECT_EQ(received, "\x05\x00\x00\x00hello"s);
  EXPECT_EQ(
      machine.calls.TextsOf("WriteFile"),
      (std::vector<std::string>{"pipe, 4", "pipe, 3", "pipe, 1", "pipe, 5", "pipe, 2", "pipe, 1"}));
}

TEST_F(ReadExactTest, NothingToReadSucceedsAtOnce) {
  EXPECT_TRUE(ReadExact(server, nullptr, 0));
  EXPECT_EQ(machine.calls.Names(), std::vector<std::string>());
}

TEST_F(ReadExactTest, AsksForWhatIsMissing) {
  FeedInPieces({"ab", "c"});
  char buffer[4] = {'-', '-', '-', '-'};
  EXPECT_TRUE(ReadExact(server, buffer, 3));
  EXPECT_EQ(std::string(buffer, 4), "abc-");
  EXPECT_EQ(machine.calls.TextsOf("ReadFile"), (std::vector<std::string>{"pipe, 3", "pipe, 1"}));
}

TEST_F(ReadExactTest, FailureOrNoBytesGiveFalse) {
  char buffer[4];
  machine.faults.Fail("ReadFile");
  EXPECT_FALSE(ReadExact(server, buffer, 3));
  machine.pipes.LimitNextTransfer(0);
  EXPECT_FALSE(ReadExact(server, buffer, 3));
}

TEST_F(WriteExactTest, NothingToWriteSucceedsAtOnce) {
  EXPECT_TRUE(WriteExact(server, "", 0));
  EXPECT_EQ(machine.calls.Names(), std::vector<std::string>());
}

TEST_F(WriteExactTest, NoBytesWrittenSetAWriteFault) {
  machine.pipes.LimitNextTransfer(0);
  EXPECT_FALSE(WriteExact(server, "abc", 3));
  EXPECT_EQ(GetLastError(), 29u);
}

TEST_F(WriteExactTest, FailedWriteKeepsThePlatformsCode) {
  machine.faults.Fail("WriteFile", {.code = 233});
  EXPECT_FALSE(WriteExact(server, "abc", 3));
  EXPECT_EQ(GetLastError(), 233u);
}

}  // namespace
}  // namespace vpn
