#include "src/runtime/service_log.h"

#include <windows.h>
#include <share.h>

#include <algorithm>
#include <chrono>
#include <sstream>
#include <thread>

#include "src/runtime/console_text.h"
#include "src/runtime/process_state.h"
#include "tests/unit/product_state.h"

namespace vpn {
namespace {

using std::string_literals::operator""s;

class ServiceLog : public unit::ProductTest {
 protected:
  ServiceLog() {
    machine.files.PutDirectory(L"C:\\run");
    SetRuntimeDir(L"C:\\run");
    UseUtf8Console();
  }
  std::string Log() { return machine.files.Read(L"C:\\run\\tavrin-service.log").value_or("none"); }
};

TEST_F(ServiceLog, LineIsTheMessageAndOneLineFeed) {
  WriteLog(L"daemon stopped");
  EXPECT_EQ(Log(), "daemon stopped\n");
}

TEST_F(ServiceLog, LinesAreAppendedInOrder) {
  WriteLog(L"one");
  WriteLog(L"two");
  EXPECT_EQ(Log(), "one\ntwo\n");
}

TEST_F(ServiceLog, LinesOfEarlierRunsStay) {
  machine.files.Put(L"C:\\run\\tavrin-service.log", "old line\n");
  WriteLog(L"new");
  EXPECT_EQ(Log(), "old line\nnew\n");
}

TEST_F(ServiceLog, TextOutsideAsciiIsUtf8WithoutAByteOrderMark) {
  WriteLog(L"ipc error=请先在Tavrin登录");
  EXPECT_EQ(Log(),
            "ipc error=\xE8\xAF\xB7\xE5\x85\x88\xE5\x9C\xA8Tavrin\xE7\x99\xBB\xE5\xBD\x95\n");
}

TEST_F(ServiceLog, FileIsSharedWithEverybodyAndMadeWhenItIsMissing) {
  WriteLog(L"one");
  WriteLog(L"two");
  EXPECT_EQ(machine.calls.TextsOf("CreateFileW"),
            (std::vector<std::string>{R"("C:\run\tavrin-service.log", 0x40000000, 3, 4, 0x80)",
                                      R"("C:\run\tavrin-service.log", 0x40000000, 3, 4, 0x80)"}));
}

TEST_F(ServiceLog, LongLineIsOneWriteToo) {
  WriteLog(std::wstring(20000, L'a'));
  EXPECT_EQ(machine.calls.Count("WriteFile"), 1u);
  EXPECT_EQ(Log(), std::string(20000, 'a') + '\n');
}

TEST_F(ServiceLog, NoStreamStaysOpenBetweenLines) {
  WriteLog(L"one");
  EXPECT_EQ(machine.OpenHandles(), std::vector<std::string>());
}

TEST_F(ServiceLog, LineFeedsInsideAMessageStandAsTheyAre) {
  WriteLog(L"a\nb\r\nc");
  EXPECT_EQ(Log(), "a\nb\r\nc\n");
}

TEST_F(ServiceLog, PathIsFormedAnewForEveryLine) {
  WriteLog(L"one");
  machine.files.PutDirectory(L"C:\\other");
  SetRuntimeDir(L"C:\\other");
  WriteLog(L"two");
  EXPECT_EQ(Log(), "one\n");
  EXPECT_EQ(machine.files.Read(L"C:\\other\\tavrin-service.log"), "two\n");
}

TEST_F(ServiceLog, EmptyMessageWritesNothingToTheFile) {
  WriteLog(L"one");
  WriteLog(L"");
  WriteLog(L"two");
  EXPECT_EQ(Log(), "one\ntwo\n");
}

TEST_F(ServiceLog, EmptyMessageEchoesAnEmptyLine) {
  g_consoleEcho = 1;
  WriteLog(L"");
  EXPECT_EQ(machine.console.Output(), "\n");
  EXPECT_EQ(Log(), "");
}

TEST_F(ServiceLog, LineInTheFileEndsAtTheFirstNul) {
  WriteLog(L"a\0b"s);
  WriteLog(L"\0hidden"s);
  EXPECT_EQ(Log(), "a\n");
}

TEST_F(ServiceLog, EchoIsOffByDefault) {
  WriteLog(L"one");
  EXPECT_EQ(machine.console.Output(), "");
}

TEST_F(ServiceLog, EchoRepeatsEveryLineOnTheOutputStream) {
  g_consoleEcho = 1;
  WriteLog(L"one");
  WriteLog(L"二");
  EXPECT_EQ(machine.console.Output(), "one\n二\n");
  EXPECT_EQ(machine.console.Errors(), "");
  EXPECT_EQ(Log(), "one\n二\n");
}

TEST_F(ServiceLog, MissingDirectoryLosesTheLineButNotTheEcho) {
  g_consoleEcho = 1;
  SetRuntimeDir(L"C:\\none");
  WriteLog(L"one");
  EXPECT_EQ(machine.console.Output(), "one\n");
  EXPECT_FALSE(machine.files.Exists(L"C:\\none"));
}

TEST_F(ServiceLog, LockedFileLosesTheLineAndTheNextOneIsWrittenAgain) {
  machine.files.Put(L"C:\\run\\tavrin-service.log", "old\n");
  machine.files.SetLocked(L"C:\\run\\tavrin-service.log", true);
  WriteLog(L"lost");
  machine.files.SetLocked(L"C:\\run\\tavrin-service.log", false);
  WriteLog(L"kept");
  EXPECT_EQ(Log(), "old\nkept\n");
}

TEST_F(ServiceLog, FullDiskIsNotReported) {
  machine.files.Put(L"C:\\run\\tavrin-service.log", "old\n");
  machine.files.SetWritesFail(L"C:\\run\\tavrin-service.log", true);
  WriteLog(L"lost");
  EXPECT_EQ(Log(), "old\n");
}

TEST_F(ServiceLog, FailedConversionLosesTheLine) {
  machine.faults.Fail("WideCharToMultiByte");
  WriteLog(L"lost");
  WriteLog(L"kept");
  EXPECT_EQ(Log(), "kept\n");
}

TEST_F(ServiceLog, FileCanBeReadAndAppendedToByOthersMeanwhile) {
  WriteLog(L"one");
  std::FILE* const reader = _wfsopen(L"C:\\run\\tavrin-service.log", L"rb", _SH_DENYNO);
  std::FILE* const writer = _wfsopen(L"C:\\run\\tavrin-service.log", L"ab", _SH_DENYNO);
  WriteLog(L"two");
  (void)std::fputs("other process\n", writer);
  (void)std::fclose(writer);
  (void)std::fclose(reader);
  WriteLog(L"three");
  EXPECT_EQ(Log(), "one\ntwo\nother process\nthree\n");
}

// Two processes append to one file, and not everywhere is an append a single step.
TEST_F(ServiceLog, LineIsWrittenInATurnOnAByteThatNoReaderMeets) {
  std::string inTurn = "not seen";
  machine.faults.Before("UnlockFileEx", 1, [&] { inTurn = Log(); });
  machine.calls.Clear();
  WriteLog(L"one");
  EXPECT_EQ(machine.calls.Names(),
            (std::vector<std::string>{"CreateFileW", "WideCharToMultiByte", "WideCharToMultiByte",
                                      "LockFileEx", "WriteFile", "UnlockFileEx", "CloseHandle"}));
  EXPECT_EQ(
      machine.calls.Sequence({"LockFileEx", "UnlockFileEx"}),
      (std::vector<std::string>{"LockFileEx 3, 1, 0x7FFFFFFF", "UnlockFileEx 1, 0x7FFFFFFF"}));
  EXPECT_EQ(inTurn, "one\n");
}

TEST_F(ServiceLog, EmptyMessageTakesNoTurn) {
  WriteLog(L"");
  EXPECT_EQ(machine.calls.Count("LockFileEx"), 0u);
}

TEST_F(ServiceLog, LineWaitsForTheTurnOfAnotherProcess) {
  machine.files.Put(L"C:\\run\\tavrin-service.log", "half a ");
  machine.files.SetRangeLocked(L"C:\\run\\tavrin-service.log", true);
  machine.clock.After(30, [&] {
    machine.files.Put(L"C:\\run\\tavrin-service.log", "half a line\n");
    machine.files.SetRangeLocked(L"C:\\run\\tavrin-service.log", false);
  });
  const std::uint64_t before = machine.clock.Now();
  WriteLog(L"one");
  EXPECT_EQ(Log(), "half a line\none\n");
  EXPECT_EQ(machine.clock.Now() - before, 30u);
}

// Whoever can read the log could hold its turns for ever.
TEST_F(ServiceLog, TurnThatNeverComesCostsATenthOfASecondAndTheLineIsWritten) {
  machine.files.Put(L"C:\\run\\tavrin-service.log", "old\n");
  machine.files.SetRangeLocked(L"C:\\run\\tavrin-service.log", true);
  const std::uint64_t before = machine.clock.Now();
  WriteLog(L"one");
  EXPECT_EQ(Log(), "old\none\n");
  EXPECT_EQ(machine.clock.Now() - before, 100u);
  EXPECT_EQ(machine.calls.Count("LockFileEx"), 100u);
  EXPECT_EQ(machine.calls.Count("UnlockFileEx"), 0u) << "it is the other's";
}

TEST_F(ServiceLog, FileSystemWithoutLocksTakesTheLineAtOnce) {
  machine.faults.FailAlways("LockFileEx", ERROR_NOT_SUPPORTED);
  const std::uint64_t before = machine.clock.Now();
  WriteLog(L"one");
  EXPECT_EQ(Log(), "one\n");
  EXPECT_EQ(machine.clock.Now(), before);
  EXPECT_EQ(machine.calls.Count("LockFileEx"), 1u);
}

TEST_F(ServiceLog, SecondThreadWaitsWithItsEchoUntilTheFirstLineIsInTheFile) {
  g_consoleEcho = 1;
  std::thread second;
  std::string echoed;
  machine.faults.Before("CreateFileW", 1, [&] {
    second = std::thread([] { WriteLog(L"two"); });
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    echoed = machine.console.Output();
  });
  WriteLog(L"one");
  second.join();
  EXPECT_EQ(echoed, "one\n");
  EXPECT_EQ(Log(), "one\ntwo\n");
}

TEST_F(ServiceLog, LinesOfSeveralThreadsStayWhole) {
  g_consoleEcho = 1;
  constexpr int kLines = 200;
  const auto write = [](wchar_t letter) {
    for (int i = 0; i < kLines; ++i) {
      WriteLog(std::wstring(40, letter));
    }
  };
  std::thread first(write, L'a');
  std::thread second(write, L'b');
  first.join();
  second.join();
  for (const std::string& text : {Log(), machine.console.Output()}) {
    std::istringstream lines(text);
    int count = 0;
    for (std::string line; std::getline(lines, line); ++count) {
      EXPECT_TRUE(line == std::string(40, 'a') || line == std::string(40, 'b')) << line;
    }
    EXPECT_EQ(count, 2 * kLines);
  }
}

}  // namespace
}  // namespace vpn
