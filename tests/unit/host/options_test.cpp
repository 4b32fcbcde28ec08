#include "src/host/options.h"

#include <gtest/gtest.h>

#include <vector>

namespace vpn {
namespace {

Options Parse(std::vector<const wchar_t*> arguments) {
  arguments.insert(arguments.begin(), L"TavrinService.exe");
  return ParseOptions(static_cast<int>(arguments.size()), arguments.data());
}

TEST(Options, NoArgumentsChooseNothing) {
  const Options options = Parse({});
  EXPECT_FALSE(options.console || options.daemon || options.install || options.uninstall);
  EXPECT_EQ(options.runtimeDir, std::nullopt);
  EXPECT_EQ(options.ownerPid, 0u);
}

TEST(Options, EmptyCommandLineIsReadWithoutHarm) {
  EXPECT_FALSE(ParseOptions(0, nullptr).console);
}

TEST(Options, FirstArgumentIsTheProgramAndNoOption) {
  const wchar_t* const arguments[] = {L"--install"};
  EXPECT_FALSE(ParseOptions(1, arguments).install);
}

TEST(Options, EachFlagSetsItsOwn) {
  EXPECT_TRUE(Parse({L"--console"}).console);
  EXPECT_TRUE(Parse({L"--daemon"}).daemon);
  EXPECT_TRUE(Parse({L"--install"}).install);
  EXPECT_TRUE(Parse({L"--uninstall"}).uninstall);
  const Options all = Parse({L"--uninstall", L"--console", L"--install", L"--daemon"});
  EXPECT_TRUE(all.console && all.daemon && all.install && all.uninstall);
  const Options one = Parse({L"--uninstall"});
  EXPECT_FALSE(one.console || one.daemon || one.install);
}

TEST(Options, AnythingButTheExactTextIsIgnored) {
  for (const wchar_t* argument :
       {L"--bogus", L"--Console", L"--CONSOLE", L"-console", L"console", L"/console", L"--console ",
        L" --console", L"--console=1", L"--consol", L"--", L""}) {
    const Options options = Parse({argument});
    EXPECT_FALSE(options.console || options.daemon || options.install || options.uninstall);
  }
}

TEST(Options, UnknownArgumentDoesNotEndTheReading) {
  EXPECT_TRUE(Parse({L"--bogus", L"value", L"--daemon"}).daemon);
}

TEST(Options, RuntimeTakesTheNextArgument) {
  EXPECT_EQ(Parse({L"--runtime", L"C:\\run\\"}).runtimeDir, L"C:\\run\\");
}

TEST(Options, RuntimeAsTheLastArgumentIsIgnored) {
  EXPECT_EQ(Parse({L"--runtime"}).runtimeDir, std::nullopt);
  EXPECT_EQ(Parse({L"--runtime", L"C:\\a", L"--runtime"}).runtimeDir, L"C:\\a");
}

TEST(Options, RuntimeJoinedToItsValueIsUnknown) {
  EXPECT_EQ(Parse({L"--runtime=C:\\run"}).runtimeDir, std::nullopt);
}

TEST(Options, RuntimeTakesAValueThatLooksLikeAnOption) {
  const Options options = Parse({L"--runtime", L"--console"});
  EXPECT_EQ(options.runtimeDir, L"--console");
  EXPECT_FALSE(options.console);
}

TEST(Options, EmptyRuntimeCountsAsGiven) {
  EXPECT_EQ(Parse({L"--runtime", L""}).runtimeDir, L"");
}

TEST(Options, LastRuntimeWins) {
  EXPECT_EQ(Parse({L"--runtime", L"A", L"--runtime", L"B"}).runtimeDir, L"B");
  EXPECT_EQ(Parse({L"--runtime", L"", L"--runtime", L"B"}).runtimeDir, L"B");
}

TEST(Options, EmptyRuntimeBehindAnotherChangesNothing) {
  EXPECT_EQ(Parse({L"--runtime", L"A", L"--runtime", L""}).runtimeDir, L"A");
}

TEST(Options, OwnerPidIsReadAsThePlatformReadsNumbers) {
  const struct {
    const wchar_t* text;
    std::uint32_t pid;
  } rows[] = {{L"123", 123},
              {L"0", 0},
              {L"abc", 0},
              {L"", 0},
              {L" \t42", 42},
              {L"+7", 7},
              {L"12abc", 12},
              {L"0x10", 0},
              {L"-1", 4294967295},
              {L"2147483647", 2147483647},
              {L"4294967295", 2147483647}};  // too large is held at the bound
  for (const auto& row : rows) {
    EXPECT_EQ(Parse({L"--owner-pid", row.text}).ownerPid, row.pid);
  }
}

TEST(Options, OwnerPidAsTheLastArgumentIsIgnored) {
  EXPECT_EQ(Parse({L"--owner-pid"}).ownerPid, 0u);
  EXPECT_EQ(Parse({L"--owner-pid", L"5", L"--owner-pid"}).ownerPid, 5u);
}

TEST(Options, LastOwnerPidWins) {
  EXPECT_EQ(Parse({L"--owner-pid", L"5", L"--owner-pid", L"6"}).ownerPid, 6u);
  EXPECT_EQ(Parse({L"--owner-pid", L"5", L"--owner-pid", L"x"}).ownerPid, 0u);
}

TEST(Options, OwnerPidTakesAValueThatLooksLikeAnOption) {
  const Options options = Parse({L"--owner-pid", L"--daemon", L"--console"});
  EXPECT_EQ(options.ownerPid, 0u);
  EXPECT_FALSE(options.daemon);
  EXPECT_TRUE(options.console);
}

}  // namespace
}  // namespace vpn
