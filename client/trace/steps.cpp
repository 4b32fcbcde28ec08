#include "client/trace/steps.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <string_view>

namespace vpn {
namespace {

constexpr std::array<StepNames, kStepCount> kNames = {{
    {L"old tunnel stopped", L"old tunnel being stopped"},
    {L"stale helpers looked for", L"stale helpers being looked for"},
    {L"physical route found", L"physical route being looked for"},
    {L"leftover name server reset", L"leftover name server being reset"},
    {L"panel pinned", L"panel being pinned"},
    {L"Xray listening", L"Xray being started"},
    {L"adapter up", L"adapter being brought up"},
    {L"address, name server, IPv4", L"address and name server being set"},
    {L"routes installed", L"routes being installed"},
    {L"IPv6 blocked", L"IPv6 being blocked"},
}};

constexpr size_t kOptionalStep = 3;

// Which step a mark belongs to, and whether it ends it.
struct MarkMeaning {
  std::string_view label;
  size_t step;
  bool isLast;
  bool isFailure;
};

constexpr MarkMeaning kMeanings[] = {
    {"stop() own session", 0, true, false},
    {"stop() idle", 0, true, false},
    {"skip orphan scan", 1, true, false},
    {"kill stale (hit)", 1, true, false},
    {"kill stale (clean)", 1, true, false},
    {"find physical route", 2, true, false},
    {"reset physical dns (netsh)", 3, true, false},
    {"pin panel hosts", 4, true, false},
    {"spawn xray", 5, false, false},
    {"xray socks listening", 5, true, false},
    {"spawn tun2socks", 6, false, false},
    {"wintun adapter up", 6, true, false},
    {"set tun address (api)", 7, false, false},
    {"set tun dns (api)", 7, false, false},
    {"set tun dns (api fail)", 7, false, true},
    {"tun ipv4 ready", 7, true, false},
    {"routes installed", 8, true, false},
    {"ipv6 leak blocked", 9, true, false},
};

const MarkMeaning* MeaningOf(std::string_view label) {
  const auto* const found =
      std::find_if(std::begin(kMeanings), std::end(kMeanings),
                   [label](const MarkMeaning& meaning) { return meaning.label == label; });
  return found == std::end(kMeanings) ? nullptr : found;
}

}  // namespace

const StepNames& NamesOfStep(size_t step) {
  return kNames[step];
}

bool IsOptionalStep(size_t step) {
  return step == kOptionalStep;
}

StepList StepsOf(const ConnectTrace& connect) {
  StepList result;
  result.steps.reserve(kStepCount);
  std::uint64_t end = 0;  // of the last mark that a step knows
  for (const TraceMark& mark : connect.marks) {
    const MarkMeaning* const meaning = MeaningOf(mark.label);
    if (meaning == nullptr) {
      result.unknown.emplace_back(mark.label);
      continue;
    }
    if (result.steps.empty() || result.steps.back().index != meaning->step) {
      if (!result.steps.empty()) {
        result.steps.back().isDone =
            true;  // what follows it says so, also when its own mark is lost
      }
      Step step;
      step.index = meaning->step;
      step.start = end;
      result.steps.push_back(step);
    }
    Step& step = result.steps.back();
    end = std::max(end, mark.total);
    step.time = end - step.start;
    step.isDone = step.isDone || meaning->isLast;
    step.hasFailed = step.hasFailed || meaning->isFailure;
  }
  return result;
}

size_t NextStep(const StepList& steps) {
  if (steps.steps.empty()) {
    return 0;
  }
  const Step& last = steps.steps.back();
  const size_t next = last.isDone ? last.index + 1 : last.index;
  return IsOptionalStep(next) ? next + 1 : next;
}

size_t LongestStep(const std::vector<Step>& steps) {
  const auto longest =
      std::max_element(steps.begin(), steps.end(),
                       [](const Step& left, const Step& right) { return left.time < right.time; });
  return static_cast<size_t>(longest - steps.begin());
}

std::wstring UnknownMarksText(const StepList& steps) {
  std::wstring text;
  for (const std::string& label : steps.unknown) {
    text += (text.empty() ? L"not known to this version: " : L", ") +
            std::wstring(label.begin(), label.end());  // ASCII
  }
  return text;
}

}  // namespace vpn
