#include "client/trace/trace_page.h"

#include <algorithm>
#include <numeric>

#include "client/text/amounts.h"
#include "client/trace/page_style.h"
#include "client/trace/medians.h"
#include "src/common/text.h"

namespace vpn {
namespace {

constexpr std::uint64_t kBarRoom = 1000;     // the width that stands for a whole connect
constexpr std::uint64_t kChartHeight = 160;  // of the chart over all connects
constexpr std::uint64_t kChartStep = 24;     // from one connect to the next

std::string Utf8(const std::wstring& text) {
  return WideToUtf8(text);
}

std::string Number(std::uint64_t value) {
  return std::to_string(value);
}

// `part` of `room`, in the proportion of `value` to `whole`, with one decimal.
std::string Scaled(std::uint64_t value, std::uint64_t whole, std::uint64_t room) {
  const std::uint64_t tenths = whole == 0 ? 0 : (value * room * 10 + whole / 2) / whole;
  return Number(tenths / 10) + "." + Number(tenths % 10);
}

std::string Element(const char* name, const std::string& attributes, const std::string& content) {
  const std::string head = attributes.empty() ? std::string() : " " + attributes;
  return "<" + std::string(name) + head + ">" + content + "</" + name + ">";
}

// The trace's own labels may hold any character of ASCII.
std::string Escaped(const std::string& text) {
  std::string escaped;
  for (const char byte : text) {
    escaped += byte == '&'   ? "&amp;"
               : byte == '<' ? "&lt;"
               : byte == '>' ? "&gt;"
                             : std::string(1, byte);
  }
  return escaped;
}

std::string Bar(const Step& step, std::uint64_t total, bool isLongest) {
  const std::string kind = isLongest ? "bar longest" : step.isDone ? "bar" : "bar open";
  return "<svg viewBox=\"0 0 1000 16\" preserveAspectRatio=\"none\" role=\"img\"><rect class=\"" +
         kind + "\" data-ms=\"" + Number(step.time) + "\" data-start=\"" + Number(step.start) +
         "\" x=\"" + Scaled(step.start, total, kBarRoom) + "\" y=\"2\" width=\"" +
         Scaled(step.time, total, kBarRoom) + "\" height=\"12\"/></svg>";
}

std::string StepRow(const Step& step, std::uint64_t total, bool isLongest, std::int64_t median) {
  const std::string medianText =
      median < 0 ? "–" : Utf8(MillisecondsText(static_cast<std::uint64_t>(median)));
  return "<tr>" + Element("th", "scope=\"row\"", Utf8(NamesOfStep(step.index).done)) +
         Element("td", "class=\"number\"", Utf8(MillisecondsText(step.time))) +
         Element("td", "class=\"track\"", Bar(step, total, isLongest)) +
         Element("td", "class=\"number median\"", medianText) + "</tr>\n";
}

std::string EndNote(const StepList& steps) {
  const size_t next = std::min(NextStep(steps), kStepCount - 1);
  return Element("p", "class=\"end\"",
                 "Not complete: it ended before “" + Utf8(NamesOfStep(next).done) + "”.");
}

std::string UnknownNote(const StepList& steps) {
  return steps.unknown.empty() ? ""
                               : Element("p", "class=\"median\"",
                                         "Marks " + Escaped(Utf8(UnknownMarksText(steps))) + ".");
}

std::string Waterfall(const ConnectTrace& connect, size_t number,
                      const std::vector<std::int64_t>& medians) {
  const StepList steps = StepsOf(connect);
  const std::uint64_t total = connect.totalTime();
  const size_t longest = LongestStep(steps.steps);
  std::string rows;
  for (size_t at = 0; at < steps.steps.size(); ++at) {
    const bool isLongest = total > 0 && at == longest;
    rows += StepRow(steps.steps[at], total, isLongest, medians[steps.steps[at].index]);
  }
  const std::string head =
      "<tr><th scope=\"col\">Step</th><th scope=\"col\" class=\"number\">Time</th>"
      "<th scope=\"col\"></th><th scope=\"col\" class=\"number median\">Median before</th></tr>\n";
  return "<section data-total=\"" + Number(total) + "\">\n" +
         Element("h2", "", "Connect " + Number(number) + ": " + Utf8(SecondsText(total))) +
         (connect.isComplete() ? "" : EndNote(steps)) + UnknownNote(steps) + "\n<table>\n" + head +
         rows + "</table>\n</section>\n";
}

std::uint64_t LongestTotal(const std::vector<ConnectTrace>& connects) {
  std::uint64_t longest = 1;
  for (const ConnectTrace& connect : connects) {
    longest = std::max(longest, connect.totalTime());
  }
  return longest;
}

// The total of each connect, oldest first.
std::string Chart(const std::vector<ConnectTrace>& connects) {
  const std::uint64_t longest = LongestTotal(connects);
  const std::uint64_t width = std::max<std::uint64_t>(connects.size() * kChartStep, 240);
  std::string bars;
  for (size_t at = 0; at < connects.size(); ++at) {
    const std::uint64_t total = connects[at].totalTime();
    const std::uint64_t height = total * kChartHeight / longest;
    bars += "<rect class=\"" + std::string(connects[at].isComplete() ? "column" : "column failed") +
            "\" data-total=\"" + Number(total) + "\" x=\"" + Number(at * kChartStep + 4) +
            "\" y=\"" + Number(kChartHeight - height) + "\" width=\"16\" height=\"" +
            Number(height) + "\"><title>" + Number(at + 1) + ": " + Utf8(SecondsText(total)) +
            "</title></rect>\n";
  }
  return "<div class=\"chart\"><svg width=\"" + Number(width) + "\" height=\"" +
         Number(kChartHeight) + "\" role=\"img\" aria-label=\"total time of each connect\">\n" +
         bars + "</svg></div>\n";
}

std::string Overview(const std::vector<ConnectTrace>& connects) {
  RunningMedian totals;
  std::uint64_t failed = 0;
  for (const ConnectTrace& connect : connects) {
    if (connect.isComplete()) {
      totals.add(connect.totalTime());
    } else {
      ++failed;
    }
  }
  std::string text = Utf8(CountText(connects.size(), L"connect", L"connects")) + ", " +
                     (failed == 0 ? "all complete" : Number(failed) + " not complete");
  const std::int64_t median = totals.value();
  if (median >= 0) {
    text += "; median " + Utf8(SecondsText(static_cast<std::uint64_t>(median)));
  }
  return Element(
      "p", "class=\"overview\"",
      text + ". The tallest column stands for " + Utf8(SecondsText(LongestTotal(connects))) + ".");
}

}  // namespace

std::string TracePage(const std::vector<ConnectTrace>& connects) {
  StepMedians before;
  std::vector<std::string> sections;
  sections.reserve(connects.size());
  for (const ConnectTrace& connect : connects) {
    sections.push_back(Waterfall(connect, sections.size() + 1, before.times()));
    before.add(connect);
  }
  const std::string latestFirst =
      std::accumulate(sections.rbegin(), sections.rend(), std::string());
  return "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
         "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n"
         "<title>Tavrin: connects</title>\n<style>" +
         std::string(kPageStyle) +
         "</style>\n</head>\n<body>\n<h1>Connects, the latest first</h1>\n" + Overview(connects) +
         "\n" + Chart(connects) + latestFirst + "</body>\n</html>\n";
}

}  // namespace vpn
