// What the trace says of the last connect.
#include <algorithm>
#include <utility>

#include "client/doctor/checks.h"
#include "client/doctor/file_look.h"
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

Finding TellIncomplete(const Patient& patient, const StepList& steps) {
  const wchar_t* const next = NamesOfStep(std::min(NextStep(steps), kStepCount - 1)).done;
  if (!patient.isStateKnown()) {
    return Remark(std::wstring(L"under way, or ended before: ") + next, kAskAgain);
  }
  return Remark(std::wstring(L"ended before: ") + next, L"run tavrinctl connect, which shows why");
}

Finding TellLast(const Patient& patient, const std::vector<ConnectTrace>& connects) {
  const ConnectTrace& last = connects.back();
  const StepList steps = StepsOf(last);
  if (!last.isComplete()) {
    return TellIncomplete(patient, steps);
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

}  // namespace

Finding CheckLastConnect(const Patient& patient) {
  const std::wstring path = TracePath(patient.place.directory);
  const FileState state = LookAtName(path);
  if (state == FileState::kMissing) {
    return Good(L"none so far");
  }
  if (state == FileState::kDirectory) {
    return Remark(path + L" is a directory", L"delete it: the service writes a file of this name");
  }
  FileTail tail;
  if (!ReadFileTail(path, kTraceLimit, tail)) {
    return Remark(path + L" can't be read", L"try again when no connect is under way");
  }
  const TraceText trace = ParseTrace(std::move(tail.text), tail.isCut);
  if (trace.connects.empty()) {
    return Remark(path + L" holds no connect", L"delete the file; the next connect makes it anew");
  }
  Finding finding = TellLast(patient, trace.connects);
  if (trace.strangeLines == 0) {
    return finding;
  }
  // The last connect may be among what can't be read.
  return Remark(finding.text + L"; " + CountText(trace.strangeLines, L"line", L"lines") + L" of " +
                    path + L" can't be read",
                finding.verdict == Verdict::kGood
                    ? L"delete the file when no connect is under way; the next one makes it anew"
                    : finding.whatToDo);
}

}  // namespace vpn
