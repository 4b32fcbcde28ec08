// The writing half of frame.h.
#include "src/control/frame.h"
#include "src/control/frame_internal.h"

#include "tests/unit/control/frame_fixture.h"

namespace vpn {
namespace {

using std::string_literals::operator""s;

using unit::Frame;

class WriteExactTest : public unit::FramePipe {};

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
