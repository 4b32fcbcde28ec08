#include "tests/sim/files.h"

#include <cerrno>
#include <cstdio>
#include <cwchar>
#include <string>
#include <utility>

#include "tests/sim/fixture.h"
#include "tests/sim/path.h"
#include "tests/sim/text.h"

#include <windows.h>
#include <share.h>

namespace sim {
namespace {

TEST(Path, FullPathsAreNormalised) {
  const std::wstring current = L"C:\\work\\here";
  const std::pair<const wchar_t*, const wchar_t*> cases[] = {
      {L"C:\\a\\..\\b", L"C:\\b"},
      {L"C:/a/./b", L"C:\\a\\b"},
      {L"x.txt", L"C:\\work\\here\\x.txt"},
      {L"..\\x", L"C:\\work\\x"},
      {L"\\x", L"C:\\x"},
      {L"C:x", L"C:\\work\\here\\x"},
      {L"D:x", L"D:\\x"},
      {L"C:\\a\\", L"C:\\a\\"},
      {L"C:\\..\\..\\a", L"C:\\a"},
      {L"C:\\", L"C:\\"},
      {L"C:\\a\\\\b", L"C:\\a\\b"},
      {L"C:\\app\\bin\\..\\..\\..\\..\\tools", L"C:\\tools"},
      {L".", L"C:\\work\\here"},
  };
  for (const auto& [path, full] : cases) {
    EXPECT_EQ(FullPath(path, current), full) << "for " << Narrow(path);
  }
}

class FileCalls : public MachineTest {
 protected:
  std::string ReadAll(const wchar_t* path) {
    std::FILE* const file = _wfsopen(path, L"rb", _SH_DENYNO);
    if (file == nullptr) {
      return "(not opened)";
    }
    char buffer[64] = {};
    const size_t count = std::fread(buffer, 1, sizeof buffer, file);
    std::fclose(file);
    return std::string(buffer, count);
  }
};

TEST_F(FileCalls, BytesGoThroughUnchangedInBinaryMode) {
  machine.files.PutDirectory(L"C:\\run");
  std::FILE* const file = _wfsopen(L"C:\\run\\a.txt", L"wb", _SH_DENYNO);
  ASSERT_NE(file, nullptr);
  std::fputs("one\ntwo", file);
  EXPECT_EQ(machine.OpenHandles(), std::vector<std::string>{"stream C:\\run\\a.txt from _wfsopen"});
  std::fclose(file);
  EXPECT_EQ(machine.files.Read(L"C:\\RUN\\A.TXT"), "one\ntwo");
  EXPECT_EQ(ReadAll(L"c:/run/a.txt"), "one\ntwo");
}

TEST_F(FileCalls, AppendingKeepsWhatIsThere) {
  machine.files.Put(L"C:\\run\\log", "old\n");
  std::FILE* const file = _wfsopen(L"C:\\run\\log", L"ab", _SH_DENYNO);
  std::fputs("new\n", file);
  std::fclose(file);
  EXPECT_EQ(machine.files.Read(L"C:\\run\\log"), "old\nnew\n");
}

TEST_F(FileCalls, UnicodeTextModeWritesAMarkOnceAndCarriageReturns) {
  machine.files.PutDirectory(L"C:\\run");
  for (int i = 0; i < 2; ++i) {
    std::FILE* file = nullptr;
    ASSERT_EQ(_wfopen_s(&file, L"C:\\run\\t", L"a, ccs=UTF-8"), 0);
    std::fputws(L"\u4e2d\n", file);
    std::fclose(file);
  }
  EXPECT_EQ(machine.files.Read(L"C:\\run\\t"), "\xEF\xBB\xBF\u4e2d\r\n\u4e2d\r\n");
}

TEST_F(FileCalls, OpeningFailsForMissingPlacesLocksAndDirectories) {
  machine.files.Put(L"C:\\run\\locked");
  machine.files.SetLocked(L"C:\\run\\locked", true);
  machine.files.PutDirectory(L"C:\\fixed");
  machine.files.SetReadOnly(L"C:\\fixed", true);
  const std::pair<const wchar_t*, int> cases[] = {{L"C:\\none\\a", ENOENT},
                                                  {L"C:\\run\\locked", EACCES},
                                                  {L"C:\\run", EACCES},
                                                  {L"C:\\fixed\\new", EACCES}};
  for (const auto& [path, error] : cases) {
    EXPECT_EQ(_wfsopen(path, L"wb", _SH_DENYNO), nullptr);
    EXPECT_EQ(errno, error) << Narrow(path);
  }
}

TEST_F(FileCalls, AStreamThatSharesNothingKeepsOthersOut) {
  machine.files.Put(L"C:\\run\\a");
  std::FILE* first = nullptr;
  ASSERT_EQ(_wfopen_s(&first, L"C:\\run\\a", L"a, ccs=UTF-8"), 0);
  EXPECT_EQ(_wfsopen(L"C:\\run\\a", L"rb", _SH_DENYNO), nullptr);
  EXPECT_EQ(DeleteFileW(L"C:\\run\\a"), FALSE);
  EXPECT_EQ(GetLastError(), 32u);
  std::fclose(first);
  EXPECT_NE(DeleteFileW(L"C:\\run\\a"), FALSE);
}

TEST_F(FileCalls, AttributesTellFilesFromDirectories) {
  machine.files.Put(L"C:\\run\\xray.exe");
  EXPECT_EQ(GetFileAttributesW(L"C:\\run\\XRAY.EXE"), 0x20u);
  EXPECT_EQ(GetFileAttributesW(L"C:\\run"), 0x10u);
  EXPECT_EQ(GetFileAttributesW(L"C:\\run\\no"), 0xFFFFFFFFu);
  EXPECT_EQ(GetLastError(), 2u);
  EXPECT_EQ(GetFileAttributesW(L"C:\\no\\no"), 0xFFFFFFFFu);
  EXPECT_EQ(GetLastError(), 3u);
}

TEST_F(FileCalls, TheFirstMatchIsTheOneThatIsListedFirst) {
  machine.files.Put(L"C:\\run\\tun2socks-z.exe");
  machine.files.Put(L"C:\\run\\tun2socks-a.exe");
  WIN32_FIND_DATAW data = {};
  const HANDLE find = FindFirstFileW(L"C:\\run\\tun2socks*.exe", &data);
  ASSERT_NE(find, INVALID_HANDLE_VALUE);
  EXPECT_EQ(std::wstring(data.cFileName), L"tun2socks-z.exe");
  EXPECT_EQ(machine.OpenHandles(), std::vector<std::string>{"find handle from FindFirstFileW"});
  EXPECT_NE(FindClose(find), FALSE);
}

TEST_F(FileCalls, AValueThatDoesNotFitGivesItsSize) {
  machine.environment.Set(L"NAME", L"12345");
  wchar_t buffer[5] = {};
  EXPECT_EQ(GetEnvironmentVariableW(L"name", buffer, 5), 6u);
  EXPECT_EQ(buffer[0], L'\0');
  machine.environment.Set(L"NAME", L"");
  EXPECT_EQ(GetEnvironmentVariableW(L"NAME", buffer, 5), 0u);
  machine.environment.Unset(L"NAME");
  EXPECT_EQ(GetEnvironmentVariableW(L"NAME", buffer, 5), 0u);
  EXPECT_EQ(GetLastError(), 203u);
}

TEST_F(FileCalls, TheConsoleLosesWideTextUntilItIsPutIntoUtf8Mode) {
  std::fputws(L"a\u4e2db", stdout);
  (void)_setmode(_fileno(stdout), _O_U8TEXT);
  std::fputws(L"\u4e2d\n", stdout);
  std::fflush(stdout);
  EXPECT_EQ(machine.console.Output(), "a\u4e2d\n");
}

TEST_F(FileCalls, NarrowTextOnAWideStreamIsAViolation) {
  machine.files.PutDirectory(L"C:\\run");
  std::FILE* file = nullptr;
  ASSERT_EQ(_wfopen_s(&file, L"C:\\run\\t", L"a, ccs=UTF-8"), 0);
  std::fputs("narrow", file);
  std::fclose(file);
  EXPECT_EQ(machine.Violations(),
            std::vector<std::string>{"narrow text written to a stream that takes wide text"});
  machine.ForgetViolations();
}

TEST_F(FileCalls, AMoveTakesAnothersPlaceWhenItMay) {
  machine.files.Put(L"C:\\run\\a", "new");
  machine.files.Put(L"C:\\run\\b", "old");
  EXPECT_EQ(MoveFileExW(L"C:\\run\\a", L"C:\\run\\b", 0), FALSE);
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_ALREADY_EXISTS));
  EXPECT_NE(MoveFileExW(L"C:\\run\\a", L"C:\\run\\b", MOVEFILE_REPLACE_EXISTING), FALSE);
  EXPECT_EQ(machine.files.Read(L"C:\\run\\b"), "new");
  EXPECT_FALSE(machine.files.Exists(L"C:\\run\\a"));
}

