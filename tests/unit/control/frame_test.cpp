#include "src/control/frame.h"

#include "src/control/frame_internal.h"

#include "tests/unit/control/frame_fixture.h"

namespace vpn {
namespace {

using std::string_literals::operator""s;

using unit::Frame;

class ReadExactTest : public unit::FramePipe {};

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

}  // namespace
}  // namespace vpn
