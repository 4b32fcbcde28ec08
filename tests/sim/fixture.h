// The base of tests against the simulated machine: a fresh machine for each test, and at its end
// the questions that every test has to answer well.
#ifndef TAVRIN_TESTS_SIM_FIXTURE_H_
#define TAVRIN_TESTS_SIM_FIXTURE_H_

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/sim/machine.h"

namespace sim {

class MachineTest : public ::testing::Test {
 protected:
  // A test that leaves something open on purpose says so, and asserts itself what that is.
  void AllowOpenHandles() { mayLeaveOpen_ = true; }

  void TearDown() override {
    EXPECT_EQ(machine.WaitForThreads(), 0u) << "threads that did not end";
    if (!mayLeaveOpen_) {
      EXPECT_EQ(machine.OpenHandles(), std::vector<std::string>()) << "left open";
    }
    EXPECT_EQ(machine.Violations(), std::vector<std::string>()) << "mistakes";
  }

  InstalledMachine installed;
  Machine& machine = *installed;

 private:
  bool mayLeaveOpen_ = false;
};

}  // namespace sim

#endif  // TAVRIN_TESTS_SIM_FIXTURE_H_
