// The C runtime's streams: ordinary FILE*s of the host, whose bytes come from and go to the
// machine's files and console.
#ifndef TAVRIN_TESTS_SIM_STREAMS_H_
#define TAVRIN_TESTS_SIM_STREAMS_H_

#include <cstdint>
#include <cstdio>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "tests/sim/core.h"
#include "tests/sim/files.h"
#include "tests/sim/handles.h"

namespace sim {

// How a mode text opens a file.
struct OpenMode {
  bool write = false;
  bool truncate = false;
  bool append = false;
  bool text = false;     // a line feed becomes CR LF
  bool unicode = false;  // ccs=UTF-8: takes wide text only, and a new file gets a byte-order mark
};
// False for a mode that the machine doesn't know.
bool ParseOpenMode(const std::wstring& text, OpenMode* mode);

struct Sharing {
  bool denyRead = false;
  bool denyWrite = false;
};

struct Stream {
  std::shared_ptr<FileNode> node;  // null for the console
  std::string* console = nullptr;
  OpenMode mode;
  Sharing sharing;
  size_t position = 0;
  int descriptor = 0;
  wchar_t highSurrogate = 0;  // one that waits for its other half
};

class Streams {
 public:
  Streams(Core& core, Files& files, std::vector<std::string>& violations)
      : core_(core), files_(files), violations_(violations) {}

  // Both: errno, or 0 and the stream. The first one is a file without a FILE*.
  int OpenFile(const std::wstring& path, const OpenMode& mode, Sharing sharing,
               std::unique_ptr<Stream>* stream);
  int Open(const std::wstring& path, const OpenMode& mode, Sharing sharing, std::string origin,
           std::uint32_t processId, std::FILE** file);
  std::FILE* OpenConsole(std::string* sink);
  // Null for a FILE* that is not of this machine.
  Stream* Find(std::FILE* file);
  // One unit of wide text; false when it can't be written.
  bool PutUnit(Stream& stream, wchar_t unit);
  void DropAllOf(std::uint32_t processId);
  std::vector<OpenItem> Open() const;

  // For the callbacks behind the FILE*s.
  size_t ReadBytes(Stream& stream, char* buffer, size_t size);
  bool WriteBytes(Stream& stream, const char* bytes, size_t size);
  void Close(Stream& stream);

 private:
  struct Entry {
    std::unique_ptr<Stream> stream;
    OpenItem item;
  };
  std::FILE* Attach(std::unique_ptr<Stream> stream, OpenItem item);
  bool Append(Stream& stream, const std::string& bytes);

  Core& core_;
  Files& files_;
  std::vector<std::string>& violations_;
  int nextDescriptor_ = 3;
  std::map<std::FILE*, Entry> open_;
  // Gone with the machine, so that a FILE* that a dead process left open does no harm then.
  std::shared_ptr<Streams*> self_ = std::make_shared<Streams*>(this);
};

}  // namespace sim

#endif  // TAVRIN_TESTS_SIM_STREAMS_H_
