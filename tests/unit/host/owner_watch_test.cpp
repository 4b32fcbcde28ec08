#include "src/host/host_internal.h"

#include "src/runtime/process_state.h"
#include "tests/unit/product_state.h"

namespace vpn {
namespace {

constexpr std::uint32_t kOwner = 777;

class OwnerWatchTest : public unit::ProductTest {
 protected:
  OwnerWatchTest() {
    machine.files.PutDirectory(L"C:\\run");
    SetRuntimeDir(L"C:\\run");
  }
  void SeedOwner() { machine.processes.Seed(L"C:\\ui\\TavrinUi.exe", kOwner); }
  std::string Log() { return machine.files.Read(L"C:\\run\\tavrin-service.log").value_or(""); }
};

TEST_F(OwnerWatchTest, WithoutAnOwnerNothingHappens) {
  EXPECT_EQ(OwnerWatch(nullptr), 0u);
  EXPECT_EQ(machine.calls.Names(), std::vector<std::string>());
  EXPECT_EQ(g_stopRequested, 0);
}

TEST_F(OwnerWatchTest, OwnerIsOpenedForWaitingAloneAndWaitedForWithoutLimit) {
  SeedOwner();
  machine.processes.ExitAfter(kOwner, 5000, 0);
  g_ownerPid = kOwner;
  EXPECT_EQ(OwnerWatch(nullptr), 0u);
  EXPECT_EQ(
      machine.calls.Sequence({"OpenProcess", "WaitForSingleObject", "CloseHandle", "CreateFileW"}),
      (std::vector<std::string>{
          "OpenProcess 0x100000, own, 777", "WaitForSingleObject process TavrinUi.exe, infinite",
          "CloseHandle process TavrinUi.exe",
          R"(CreateFileW "C:\run\tavrin-service.log", 0x40000000, 3, 4, 0x80)",
          R"(CloseHandle file C:\run\tavrin-service.log)",
          R"(CreateFileW "\\.\pipe\TavrinService", 0xC0000000, 0, 3, 0x80)"}));
}

TEST_F(OwnerWatchTest, EndOfTheOwnerIsLoggedAndStopsTheProcess) {
  SeedOwner();
  machine.processes.ExitAfter(kOwner, 3600000, 1);
  g_ownerPid = kOwner;
  const std::uint64_t start = machine.clock.Now();
  EXPECT_EQ(OwnerWatch(nullptr), 0u);
  EXPECT_EQ(machine.clock.Now() - start, 3600000u);
  EXPECT_EQ(Log(), "ui process exited; stopping helper\n");
  EXPECT_EQ(g_stopRequested, 1);
}

TEST_F(OwnerWatchTest, LineIsLoggedBeforeTheStopIsRequested) {
  SeedOwner();
  machine.processes.ExitAfter(kOwner, 1, 0);
  g_ownerPid = kOwner;
  int seen = -1;
  machine.faults.Before("CreateFileW", 1, [&] { seen = g_stopRequested; });
  (void)OwnerWatch(nullptr);
  EXPECT_EQ(seen, 0);
}

TEST_F(OwnerWatchTest, OwnerThatIsGoneAlreadyIsLoggedAndTheProcessStays) {
  g_ownerPid = kOwner;
  EXPECT_EQ(OwnerWatch(nullptr), 0u);
  EXPECT_EQ(Log(), "owner pid open failed err=87\n");
  EXPECT_EQ(g_stopRequested, 0);
  EXPECT_EQ(machine.calls.Count("OpenProcess"), 1u);  // no second try
  EXPECT_EQ(machine.calls.Count("WaitForSingleObject"), 0u);
}

TEST_F(OwnerWatchTest, OwnerThatRefusesToBeOpenedIsLoggedWithItsCode) {
  AllowChildren();
  SeedOwner();
  machine.processes.Find(kOwner)->openError = 5;
  g_ownerPid = kOwner;
  EXPECT_EQ(OwnerWatch(nullptr), 0u);
  EXPECT_EQ(Log(), "owner pid open failed err=5\n");
  EXPECT_EQ(g_stopRequested, 0);
}

TEST_F(OwnerWatchTest, CodeIsLoggedAsAnUnsignedNumber) {
  machine.faults.Fail("OpenProcess", {.code = 0xC0000022});
  g_ownerPid = kOwner;
  EXPECT_EQ(OwnerWatch(nullptr), 0u);
  EXPECT_EQ(Log(), "owner pid open failed err=3221225506\n");
}

TEST_F(OwnerWatchTest, ResultOfTheWaitIsNotLookedAt) {
  AllowChildren();
  SeedOwner();
  machine.faults.Fail("WaitForSingleObject");
  g_ownerPid = kOwner;
  EXPECT_EQ(OwnerWatch(nullptr), 0u);
  EXPECT_EQ(Log(), "ui process exited; stopping helper\n");
  EXPECT_EQ(g_stopRequested, 1);
}

TEST_F(OwnerWatchTest, ProcessIdOfTheHighestValueIsPassedOnWhole) {
  g_ownerPid = 4294967295;
  EXPECT_EQ(OwnerWatch(nullptr), 0u);
  EXPECT_EQ(machine.calls.TextsOf("OpenProcess"),
            std::vector<std::string>{"0x100000, own, 4294967295"});
}

}  // namespace
}  // namespace vpn
