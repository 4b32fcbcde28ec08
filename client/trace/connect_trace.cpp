#include "client/trace/connect_trace.h"

#include <charconv>

namespace vpn {
namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
constexpr std::string_view kFirstLabel = "stop() ";
constexpr std::string_view kLastLabel = "ipv6 leak blocked";
constexpr std::string_view kTotal = "ms  total ";
constexpr size_t kUsualMarks = 14;

std::string_view Trim(std::string_view text) {
  const size_t first = text.find_first_not_of(" \t\r");
  if (first == std::string_view::npos) {
    return {};
  }
  return text.substr(first, text.find_last_not_of(" \t\r") - first + 1);
}

// A decimal number and nothing else around it but blanks.
bool ParseNumber(std::string_view text, std::uint64_t& value) {
  text = Trim(text);
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  return error == std::errc() && end == text.data() + text.size();
}

// The totals of a connect never fall: a lower one begins another connect, whose head is lost.
bool Begins(const TraceMark& mark, const std::vector<ConnectTrace>& connects) {
  return mark.label.starts_with(kFirstLabel) || connects.empty() ||
         mark.total < connects.back().totalTime();
}

// Labels are ASCII; anything else is damage.
bool IsLabel(std::string_view text) {
  for (const char byte : text) {
    if (byte < 0x20 || byte > 0x7E) {
      return false;
    }
  }
  return !text.empty();
}

}  // namespace

bool ConnectTrace::isComplete() const {
  return marks.back().label == kLastLabel;
}

bool ParseTraceLine(std::string_view line, TraceMark& mark) {
  line = Trim(line);
  const size_t plus = line.rfind('+');
  const size_t total = line.rfind(kTotal);
  if (plus == std::string_view::npos || total == std::string_view::npos || total < plus ||
      !line.ends_with("ms")) {
    return false;
  }
  const size_t behindTotal = total + kTotal.size();
  const std::string_view label = Trim(line.substr(0, plus));
  if (behindTotal + 2 > line.size() || !IsLabel(label) ||
      !ParseNumber(line.substr(plus + 1, total - plus - 1), mark.step) ||
      !ParseNumber(line.substr(behindTotal, line.size() - behindTotal - 2), mark.total)) {
    return false;
  }
  mark.label = label;
  return true;
}

TraceText ParseTrace(std::string_view text, bool isCut) {
  TraceText result;
  if (text.starts_with(kByteOrderMark)) {
    text.remove_prefix(kByteOrderMark.size());
  }
  bool skip = isCut;  // until another connect begins than the one that the text begins within
  std::uint64_t skippedTotal = 0;
  for (size_t feed = text.find('\n'); feed != std::string_view::npos; feed = text.find('\n')) {
    TraceMark mark;
    const std::string_view line = text.substr(0, feed);
    text.remove_prefix(feed + 1);
    if (!ParseTraceLine(line, mark)) {
      result.strangeLines += skip || Trim(line).empty() ? 0 : 1;
      continue;
    }
    skip = skip && !mark.label.starts_with(kFirstLabel) && mark.total >= skippedTotal;
    if (skip) {
      skippedTotal = mark.total;
      continue;
    }
    if (Begins(mark, result.connects)) {
      result.connects.emplace_back().marks.reserve(kUsualMarks);
    }
    result.connects.back().marks.push_back(std::move(mark));
  }
  return result;
}

}  // namespace vpn
