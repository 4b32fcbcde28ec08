#include "src/runtime/process_state.h"

#include "tests/unit/product_state.h"

namespace vpn {
namespace {

using std::string_literals::operator""s;

class ProcessState : public unit::ProductTest {};

TEST_F(ProcessState, StartsWithTheBuiltInDirectoryAndEverythingElseClear) {
  EXPECT_EQ(unit::AtStart().runtimeDir, L"D:\\VPN\\tools\\phase-b\\local");
  EXPECT_EQ(unit::AtStart().stopRequested, 0);
  EXPECT_EQ(unit::AtStart().consoleEcho, 0);
  EXPECT_EQ(unit::AtStart().shutdownAllowed, 0);
  EXPECT_EQ(unit::AtStart().ownerPid, 0u);
}

TEST_F(ProcessState, RuntimeDirIsTakenAsItStands) {
  SetRuntimeDir(L" C:\\run/..\\数据\\ ");
  EXPECT_EQ(g_runtimeDir, L" C:\\run/..\\数据\\ ");
}

TEST_F(ProcessState, TrailingNulUnitsAreStripped) {
  SetRuntimeDir(L"C:\\run\0\0\0"s);
  EXPECT_EQ(g_runtimeDir, L"C:\\run");
}

TEST_F(ProcessState, NulUnitsInsideStay) {
  SetRuntimeDir(L"\0C:\\a\0b\0"s);
  EXPECT_EQ(g_runtimeDir, L"\0C:\\a\0b"s);
}

TEST_F(ProcessState, EmptyTextKeepsTheValue) {
  SetRuntimeDir(L"C:\\run");
  SetRuntimeDir(L"");
  EXPECT_EQ(g_runtimeDir, L"C:\\run");
}

TEST_F(ProcessState, TextOfNulUnitsOnlyKeepsTheValue) {
  SetRuntimeDir(L"C:\\run");
  SetRuntimeDir(L"\0\0"s);
  EXPECT_EQ(g_runtimeDir, L"C:\\run");
}

}  // namespace
}  // namespace vpn
