#include "src/common/environment.h"

#include "tests/sim/fixture.h"

namespace vpn {
namespace {

class Environment : public sim::MachineTest {};

TEST_F(Environment, UnsetVariableIsNothing) {
  EXPECT_EQ(ReadEnvironment(L"TAVRIN_RUNTIME", 260), std::nullopt);
}

TEST_F(Environment, EmptyVariableIsNothing) {
  machine.environment.Set(L"TAVRIN_RUNTIME", L"");
  EXPECT_EQ(ReadEnvironment(L"TAVRIN_RUNTIME", 260), std::nullopt);
}

TEST_F(Environment, ValueIsReadAsItStands) {
  machine.environment.Set(L"TAVRIN_RUNTIME", L" C:\\数据\\ ");
  EXPECT_EQ(ReadEnvironment(L"TAVRIN_RUNTIME", 260), L" C:\\数据\\ ");
  EXPECT_EQ(machine.calls.TextsOf("GetEnvironmentVariableW"),
            std::vector<std::string>{"\"TAVRIN_RUNTIME\""});
}

TEST_F(Environment, ValueThatJustFitsIsReadWhole) {
  machine.environment.Set(L"X", std::wstring(259, L'a'));
  EXPECT_EQ(ReadEnvironment(L"X", 260), std::wstring(259, L'a'));
}

TEST_F(Environment, ValueOneUnitTooLongReadsAsEmpty) {
  machine.environment.Set(L"X", std::wstring(260, L'a'));
  EXPECT_EQ(ReadEnvironment(L"X", 260), L"");
}

TEST_F(Environment, ValueFarTooLongReadsAsEmpty) {
  machine.environment.Set(L"X", std::wstring(5000, L'a'));
  EXPECT_EQ(ReadEnvironment(L"X", 260), L"");
}

TEST_F(Environment, PathCapacityIsThePlatforms260) {
  EXPECT_EQ(kPathCapacity, 260u);
}

class ModulePathTest : public sim::MachineTest {};

TEST_F(ModulePathTest, IsTheExecutable) {
  EXPECT_EQ(ModulePath(), L"C:\\Program Files\\Tavrin\\TavrinService.exe");
}

TEST_F(ModulePathTest, IsEmptyWhenThePlatformDoesNotTell) {
  machine.faults.Fail("GetModuleFileNameW");
  EXPECT_EQ(ModulePath(), L"");
}

TEST_F(ModulePathTest, PathThatJustFitsIsWhole) {
  machine.modulePath = L"C:\\" + std::wstring(256, L'a');
  EXPECT_EQ(ModulePath(), L"C:\\" + std::wstring(256, L'a'));
}

TEST_F(ModulePathTest, LongerPathIsCutOffAt259Units) {
  machine.modulePath = L"C:\\" + std::wstring(400, L'a');
  EXPECT_EQ(ModulePath(), L"C:\\" + std::wstring(256, L'a'));
}

TEST(LastSeparator, FindsTheLastOfEitherKind) {
  EXPECT_EQ(LastSeparator(L"C:\\a\\b.exe"), 4u);
  EXPECT_EQ(LastSeparator(L"C:\\a/b.exe"), 4u);
  EXPECT_EQ(LastSeparator(L"C:/a\\b.exe"), 4u);
  EXPECT_EQ(LastSeparator(L"\\"), 0u);
  EXPECT_EQ(LastSeparator(L"b.exe"), std::wstring::npos);
  EXPECT_EQ(LastSeparator(L""), std::wstring::npos);
}

}  // namespace
}  // namespace vpn
