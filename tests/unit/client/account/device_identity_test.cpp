#include "client/account/device_identity.h"

#include <windows.h>

#include "tests/unit/client/client_test.h"

namespace vpn {
namespace {

class DeviceIdentityTest : public unit::ClientTest {
 protected:
  const std::wstring directory = unit::kRuntime;
  const std::wstring file = directory + L"\\device.id";
};

TEST_F(DeviceIdentityTest, IsRandomAndMadeOnce) {
  const std::wstring identity = DeviceIdentity(directory);
  EXPECT_EQ(identity.size(), 32u);
  EXPECT_EQ(identity.find_first_not_of(L"0123456789abcdef"), std::wstring::npos);
  EXPECT_EQ(machine.calls.Count("BCryptGenRandom"), 1u);
  EXPECT_EQ(DeviceIdentity(directory), identity);
  EXPECT_EQ(machine.calls.Count("BCryptGenRandom"), 1u);
  machine.files.Remove(file);
  EXPECT_NE(DeviceIdentity(directory), identity);
}

TEST_F(DeviceIdentityTest, IsForTheUserAndTheSystemAlone) {
  DeviceIdentity(directory);
  EXPECT_EQ(machine.files.Find(file)->accessList,
            "D:P(A;;FA;;;S-1-5-21-1004336348-1177238915-682003330-1001)(A;;FA;;;SY)");
  EXPECT_FALSE(machine.files.Exists(file + L".new"));
}

TEST_F(DeviceIdentityTest, ADamagedOneIsMadeAnew) {
  for (const char* text :
       {"", "short", "0123456789abcdef0123456789abcdeX", "0123456789abcdef0123456789abcdef\n"}) {
    machine.files.Put(file, text);
    EXPECT_EQ(DeviceIdentity(directory).size(), 32u) << text;
    EXPECT_NE(machine.files.Read(file), text);
  }
}

TEST_F(DeviceIdentityTest, AnotherUsersIsLeftAlone) {
  machine.files.Put(file, "0123456789abcdef0123456789abcdef");
  machine.files.SetLocked(file, true);
  EXPECT_EQ(DeviceIdentity(directory), L"");
  EXPECT_EQ(machine.files.Read(file), "0123456789abcdef0123456789abcdef");
}

// Each step that makes one, failing in turn.
TEST_F(DeviceIdentityTest, WhatCantBeKeptIsNotUsedAndLeavesNothing) {
  for (const char* call :
       {"BCryptGenRandom", "OpenProcessToken", "GetTokenInformation", "ConvertSidToStringSidW",
        "ConvertStringSecurityDescriptorToSecurityDescriptorW", "SetFileSecurityW",
        "MoveFileExW"}) {
    machine.faults.Fail(call, {.nth = 1, .code = 5});
    EXPECT_EQ(DeviceIdentity(directory), L"") << call;
    EXPECT_FALSE(machine.files.Exists(file)) << call;
    EXPECT_FALSE(machine.files.Exists(file + L".new")) << call;
  }
  machine.files.SetReadOnly(directory, true);
  EXPECT_EQ(DeviceIdentity(directory), L"");
}

}  // namespace
}  // namespace vpn
