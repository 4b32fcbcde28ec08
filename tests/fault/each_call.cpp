#include "tests/fault/each_call.h"

#include <gtest/gtest.h>

#include <cstdio>

#include "tests/sim/api_table.h"

namespace fault {
namespace {

int Findings() {
  return ::testing::UnitTest::GetInstance()->current_test_info()->result()->total_part_count();
}

}  // namespace

void Arrange(sim::Machine& machine, Mode mode, size_t index) {
  machine.faults.ResetCount();
  switch (mode) {
    case Mode::kOnce:
      machine.faults.FailAt(index + 1);
      break;
    case Mode::kOnwards:
      machine.faults.FailFrom(index + 1);
      break;
    case Mode::kKilled:
      machine.faults.KillAt(index + 1);
      break;
  }
}

std::vector<sim::CallRecord> FallibleCalls(const sim::Machine& machine, size_t from) {
  std::vector<sim::CallRecord> calls = machine.calls.All();
  calls.erase(calls.begin(), calls.begin() + static_cast<std::ptrdiff_t>(from));
  std::erase_if(calls,
                [](const sim::CallRecord& call) { return !sim::FindApi(call.name).counted; });
  return calls;
}

std::string Describe(const sim::CallRecord& call) {
  return call.name + ' ' + call.text;
}

Lines Describe(const std::vector<sim::CallRecord>& calls) {
  Lines lines;
  for (const sim::CallRecord& call : calls) {
    lines.push_back(Describe(call));
  }
  return lines;
}

void EachCall(const char* name, const Lines& calls, const std::function<void(size_t)>& run) {
  ASSERT_FALSE(calls.empty()) << "the run without faults failed";
  size_t bad = 0;
  for (size_t index = 0; index < calls.size(); ++index) {
    SCOPED_TRACE("call " + std::to_string(index + 1) + " " + calls[index]);
    const int before = Findings();
    run(index);
    bad += Findings() == before ? 0 : 1;
  }
  std::printf("%s: N = %zu fallible calls, %zu runs, %zu with a finding\n", name, calls.size(),
              calls.size(), bad);
}

}  // namespace fault