TEST_F(FileCalls, AMoveThatCantBeDoneSaysWhy) {
  machine.files.Put(L"C:\\run\\a");
  machine.files.PutDirectory(L"C:\\run\\d");
  const std::pair<const wchar_t*, DWORD> cases[] = {{L"C:\\run\\d", ERROR_ACCESS_DENIED},
                                                    {L"C:\\gone\\b", ERROR_PATH_NOT_FOUND}};
  for (const auto& [to, error] : cases) {
    EXPECT_EQ(MoveFileExW(L"C:\\run\\a", to, MOVEFILE_REPLACE_EXISTING), FALSE);
    EXPECT_EQ(GetLastError(), error);
  }
  EXPECT_EQ(MoveFileExW(L"C:\\run\\gone", L"C:\\run\\b", 0), FALSE);
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_FILE_NOT_FOUND));
  std::FILE* const file = _wfsopen(L"C:\\run\\a", L"rb", _SH_DENYNO);
  EXPECT_EQ(MoveFileExW(L"C:\\run\\a", L"C:\\run\\b", 0), FALSE);
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_SHARING_VIOLATION));
  std::fclose(file);
}

TEST_F(FileCalls, AFileMayBeDeniedOrGiveNothing) {
  machine.files.Put(L"C:\\run\\a", "text");
  machine.files.SetDenied(L"C:\\run\\a", true);
  WIN32_FILE_ATTRIBUTE_DATA data = {};
  EXPECT_EQ(GetFileAttributesExW(L"C:\\run\\a", GetFileExInfoStandard, &data), FALSE);
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_ACCESS_DENIED));
  EXPECT_EQ(GetFileAttributesW(L"C:\\run\\a"), INVALID_FILE_ATTRIBUTES);
  EXPECT_EQ(ReadAll(L"C:\\run\\a"), "(not opened)");
  machine.files.SetDenied(L"C:\\run\\a", false);
  machine.files.Find(L"C:\\run\\a")->readsFail = true;
  EXPECT_EQ(ReadAll(L"C:\\run\\a"), "");
}

TEST_F(FileCalls, AFullDiskLosesWhatIsWritten) {
  machine.files.PutDirectory(L"C:\\run");
  machine.files.isDiskFull = true;
  std::FILE* const file = _wfsopen(L"C:\\run\\a", L"wb", _SH_DENYNO);
  EXPECT_EQ(std::fwrite("text", 1, 4, file), 0u);
  std::fclose(file);
  EXPECT_EQ(machine.files.Read(L"C:\\run\\a"), "");
  EXPECT_EQ(machine.files.Find(L"C:\\run\\a")->changes, 1);
}

}  // namespace
}  // namespace sim
