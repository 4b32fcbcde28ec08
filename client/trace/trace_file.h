// The trace file: where it is, and its end.
#ifndef TAVRIN_CLIENT_TRACE_TRACE_FILE_H_
#define TAVRIN_CLIENT_TRACE_TRACE_FILE_H_

#include <windows.h>

#include <cstdint>
#include <string>

namespace vpn {

// What TAVRIN_TIMING names in this process's environment, else the file beside the service's
// executable.
std::wstring TracePath(const std::wstring& serviceDirectory);

struct FileTail {
  std::string text;
  bool isCut = false;  // the file holds more in front of it
};

// At most the last `limit` bytes, beginning behind a line feed when something was cut off. False
// when the file can't be opened. The file is open for as short as can be: while it is, the service
// could not write a line.
bool ReadFileTail(const std::wstring& path, std::uint64_t limit, FileTail& tail);

// From `from` to the end, and at most `limit` bytes of it. False when the file can't be opened.
bool ReadFileFrom(const std::wstring& path, std::uint64_t from, std::uint64_t limit,
                  std::string& text);

// The end of what was appended since the file had `before` bytes, at most `limit` bytes of it; all
// of a file that is smaller than that, since it was made anew. False when it can't be opened.
bool ReadFileEnd(const std::wstring& path, std::uint64_t before, std::uint64_t limit,
                 std::string& text);

// Both without opening the file's content. False when there is none.
bool FileSize(const std::wstring& path, std::uint64_t& size);
bool LastWrite(const std::wstring& path, FILETIME& moment);

inline constexpr std::uint64_t kTraceLimit = 1 << 20;  // about 1500 connects

}  // namespace vpn

#endif  // TAVRIN_CLIENT_TRACE_TRACE_FILE_H_
