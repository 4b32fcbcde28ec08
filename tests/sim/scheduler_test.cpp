#include "tests/sim/scheduler.h"

#include <gtest/gtest.h>

#include "tests/sim/fixture.h"

#include <windows.h>

namespace sim {
namespace {

class SchedulerTest : public MachineTest {
 protected:
  // The order in which three threads make twenty calls each.
  std::vector<int> Order(std::uint64_t seed) {
    machine.calls.Clear();
    Scheduler scheduler(seed);
    for (const char* name : {"first", "second", "third"}) {
      scheduler.Add(name, [] {
        for (int call = 0; call < 20; ++call) {
          (void)GetTickCount64();
        }
      });
    }
    scheduler.Run();
    std::vector<int> threads;
    for (const CallRecord& call : machine.calls.All()) {
      threads.push_back(call.thread);
    }
    return threads;
  }
};

TEST_F(SchedulerTest, ASeedGivesOneOrderAndOtherSeedsOthers) {
  std::set<std::vector<int>> orders;
  for (std::uint64_t seed = 1; seed <= 50; ++seed) {
    const std::vector<int> order = Order(seed);
    EXPECT_EQ(order.size(), 60u);
    EXPECT_EQ(Order(seed), order) << seed;
    orders.insert(order);
  }
  EXPECT_GT(orders.size(), 25u);
}

TEST_F(SchedulerTest, WithZeroEachThreadGoesOnUntilItEnds) {
  std::vector<int> expected(20, 1);
  expected.resize(40, 2);
  expected.resize(60, 3);
  EXPECT_EQ(Order(0), expected);
}

TEST_F(SchedulerTest, AThreadThatSleepsLetsTheNextOneGoOn) {
  Scheduler scheduler(0);
  std::atomic<bool> isSet = false;
  scheduler.Add("sleeper", [&] {
    while (!isSet) {
      Sleep(10);
    }
  });
  scheduler.Add("setter", [&] { isSet = true; });
  scheduler.Run();
  EXPECT_TRUE(isSet);
}

TEST_F(SchedulerTest, AWaitWithALimitIsOverWhenNobodyElseCanGoOn) {
  Scheduler scheduler(1);
  bool came = true;
  scheduler.Add("waiter", [&] {
    MachineLock lock = machine.Lock();
    came = machine.core().changed.wait_for(lock, std::chrono::seconds(20), [] { return false; });
  });
  scheduler.Run();
  EXPECT_FALSE(came);
}

TEST_F(SchedulerTest, AThreadThatAnotherMakesTakesPart) {
  Scheduler scheduler(3);
  scheduler.Add("maker", [] {
    HANDLE thread = CreateThread(
        nullptr, 0, [](void*) -> DWORD { return static_cast<DWORD>(GetTickCount64()); }, nullptr, 0,
        nullptr);
    EXPECT_EQ(WaitForSingleObject(thread, INFINITE), DWORD{WAIT_OBJECT_0});
    CloseHandle(thread);
  });
  scheduler.Run();
  for (const CallRecord& call : machine.calls.All()) {
    EXPECT_EQ(call.thread, call.name == "GetTickCount64" ? 2 : 1) << call.name;
  }
}

using SchedulerDeathTest = SchedulerTest;

TEST_F(SchedulerDeathTest, ThreadsThatAllWaitEndTheProgramWithTheSeed) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_DEATH(
      {
        Scheduler scheduler(7);
        scheduler.Add("the waiter", [this] {
          MachineLock lock = machine.Lock();
          machine.core().changed.wait(lock, [] { return false; });
        });
        scheduler.Run();
      },
      "scheduler with seed 7: every thread waits\n  the waiter: at its start");
}

}  // namespace
}  // namespace sim
