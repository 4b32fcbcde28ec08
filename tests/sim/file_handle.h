// A file that CreateFileW opened, for writing at its end.
#ifndef TAVRIN_TESTS_SIM_FILE_HANDLE_H_
#define TAVRIN_TESTS_SIM_FILE_HANDLE_H_

#include <win/files.h>

#include <memory>
#include <string>
#include <utility>

#include "tests/sim/call.h"
#include "tests/sim/handles.h"
#include "tests/sim/streams.h"
#include "tests/sim/text.h"

namespace sim {

class FileHandle : public Object {
 public:
  FileHandle(Streams& streams, std::unique_ptr<Stream> stream)
      : streams_(streams), stream_(std::move(stream)) {}

  std::string Describe() const override { return "file " + Narrow(stream_->node->path); }
  void OnLastHandleClosed() override { streams_.Close(*stream_); }

  bool Append(const std::string& bytes) {
    return streams_.WriteBytes(*stream_, bytes.data(), bytes.size());
  }
  // The file's one range, which one handle can hold: false when another does, and when this one
  // does not.
  bool LockRange();
  bool UnlockRange();

 private:
  Streams& streams_;
  std::unique_ptr<Stream> stream_;
};

// Of what CreateFileW does with files, only this: open one for writing, and make it when it is not
// there. As on Windows the last error then tells which of both it was.
HANDLE OpenToAppend(const Call& call, const std::wstring& name, DWORD access, DWORD share,
                    DWORD disposition);

// WriteFile, at the place that stands for the end.
BOOL WriteAtFileEnd(const Call& call, FileHandle& file, const std::string& bytes,
                    const OVERLAPPED* place, DWORD* written);

}  // namespace sim

#endif  // TAVRIN_TESTS_SIM_FILE_HANDLE_H_
