// What the trace says of the last connect.
#include <algorithm>

#include "client/doctor/checks.h"
#include "client/text/amounts.h"
#include "client/trace/medians.h"
#include "client/trace/trace_file.h"

namespace vpn {
namespace {

constexpr std::uint64_t kSlowFactor = 3;
constexpr std::uint64_t kSlowLeast = 500;  // milliseconds beyond the usual

// The step that took far longer than it usually does; null when none did.
const Step* SlowStep(const std::vector<Step>& steps, const std::vector<std::int64_t>& medians) {
  for (const Step& step : steps) {
    if (medians[step.index] < 0) {
      continue;
    }
    const auto usual = static_cast<std::uint64_t>(medians[step.index]);
    if (step.time > usual * kSlowFactor && step.time > usual + kSlowLeast) {
      return &step;
    }
  }
  return nullptr;
}

}  // namespace

Finding CheckLastConnect(const Patient& patient) {
  FileTail tail;
  std::uint64_t size = 0;
  const std::wstring path = TracePath(patient.place.directory);
  if (!FileSize(path, size)) {
    return Good(L"none so far");
  }
  if (!ReadFileTail(path, kTraceLimit, tail)) {
    return Remark(path + L" can't be read", L"try again when no connect is under way");
  }
  const std::vector<ConnectTrace> connects = ParseTrace(tail.text, tail.isCut).connects;
  if (connects.empty()) {
    return Remark(path + L" holds no connect", L"delete the file; the next connect makes it anew");
  }
  const ConnectTrace& last = connects.back();
  const StepList steps = StepsOf(last);
  if (!last.isComplete()) {
    const size_t next = std::min(NextStep(steps), kStepCount - 1);
    return Remark(std::wstring(L"ended before: ") + NamesOfStep(next).done,
                  L"run tavrinctl connect, which shows why");
  }
  const std::vector<std::int64_t> medians = MedianTimes({connects.begin(), connects.end() - 1});
  if (const Step* const slow = SlowStep(steps.steps, medians)) {
    return Remark(std::wstring(NamesOfStep(slow->index).done) + L" took " +
                      MillisecondsText(slow->time) + L" instead of " +
                      MillisecondsText(static_cast<std::uint64_t>(medians[slow->index])),
                  L"run tavrinctl trace to see all steps; a virus scanner is the usual reason");
  }
  return Good(L"complete in " + SecondsText(last.totalTime()));
}

}  // namespace vpn
