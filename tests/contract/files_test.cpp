// Paths, files, streams.
#include <share.h>

#include <cerrno>
#include <cstdio>
#include <string>
#include <utility>

#include "tests/contract/world.h"

namespace contract {
namespace {

using Path = ContractTest;

std::wstring FullPath(const std::wstring& path) {
  wchar_t buffer[260] = {};
  const DWORD length = GetFullPathNameW(path.c_str(), 260, buffer, nullptr);
  EXPECT_EQ(length, std::wstring(buffer).size());
  return buffer;
}

TEST_F(Path, FullPathsAreNormalised) {
  const std::pair<const wchar_t*, const wchar_t*> cases[] = {
      {L"C:\\a\\..\\b", L"C:\\b"},
      {L"C:/a/./b", L"C:\\a\\b"},
      {L"C:\\a\\", L"C:\\a\\"},
      {L"C:\\..\\..\\a", L"C:\\a"},
      {L"C:\\", L"C:\\"},
      {L"C:\\a\\\\b", L"C:\\a\\b"},
      {L"C:\\a\\.", L"C:\\a"},
      {L"C:\\a\\..", L"C:\\"},
      {L"C:\\a\\b.", L"C:\\a\\b"},
      {L"C:\\a\\b ", L"C:\\a\\b"},
      {L"C:\\app\\x\\bin\\..\\..\\..\\..\\tools\\phase-b", L"C:\\tools\\phase-b"},
  };
  for (const auto& [path, full] : cases) {
    EXPECT_EQ(FullPath(path), full);
  }
}

TEST_F(Path, RelativeOnesStartFromTheCurrentDirectory) {
  EXPECT_NE(SetCurrentDirectoryW(world.directory().c_str()), FALSE);
  EXPECT_EQ(FullPath(L"x\\y"), world.directory() + L"\\x\\y");
  EXPECT_EQ(FullPath(L"."), world.directory());
  EXPECT_EQ(FullPath(L"\\x"), world.directory().substr(0, 2) + L"\\x");
}

TEST_F(Path, AShortBufferGivesTheSizeAndAnEmptyNameNothing) {
  wchar_t buffer[4] = {};
  EXPECT_EQ(GetFullPathNameW(L"C:\\abc", 4, buffer, nullptr), 7u);
  EXPECT_EQ(GetFullPathNameW(L"", 4, buffer, nullptr), 0u);
}

using File = ContractTest;

TEST_F(File, AttributesTellFilesFromDirectoriesAndWhyNot) {
  const std::wstring path = Put(L"a.exe");
  const DWORD attributes = GetFileAttributesW(path.c_str());
  EXPECT_NE(attributes, INVALID_FILE_ATTRIBUTES);
  EXPECT_EQ(attributes & FILE_ATTRIBUTE_DIRECTORY, 0u);
  EXPECT_NE(GetFileAttributesW((world.directory() + L"\\A.EXE").c_str()), INVALID_FILE_ATTRIBUTES);
  EXPECT_EQ(GetFileAttributesW(world.directory().c_str()) & FILE_ATTRIBUTE_DIRECTORY, 16u);
  EXPECT_EQ(GetFileAttributesW((world.directory() + L"\\none").c_str()), INVALID_FILE_ATTRIBUTES);
  EXPECT_EQ(GetLastError(), 2u);
  EXPECT_EQ(GetFileAttributesW((world.directory() + L"\\no\\ne").c_str()), INVALID_FILE_ATTRIBUTES);
  EXPECT_EQ(GetLastError(), 3u);
}

TEST_F(File, APatternFindsANameWithoutRegardToCase) {
  Put(L"Tun2Socks-windows.exe");
  Put(L"other.exe");
  WIN32_FIND_DATAW data = {};
  const HANDLE find = FindFirstFileW((world.directory() + L"\\tun2socks*.exe").c_str(), &data);
  ASSERT_NE(find, INVALID_HANDLE_VALUE);
  EXPECT_EQ(std::wstring(data.cFileName), L"Tun2Socks-windows.exe");
  EXPECT_NE(FindClose(find), FALSE);
  EXPECT_EQ(FindFirstFileW((world.directory() + L"\\none*").c_str(), &data), INVALID_HANDLE_VALUE);
  EXPECT_EQ(GetLastError(), 2u);
  EXPECT_EQ(FindFirstFileW((world.directory() + L"\\no\\x*").c_str(), &data), INVALID_HANDLE_VALUE);
  EXPECT_EQ(GetLastError(), 3u);
}

TEST_F(File, DeletionTakesFilesThatNobodyHasOpen) {
  const std::wstring path = Put(L"a");
  std::FILE* const open = _wfsopen(path.c_str(), L"rb", _SH_DENYNO);
  EXPECT_EQ(DeleteFileW(path.c_str()), FALSE);
  EXPECT_EQ(GetLastError(), 32u);
  std::fclose(open);
  EXPECT_NE(DeleteFileW(path.c_str()), FALSE);
  EXPECT_EQ(DeleteFileW(path.c_str()), FALSE);
  EXPECT_EQ(GetLastError(), 2u);
  EXPECT_EQ(DeleteFileW(world.directory().c_str()), FALSE);
  EXPECT_EQ(GetLastError(), 5u);
}

void Fill(const std::wstring& path, const char* text) {
  std::FILE* const file = _wfsopen(path.c_str(), L"wb", _SH_DENYNO);
  ASSERT_NE(file, nullptr);
  std::fputs(text, file);
  std::fclose(file);
}

TEST_F(File, ARenameReplacesWhatNobodyHasOpen) {
  const std::wstring from = world.directory() + L"\\from";
  const std::wstring to = world.directory() + L"\\to";
  EXPECT_EQ(MoveFileExW(from.c_str(), to.c_str(), MOVEFILE_REPLACE_EXISTING), FALSE);
  EXPECT_EQ(GetLastError(), DWORD{ERROR_FILE_NOT_FOUND});
  Fill(from, "new");
  Fill(to, "old");
  EXPECT_EQ(MoveFileExW(from.c_str(), to.c_str(), 0), FALSE);
  EXPECT_EQ(GetLastError(), DWORD{ERROR_ALREADY_EXISTS});
  std::FILE* reader = _wfsopen(to.c_str(), L"rb", _SH_DENYNO);
  ASSERT_NE(reader, nullptr);
  EXPECT_EQ(MoveFileExW(from.c_str(), to.c_str(), MOVEFILE_REPLACE_EXISTING), FALSE);
  EXPECT_EQ(GetLastError(), DWORD{ERROR_ACCESS_DENIED});
  std::fclose(reader);
  EXPECT_NE(
      MoveFileExW(from.c_str(), to.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH),
      FALSE);
  char text[8] = {};
  reader = _wfsopen(to.c_str(), L"rb", _SH_DENYNO);
  EXPECT_EQ(std::fread(text, 1, sizeof text, reader), 3u);
  std::fclose(reader);
  EXPECT_STREQ(text, "new");
  EXPECT_EQ(GetFileAttributesW(from.c_str()), INVALID_FILE_ATTRIBUTES);
}

TEST_F(File, TheCurrentDirectoryHasToBeOne) {
  const std::wstring path = Put(L"a");
  EXPECT_EQ(SetCurrentDirectoryW((world.directory() + L"\\none").c_str()), FALSE);
  EXPECT_EQ(GetLastError(), 2u);
  EXPECT_EQ(SetCurrentDirectoryW(path.c_str()), FALSE);
  EXPECT_EQ(GetLastError(), 267u);
}

using Stream = ContractTest;

TEST_F(Stream, BinaryModesTruncateOrAppendAndChangeNoByte) {
  const std::wstring path = Put(L"a", "one\ntwo\r\n");
  EXPECT_EQ(Bytes(path), "one\ntwo\r\n");
  std::FILE* file = _wfsopen(path.c_str(), L"ab", _SH_DENYNO);
  ASSERT_NE(file, nullptr);
  std::fwrite("x\n", 1, 2, file);
  std::fclose(file);
  EXPECT_EQ(Bytes(path), "one\ntwo\r\nx\n");
  file = _wfsopen(path.c_str(), L"wb", _SH_DENYNO);
  ASSERT_NE(file, nullptr);
  std::fclose(file);
  EXPECT_EQ(Bytes(path), "");
}

TEST_F(Stream, SharedStreamsCanBeReadWhileTheyAreWritten) {
  const std::wstring path = world.directory() + L"\\log";
  std::FILE* const first = _wfsopen(path.c_str(), L"ab", _SH_DENYNO);
  std::FILE* const second = _wfsopen(path.c_str(), L"ab", _SH_DENYNO);
  ASSERT_NE(first, nullptr);
  ASSERT_NE(second, nullptr);
  std::fwrite("a", 1, 1, first);
  std::fflush(first);
  std::fwrite("b", 1, 1, second);
  std::fflush(second);
  EXPECT_EQ(Bytes(path), "ab");
  std::fclose(first);
  std::fclose(second);
}

TEST_F(Stream, UnicodeTextGetsAMarkInANewFileAndCarriageReturns) {
  const std::wstring path = world.directory() + L"\\trace";
  for (int i = 0; i < 2; ++i) {
    std::FILE* file = nullptr;
    ASSERT_EQ(_wfopen_s(&file, path.c_str(), L"a, ccs=UTF-8"), 0);
    ASSERT_NE(file, nullptr);
    std::fputws(L"x\u4e2d\n", file);
    std::fclose(file);
  }
  EXPECT_EQ(Bytes(path), "\xEF\xBB\xBFx\xE4\xB8\xAD\r\nx\xE4\xB8\xAD\r\n");
}

TEST_F(Stream, OpeningFailsWithTheRuntimesCodes) {
  std::FILE* file = nullptr;
  EXPECT_EQ(_wfopen_s(&file, (world.directory() + L"\\no\\x").c_str(), L"a, ccs=UTF-8"), ENOENT);
  EXPECT_EQ(file, nullptr);
  EXPECT_EQ(_wfsopen((world.directory() + L"\\none").c_str(), L"rb", _SH_DENYNO), nullptr);
  EXPECT_EQ(errno, ENOENT);
  EXPECT_EQ(_wfsopen(world.directory().c_str(), L"wb", _SH_DENYNO), nullptr);
  EXPECT_EQ(errno, EACCES);
}

TEST_F(Stream, AMoveTakesAnothersPlaceWhenItMay) {
  const std::wstring from = Put(L"new", "new");
  const std::wstring to = Put(L"old", "old and longer");
  EXPECT_EQ(MoveFileExW(from.c_str(), to.c_str(), 0), FALSE);
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_ALREADY_EXISTS));
  EXPECT_NE(MoveFileExW(from.c_str(), to.c_str(), MOVEFILE_REPLACE_EXISTING), FALSE);
  EXPECT_EQ(GetFileAttributesW(from.c_str()), INVALID_FILE_ATTRIBUTES);
  EXPECT_EQ(Bytes(to), "new");
}

TEST_F(Stream, AMoveOntoADirectoryIsRefused) {
  const std::wstring from = Put(L"new");
  MakeDirectory(world.directory() + L"\\there");
  EXPECT_EQ(MoveFileExW(from.c_str(), (world.directory() + L"\\there").c_str(),
                        MOVEFILE_REPLACE_EXISTING),
            FALSE);
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_ACCESS_DENIED));
}

}  // namespace
}  // namespace contract
