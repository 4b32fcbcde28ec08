// Locks on a range of a file that is open as a stream.
#include <io.h>
#include <share.h>

#include <cstdio>
#include <string>

#include "tests/contract/world.h"

namespace contract {
namespace {

// What the log's writers take turns with: a lock on a byte far behind the file's end.
class Turn {
 public:
  explicit Turn(const std::wstring& path) : file_(_wfsopen(path.c_str(), L"ab", _SH_DENYNO)) {}
  ~Turn() { Close(); }
  Turn(const Turn&) = delete;
  Turn& operator=(const Turn&) = delete;

  // NO_ERROR or the platform's code.
  DWORD Take() {
    OVERLAPPED place = Place();
    constexpr DWORD kFlags = LOCKFILE_EXCLUSIVE_LOCK | LOCKFILE_FAIL_IMMEDIATELY;
    return LockFileEx(Handle(), kFlags, 0, 1, 0, &place) != FALSE ? NO_ERROR : GetLastError();
  }
  DWORD End() {
    OVERLAPPED place = Place();
    return UnlockFileEx(Handle(), 0, 1, 0, &place) != FALSE ? NO_ERROR : GetLastError();
  }
  bool Write(const std::string& bytes) {
    return std::fwrite(bytes.data(), 1, bytes.size(), file_) == bytes.size() &&
           std::fflush(file_) == 0;
  }
  void Close() {
    if (file_ != nullptr) (void)std::fclose(file_);
    file_ = nullptr;
  }

 private:
  static OVERLAPPED Place() {
    OVERLAPPED place = {};
    place.OffsetHigh = 0x7FFFFFFF;
    return place;
  }
  HANDLE Handle() { return reinterpret_cast<HANDLE>(_get_osfhandle(_fileno(file_))); }

  std::FILE* file_;
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

}  // namespace
}  // namespace contract
