#include "client/trace/waterfall.h"

#include <algorithm>

#include "client/text/amounts.h"
#include "client/text/display_width.h"

namespace vpn {
namespace {

constexpr size_t kNameWidth = 27;
constexpr size_t kTimeWidth = 9;
constexpr size_t kMedianWidth = 18;
constexpr size_t kLeastBar = 10;
constexpr wchar_t kEighths[] = L"▏▎▍▌▋▊▉█";

std::wstring MedianText(std::int64_t median) {
  return median < 0 ? std::wstring()
                    : L"median" + PadLeft(MillisecondsText(static_cast<std::uint64_t>(median)), 9);
}

size_t BarWidth(size_t columns) {
  constexpr size_t kRest = kNameWidth + kTimeWidth + kMedianWidth + 8;
  return std::max(kLeastBar, columns > kRest ? columns - kRest : 0);
}

}  // namespace

std::wstring DrawBar(std::uint64_t start, std::uint64_t time, std::uint64_t total, size_t width) {
  if (total == 0 || time == 0) {
    return PadRight(L"", width);
  }
  // In eighths of a column; the front edge falls on a whole one.
  const std::uint64_t column = std::min<std::uint64_t>(start * width / total, width - 1);
  const std::uint64_t room = (width - column) * 8;
  const std::uint64_t length =
      std::clamp<std::uint64_t>((time * width * 8 + total / 2) / total, 1, room);
  std::wstring bar(column, L' ');
  bar.append(length / 8, L'█');
  if (length % 8 != 0) {
    bar += kEighths[length % 8 - 1];
  }
  return PadRight(bar, width);
}

std::vector<WaterfallRow> DrawWaterfall(const ConnectTrace& connect,
                                        const std::vector<std::int64_t>& medians, size_t columns) {
  const StepList steps = StepsOf(connect);
  const size_t width = BarWidth(columns);
  const std::uint64_t total = connect.totalTime();
  std::vector<WaterfallRow> rows;
  const size_t longest = LongestStep(steps.steps);
  for (size_t at = 0; at < steps.steps.size(); ++at) {
    const Step& step = steps.steps[at];
    WaterfallRow row;
    row.isLongest = total > 0 && at == longest;
    row.text = PadRight(NamesOfStep(step.index).done, kNameWidth) +
               PadLeft(MillisecondsText(step.time), kTimeWidth) + L"  " +
               DrawBar(step.start, step.time, total, width) + L"  " +
               PadRight(MedianText(medians[step.index]), kMedianWidth);
    row.text += row.isLongest ? L"◄" : L"";
    row.text.erase(row.text.find_last_not_of(L' ') + 1);
    rows.push_back(std::move(row));
  }
  if (!connect.isComplete()) {
    WaterfallRow row;
    row.isEnd = true;
    row.text = std::wstring(L"ended before: ") +
               NamesOfStep(std::min(NextStep(steps), kStepCount - 1)).done;
    rows.push_back(std::move(row));
  }
  if (!steps.unknown.empty()) {
    WaterfallRow row;
    row.text = UnknownMarksText(steps);
    rows.push_back(std::move(row));
  }
  return rows;
}

}  // namespace vpn
