#include "client/live/live_view.h"

#include <utility>

#include "client/text/amounts.h"
#include "client/text/display_width.h"

namespace vpn {
namespace {

constexpr size_t kNameWidth = 29;
constexpr size_t kTimeWidth = 9;
constexpr std::int64_t kWorthTelling = 100;  // milliseconds; shorter steps need no estimate

// "about 140 ms", in steps that don't pretend to be exact.
std::wstring Estimate(std::int64_t median) {
  const std::int64_t unit = median < 1000 ? 10 : 100;
  return L"about " +
         MillisecondsText(static_cast<std::uint64_t>((median + unit / 2) / unit * unit));
}

}  // namespace

LiveView::LiveView(Output& output, std::function<std::wstring(size_t)> detail)
    : output_(output), moving_(output), medians_(kStepCount, -1), detail_(std::move(detail)) {}

void LiveView::expect(std::vector<std::int64_t> medians) {
  medians_ = std::move(medians);
}

void LiveView::stepLine(wchar_t mark, Ink ink, const std::wstring& name, std::uint64_t time,
                        const std::wstring& detail) {
  moving_.clear();
  output_.write(L"  ");
  output_.write(std::wstring(1, mark), ink);
  std::wstring line =
      L" " + PadRight(name, kNameWidth) + PadLeft(MillisecondsText(time), kTimeWidth);
  output_.line(detail.empty() ? line : line + L"   " + detail);
}

void LiveView::showFinished(const StepList& steps) {
  for (; shown_ < steps.steps.size() && steps.steps[shown_].isDone; ++shown_) {
    const Step& step = steps.steps[shown_];
    const wchar_t* const name = NamesOfStep(step.index).done;
    stepLine(step.hasFailed ? L'!' : L'✓', step.hasFailed ? Ink::kCaution : Ink::kGood, name,
             step.time, step.hasFailed ? L"the name server could not be set" : detail_(step.index));
  }
}

void LiveView::showMoving(const StepList& steps, std::uint64_t now) {
  const size_t next = NextStep(steps);
  if (next >= kStepCount) {
    moving_.clear();
    return;
  }
  std::wstring line = std::wstring(L"  ") + WheelAt(now) + L" ";
  if (steps.steps.empty()) {
    moving_.show(line + L"account and node being fetched …");
    return;
  }
  line += std::wstring(NamesOfStep(next).underWay) + L" …";
  const std::int64_t median = medians_[next];
  if (median >= kWorthTelling) {
    line = PadRight(line, kNameWidth + 8) + L"  (" + Estimate(median) + L")";
  }
  moving_.show(line);
}

void LiveView::update(const ConnectTrace* connect, std::uint64_t now, std::uint64_t grownAt) {
  const StepList steps = connect == nullptr ? StepList() : StepsOf(*connect);
  const size_t marks = connect == nullptr ? 0 : connect->marks.size();
  if (marks != marks_) {
    marks_ = marks;
    lastMark_ = grownAt;
  }
  showFinished(steps);
  showMoving(steps, now);
}

void LiveView::finish(const ConnectTrace* connect, std::uint64_t now, bool failed, bool inChecks) {
  const StepList steps = connect == nullptr ? StepList() : StepsOf(*connect);
  const size_t before = marks_;
  const std::uint64_t since =
      connect != nullptr && connect->marks.size() != before ? now : lastMark_;
  moving_.clear();
  showFinished(steps);
  const size_t next = NextStep(steps);
  if (failed && !steps.steps.empty() && next < kStepCount) {
    const std::wstring name = inChecks ? L"checks before the start" : NamesOfStep(next).done;
    std::uint64_t time = now - since;
    if (!inChecks && !steps.steps.back().isDone) {
      time += steps.steps.back().time;
    }
    stepLine(L'✗', Ink::kBad, name, time, L"");
  }
}

}  // namespace vpn
