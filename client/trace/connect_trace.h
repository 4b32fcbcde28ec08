// The service's trace of its connects as data. Each line is a finished step; nothing in the file
// separates two connects but the label that every connect begins with, and a total that falls. Any
// line may be missing: the service skips one that it can't write at once.
#ifndef TAVRIN_CLIENT_TRACE_CONNECT_TRACE_H_
#define TAVRIN_CLIENT_TRACE_CONNECT_TRACE_H_

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace vpn {

struct TraceMark {
  std::string_view label;   // the trace's own, such as "spawn xray"; lives as long as the text
  std::uint64_t step = 0;   // milliseconds since the mark before
  std::uint64_t total = 0;  // milliseconds since the start
};

struct ConnectTrace {
  std::shared_ptr<const std::string> text;  // that the labels are parts of
  std::vector<TraceMark> marks;             // at least one

  std::uint64_t totalTime() const { return marks.back().total; }
  // Reached the last step of a start. False for one that failed, and for one that is under way.
  bool isComplete() const;
};

struct TraceText {
  std::vector<ConnectTrace> connects;  // oldest first
  std::uint64_t strangeLines = 0;      // that are no mark: torn, damaged, of another version
};

// `isCut`: the text does not begin at the file's start, so its first connect may lack its head and
// is left out. A last line without its line feed is being written and does not count.
TraceText ParseTrace(std::string text, bool isCut = false);

// True for a whole line of the trace; blanks and a carriage return at its end don't matter. The
// mark's label is a part of the line.
bool ParseTraceLine(std::string_view line, TraceMark& mark);

}  // namespace vpn

#endif  // TAVRIN_CLIENT_TRACE_CONNECT_TRACE_H_
