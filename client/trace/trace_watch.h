// The connect that is under way, as the trace file grows.
#ifndef TAVRIN_CLIENT_TRACE_TRACE_WATCH_H_
#define TAVRIN_CLIENT_TRACE_TRACE_WATCH_H_

#include <cstdint>
#include <string>

#include "client/trace/connect_trace.h"

namespace vpn {

class TraceWatch {
 public:
  explicit TraceWatch(std::wstring path) : path_(std::move(path)) {}

  // What is written from now on counts.
  void begin();

  // A look at the file's size, and a read when it has grown and several looks in a row saw no
  // change: while the file is open for reading, the service would lose the line that it wants to
  // write, and its short steps follow each other closely. `now` counts the milliseconds since the
  // request.
  void look(std::uint64_t now);

  // A read in any case, for the end.
  void readNow();

  // Null while there is none. Valid until the next call.
  const ConnectTrace* connect() const;

  // When a look found the file grown, at last.
  std::uint64_t grownAt() const { return grownAt_; }

 private:
  std::wstring path_;
  std::uint64_t from_ = 0;      // where the new lines begin
  std::uint64_t lastSize_ = 0;  // at the last look
  int equalLooks_ = 0;          // that found this size
  std::uint64_t grownAt_ = 0;
  std::uint64_t readSize_ = 0;  // when it was read
  TraceText text_;
};

}  // namespace vpn

#endif  // TAVRIN_CLIENT_TRACE_TRACE_WATCH_H_
