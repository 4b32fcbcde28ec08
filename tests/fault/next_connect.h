#ifndef TAVRIN_TESTS_FAULT_NEXT_CONNECT_H_
#define TAVRIN_TESTS_FAULT_NEXT_CONNECT_H_

#include <gtest/gtest.h>

#include "tests/fault/process.h"
#include "tests/fault/scene.h"

namespace fault {

// A new process without faults connects, disconnects and ends, and the machine is as no run had
// ever touched it.
inline void ExpectNextConnectIsClean(Stage& stage) {
  sim::Machine& machine = *stage.machine;
  machine.faults.Clear();
  BeginProcess();
  const sim::ProcessRun run = machine.RunProcess([&] {
    EXPECT_EQ(Connect(), L"");
    EXPECT_EQ(machine.processes.Alive(), (Lines{"xray.exe", "tun2socks-windows-amd64.exe"}));
    Disconnect();
    EndProcess();
  });
  EXPECT_FALSE(run.killed);
  machine.clock.Advance(1000);
  EXPECT_EQ(Difference(LinesOf(stage.before), stage.Now()), Lines());
  EXPECT_EQ(machine.processes.Alive(), Lines());
  EXPECT_EQ(machine.OpenHandles(), Lines());
  EXPECT_EQ(machine.Violations(), Lines());
}

}  // namespace fault

#endif  // TAVRIN_TESTS_FAULT_NEXT_CONNECT_H_
