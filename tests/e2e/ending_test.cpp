// How a program ends that is compiled and linked as the service is: with the stack's guard, and
// with `abort` in the place of exceptions.
#include <set>

#include "tests/e2e/harness/sandbox.h"
#include "tests/e2e/harness/service_process.h"
#include "tests/e2e/harness/waiting.h"

#include <gtest/gtest.h>

namespace e2e {
namespace {

class Ending : public ::testing::Test {
 protected:
  Ending() { CopyProgram(L"e2e\\ending.exe", program_); }

  DWORD ExitCode(const std::wstring& how) const {
    const HANDLE process = StartProgram(program_, how, box_.root(), {});
    EXPECT_EQ(WaitForSingleObject(process, kPatience), WAIT_OBJECT_0);
    DWORD code = 0;
    GetExitCodeProcess(process, &code);
    CloseHandle(process);
    return code;
  }

 private:
  Sandbox box_;
  std::wstring program_ = box_.root() + L"\\ending.exe";
};

TEST_F(Ending, WithoutAFaultIsAnOrdinaryOne) {
  EXPECT_EQ(ExitCode(L"well"), 0u);
}

TEST_F(Ending, AWriteBehindAnArrayOnTheStackEndsTheProcess) {
  EXPECT_EQ(ExitCode(L"stack"), static_cast<DWORD>(STATUS_ILLEGAL_INSTRUCTION));
}

TEST_F(Ending, TheGuardIsAnotherOneInEachProcess) {
  std::set<DWORD> guards;
  for (int i = 0; i < 4; ++i) {
    guards.insert(ExitCode(L"guard"));
  }
  EXPECT_EQ(guards.size(), 4u);
  EXPECT_EQ(guards.count(0), 0u);
}

TEST_F(Ending, WhereTheLibraryWouldThrowTheProcessAborts) {
  for (const wchar_t* how : {L"memory", L"length", L"range", L"vector"}) {
    EXPECT_EQ(ExitCode(how), 3u) << std::string(how, how + wcslen(how));
  }
}

}  // namespace
}  // namespace e2e
