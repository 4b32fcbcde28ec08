// Locks on a range of a file, and writes at its end.
#include <set>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "tests/contract/world.h"

namespace contract {
namespace {

// What the log's writers take turns with: a lock on a byte far behind the file's end.
class Turn {
 public:
  explicit Turn(const std::wstring& path)
      : file_(CreateFileW(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                          OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr)) {}
  ~Turn() { Close(); }
  Turn(const Turn&) = delete;
  Turn& operator=(const Turn&) = delete;

  // NO_ERROR or the platform's code.
  DWORD Take() {
    OVERLAPPED place = Place();
    constexpr DWORD kFlags = LOCKFILE_EXCLUSIVE_LOCK | LOCKFILE_FAIL_IMMEDIATELY;
    return LockFileEx(file_, kFlags, 0, 1, 0, &place) != FALSE ? NO_ERROR : GetLastError();
  }
  DWORD End() {
    OVERLAPPED place = Place();
    return UnlockFileEx(file_, 0, 1, 0, &place) != FALSE ? NO_ERROR : GetLastError();
  }
  bool Write(const std::string& bytes) {
    OVERLAPPED end = {};
    end.Offset = 0xFFFFFFFF;
    end.OffsetHigh = 0xFFFFFFFF;
    DWORD written = 0;
    return WriteFile(file_, bytes.data(), static_cast<DWORD>(bytes.size()), &written, &end) !=
               FALSE &&
           written == bytes.size();
  }
  void Close() {
    if (file_ != INVALID_HANDLE_VALUE) CloseHandle(file_);
    file_ = INVALID_HANDLE_VALUE;
  }

 private:
  static OVERLAPPED Place() {
    OVERLAPPED place = {};
    place.OffsetHigh = 0x7FFFFFFF;
    return place;
  }

  HANDLE file_;
};

using FileLock = ContractTest;

TEST_F(FileLock, ALockedByteBehindTheEndKeepsOnlyItsNextTakerAway) {
  const std::wstring path = Put(L"log");
  Turn first(path);
  Turn second(path);
  EXPECT_EQ(first.Take(), 0u);
  EXPECT_EQ(second.Take(), 33u);   // ERROR_LOCK_VIOLATION
  EXPECT_TRUE(second.Write("x"));  // the lock says nothing about the bytes
  EXPECT_EQ(first.End(), 0u);
  EXPECT_EQ(second.Take(), 0u);
}

TEST_F(FileLock, AnUnlockedByteIsNotUnlockedAgain) {
  Turn turn(Put(L"log"));
  EXPECT_EQ(turn.End(), IsWine() ? 33u : 158u);  // ERROR_NOT_LOCKED, which Wine does not know
}

TEST_F(FileLock, ClosingAFileEndsItsLock) {
  const std::wstring path = Put(L"log");
  Turn first(path);
  Turn second(path);
  EXPECT_EQ(first.Take(), 0u);
  first.Close();
  EXPECT_EQ(second.Take(), 0u);
}

using FileEnd = ContractTest;

TEST_F(FileEnd, AWriteThereFindsWhatOthersHaveWrittenMeanwhile) {
  const std::wstring path = Put(L"log", "old\n");
  Turn first(path);
  Turn second(path);
  EXPECT_TRUE(first.Write("one\n"));
  EXPECT_TRUE(second.Write("two\n"));
  EXPECT_TRUE(first.Write("three\n"));
  EXPECT_EQ(Bytes(path), "old\none\ntwo\nthree\n");
}

constexpr int kWriters = 8;
constexpr int kLinesEach = 150;

std::string LineOf(int writer, int line) {
  std::string text = std::to_string(writer) + "." + std::to_string(line) + ".";
  text.resize(20 + static_cast<size_t>(line * 131 % 1980), static_cast<char>('a' + writer));
  return text;
}

// Each line with a handle of its own, as processes have them: locks are a handle's.
void WriteLinesInTurns(const std::wstring& path, int writer) {
  for (int line = 0; line < kLinesEach; ++line) {
    Turn turn(path);
    while (turn.Take() != NO_ERROR) {
      Sleep(1);
    }
    (void)turn.Write(LineOf(writer, line) + "\n");
    (void)turn.End();
  }
}

TEST_F(FileEnd, LinesThatAreWrittenThereInTurnsStayWhole) {
  const std::wstring path = Put(L"log");
  std::vector<std::thread> writers;
  std::multiset<std::string> written;
  for (int writer = 0; writer < kWriters; ++writer) {
    writers.emplace_back(WriteLinesInTurns, path, writer);
    for (int line = 0; line < kLinesEach; ++line) {
      written.insert(LineOf(writer, line));
    }
  }
  for (std::thread& writer : writers) {
    writer.join();
  }
  std::istringstream log(Bytes(path));
  std::multiset<std::string> found;
  for (std::string line; std::getline(log, line);) {
    found.insert(line);
  }
  EXPECT_EQ(found.size(), static_cast<size_t>(kWriters * kLinesEach));
  EXPECT_TRUE(found == written) << "lines are torn or lost";
}

TEST_F(FileEnd, OpeningTellsAFileThatWasThereFromANewOne) {
  const std::wstring path = world.directory() + L"\\new";
  SetLastError(77);
  Turn(path).Close();
  EXPECT_EQ(GetLastError(), 0u);
  Turn(path).Close();
  EXPECT_EQ(GetLastError(), 183u);  // ERROR_ALREADY_EXISTS
  Turn(world.directory() + L"\\no\\x").Close();
  EXPECT_EQ(GetLastError(), 3u);
  Turn(world.directory()).Close();
  EXPECT_EQ(GetLastError(), 5u);
}

}  // namespace
}  // namespace contract
