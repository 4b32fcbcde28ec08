#include "client/trace/trace_watch.h"

#include <utility>

#include "client/trace/trace_file.h"

namespace vpn {
namespace {

constexpr int kRestLooks = 5;  // with one size, in a row

}  // namespace

void TraceWatch::begin() {
  std::uint64_t size = 0;
  (void)FileSize(path_, size);  // no file yet: everything in it will be new
  from_ = lastSize_ = readSize_ = size;
  equalLooks_ = 0;
  text_ = TraceText();
}

void TraceWatch::look(std::uint64_t now) {
  std::uint64_t size = 0;
  if (!FileSize(path_, size)) {
    return;
  }
  ++equalLooks_;
  if (size != lastSize_) {
    lastSize_ = size;
    equalLooks_ = 0;
    grownAt_ = now;
  }
  if (equalLooks_ >= kRestLooks && size != readSize_) {
    readNow();
  }
}

void TraceWatch::readNow() {
  std::uint64_t size = 0;
  std::string bytes;
  if (!FileSize(path_, size)) {
    return;
  }
  if (size < from_) {
    from_ = 0;  // somebody deleted the file meanwhile
  }
  if (ReadFileFrom(path_, from_, kTraceLimit, bytes)) {
    text_ = ParseTrace(std::move(bytes));
    readSize_ = size;
  }
}

const ConnectTrace* TraceWatch::connect() const {
  return text_.connects.empty() ? nullptr : &text_.connects.back();
}

}  // namespace vpn
