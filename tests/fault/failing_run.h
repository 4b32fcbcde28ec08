#ifndef TAVRIN_TESTS_FAULT_FAILING_RUN_H_
#define TAVRIN_TESTS_FAULT_FAILING_RUN_H_

#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "tests/fault/each_call.h"
#include "tests/fault/process.h"
#include "tests/fault/scene.h"

namespace fault {

struct FailingRun {
  std::wstring text;   // of the connect
  Lines afterConnect;  // the children that lived then
  std::vector<sim::CallRecord> calls;
};

// A connect and a disconnect in one process that ends in order, with the faults that `arrange`
// chooses for them. Whatever they are, nothing stays open and nothing of others is touched.
inline FailingRun RunFailing(Stage& stage, const std::function<void(sim::Machine&)>& arrange) {
  sim::Machine& machine = *stage.machine;
  FailingRun run;
  BeginProcess();
  machine.RunProcess([&] {
    EXPECT_TRUE(stage.Prepare());
    const size_t from = machine.calls.All().size();
    arrange(machine);
    run.text = Connect();
    run.afterConnect = machine.processes.Alive();
    Disconnect();
    run.calls = FallibleCalls(machine, from);
    EndProcess();
  });
  machine.faults.Clear();
  machine.clock.Advance(10'000);  // what was started and can't be stopped comes to its end

  EXPECT_EQ(machine.OpenHandles(), Lines());
  EXPECT_EQ(machine.Violations(), Lines());
  EXPECT_EQ(Missing(stage.Foreign(), stage.Now()), Lines());
  return run;
}

}  // namespace fault

#endif  // TAVRIN_TESTS_FAULT_FAILING_RUN_H_
