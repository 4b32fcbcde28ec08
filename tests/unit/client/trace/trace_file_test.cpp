#include "client/trace/trace_file.h"

#include "client/trace/trace_watch.h"
#include "tests/unit/client/client_test.h"

namespace vpn {
namespace {

class TraceFileTest : public unit::ClientTest {};

TEST_F(TraceFileTest, StandsBesideTheServiceOrWhereTheEnvironmentSays) {
  EXPECT_EQ(TracePath(L"C:\\Program Files\\Tavrin"),
            L"C:\\Program Files\\Tavrin\\connect-timing.log");
  machine.environment.Set(L"TAVRIN_TIMING", L"D:\\trace.txt");
  EXPECT_EQ(TracePath(L"C:\\Program Files\\Tavrin"), L"D:\\trace.txt");
}

TEST_F(TraceFileTest, ASmallFileIsReadWhole) {
  machine.files.Put(unit::kTrace, "one\ntwo\n");
  FileTail tail;
  ASSERT_TRUE(ReadFileTail(unit::kTrace, 100, tail));
  EXPECT_EQ(tail.text, "one\ntwo\n");
  EXPECT_FALSE(tail.isCut);
}

TEST_F(TraceFileTest, OfALargeFileOnlyWholeLinesOfTheEndAreRead) {
  machine.files.Put(unit::kTrace, std::string(100 << 20, 'x') + "\nlast but one\nlast\n");
  FileTail tail;
  ASSERT_TRUE(ReadFileTail(unit::kTrace, 12, tail));
  EXPECT_EQ(tail.text, "last\n");
  EXPECT_TRUE(tail.isCut);
  EXPECT_EQ(machine.files.BytesRead(unit::kTrace), 12u);
}

TEST_F(TraceFileTest, TheEndOfWhatWasAppendedIsRead) {
  machine.files.Put(unit::kTrace, "before\n" + std::string(100, 'x') + "\nlast\n");
  std::string text;
  ASSERT_TRUE(ReadFileEnd(unit::kTrace, 7, 200, text));
  EXPECT_EQ(text, std::string(100, 'x') + "\nlast\n") << "nothing of before";
  ASSERT_TRUE(ReadFileEnd(unit::kTrace, 7, 6, text));
  EXPECT_EQ(text, "\nlast\n") << "no more than the limit";
  ASSERT_TRUE(ReadFileEnd(unit::kTrace, 1000, 200, text));
  EXPECT_EQ(text.size(), 113u) << "a file that was made anew is read from its start";
  ASSERT_TRUE(ReadFileEnd(unit::kTrace, 113, 200, text));
  EXPECT_EQ(text, "");
  EXPECT_FALSE(ReadFileEnd(L"C:\\missing.log", 0, 200, text));
}

TEST_F(TraceFileTest, TheLastWriteIsTold) {
  FILETIME moment = {};
  EXPECT_FALSE(LastWrite(unit::kTrace, moment));
  machine.files.Put(unit::kTrace);
  machine.files.SetLastWrite(unit::kTrace, 1'000'000'000'000);
  ASSERT_TRUE(LastWrite(unit::kTrace, moment));
  EXPECT_EQ(moment.dwHighDateTime, 29'440'209u);
}

TEST_F(TraceFileTest, AnEndWithoutALineFeedGivesNothing) {
  machine.files.Put(unit::kTrace, std::string(1000, 'x'));
  FileTail tail;
  ASSERT_TRUE(ReadFileTail(unit::kTrace, 100, tail));
  EXPECT_EQ(tail.text, "");
}

TEST_F(TraceFileTest, WhatIsMissingLockedOrADirectoryCantBeRead) {
  FileTail tail;
  EXPECT_FALSE(ReadFileTail(unit::kTrace, 100, tail));
  machine.files.Put(unit::kTrace, "line\n");
  machine.files.SetLocked(unit::kTrace, true);
  EXPECT_FALSE(ReadFileTail(unit::kTrace, 100, tail));
  machine.files.PutDirectory(L"C:\\directory");
  EXPECT_FALSE(ReadFileTail(L"C:\\directory", 100, tail));
}

TEST_F(TraceFileTest, AWatchSeesOnlyWhatIsNew) {
  machine.files.Put(unit::kTrace, unit::RecordedConnect());
  TraceWatch watch(unit::kTrace);
  watch.begin();
  EXPECT_EQ(watch.connect(), nullptr);
  machine.files.Put(unit::kTrace, unit::RecordedConnect() + unit::RecordedLines(3));
  for (int at = 0; at < 5; ++at) {
    watch.look(10 + static_cast<std::uint64_t>(at));
    EXPECT_EQ(watch.connect(), nullptr) << "read while it may still grow, at look " << at;
  }
  watch.look(0);
  ASSERT_NE(watch.connect(), nullptr);
  EXPECT_EQ(watch.connect()->marks.size(), 3u);
  EXPECT_EQ(watch.grownAt(), 10u) << "and not when it was read";
}

TEST_F(TraceFileTest, AWatchOpensTheFileOnlyAfterItHasGrown) {
  machine.files.Put(unit::kTrace, unit::RecordedConnect());
  TraceWatch watch(unit::kTrace);
  watch.begin();
  for (int at = 0; at < 10; ++at) {
    watch.look(0);
  }
  EXPECT_EQ(machine.calls.Count("_wfsopen"), 0u);
}

TEST_F(TraceFileTest, AFileThatGoesOnGrowingIsNotOpened) {
  TraceWatch watch(unit::kTrace);
  watch.begin();
  for (size_t lines = 1; lines <= 13; ++lines) {
    machine.files.Put(unit::kTrace, unit::RecordedLines(lines));
    for (int at = 0; at < 5; ++at) {
      watch.look(0);
    }
  }
  EXPECT_EQ(machine.calls.Count("_wfsopen"), 0u);
  watch.look(0);
  EXPECT_EQ(machine.calls.Count("_wfsopen"), 1u);
  watch.look(0);
  EXPECT_EQ(machine.calls.Count("_wfsopen"), 1u) << "it has not grown since";
}

TEST_F(TraceFileTest, AFileThatIsMadeAnewIsReadFromItsStart) {
  machine.files.Put(unit::kTrace, unit::RecordedConnect());
  TraceWatch watch(unit::kTrace);
  watch.begin();
  machine.files.Put(unit::kTrace, unit::RecordedLines(2));
  watch.readNow();
  ASSERT_NE(watch.connect(), nullptr);
  EXPECT_EQ(watch.connect()->marks.size(), 2u);
}

TEST_F(TraceFileTest, AWatchOfNoFileSeesNothing) {
  TraceWatch watch(unit::kTrace);
  watch.begin();
  watch.look(0);
  watch.readNow();
  EXPECT_EQ(watch.connect(), nullptr);
}

}  // namespace
}  // namespace vpn
