#include "client/trace/connect_trace.h"

#include <charconv>
#include <utility>

namespace vpn {
namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
constexpr std::string_view kFirstLabel = "stop() ";
constexpr std::string_view kLastLabel = "ipv6 leak blocked";
constexpr std::string_view kTotal = "ms  total ";
constexpr std::string_view kUnit = "ms";
constexpr size_t kUsualMarks = 14;

bool IsBlank(char byte) {
  return byte == ' ' || byte == '\t' || byte == '\r';
}

std::string_view Trim(std::string_view text) {
  while (!text.empty() && IsBlank(text.front())) {
    text.remove_prefix(1);
  }
  while (!text.empty() && IsBlank(text.back())) {
    text.remove_suffix(1);
  }
  return text;
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
  if (!line.ends_with(kUnit)) {
    return false;
  }
  line.remove_suffix(kUnit.size());
  const size_t total = line.rfind(kTotal.front());  // a number has no such letter
  if (total == std::string_view::npos || !line.substr(total).starts_with(kTotal)) {
    return false;
  }
  const size_t plus = line.rfind('+', total);
  if (plus == std::string_view::npos) {
    return false;
  }
  mark.label = Trim(line.substr(0, plus));
  return IsLabel(mark.label) && ParseNumber(line.substr(plus + 1, total - plus - 1), mark.step) &&
         ParseNumber(line.substr(total + kTotal.size()), mark.total);
}

TraceText ParseTrace(std::string text, bool isCut) {
  TraceText result;
  const auto kept = std::make_shared<const std::string>(std::move(text));
  std::string_view rest = *kept;
  if (rest.starts_with(kByteOrderMark)) {
    rest.remove_prefix(kByteOrderMark.size());
  }
  bool skip = isCut;  // until another connect begins than the one that the text begins within
  std::uint64_t skippedTotal = 0;
  for (size_t feed = rest.find('\n'); feed != std::string_view::npos; feed = rest.find('\n')) {
    TraceMark mark;
    const std::string_view line = rest.substr(0, feed);
    rest.remove_prefix(feed + 1);
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
      result.connects.emplace_back().text = kept;
      result.connects.back().marks.reserve(kUsualMarks);
    }
    result.connects.back().marks.push_back(mark);
  }
  return result;
}

}  // namespace vpn
