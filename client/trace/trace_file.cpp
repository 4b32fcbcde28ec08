#include "client/trace/trace_file.h"

#include <share.h>

#include <algorithm>
#include <cstdio>

#include "src/common/environment.h"
#include "src/common/unique_handle.h"

namespace vpn {
namespace {

// Fills `text`, whose size says how much is wanted; it gets shorter when the file ends before. The
// file is open for nothing but the reading.
bool ReadPart(const std::wstring& path, std::uint64_t from, std::string& text) {
  size_t count = 0;
  {
    const UniqueFile file(_wfsopen(path.c_str(), L"rb", _SH_DENYNO));
    if (!file ||
        std::setvbuf(file.get(), nullptr, _IONBF, 0) != 0 ||  // no byte more than is wanted
        _fseeki64(file.get(), static_cast<long long>(from), SEEK_SET) != 0) {
      return false;
    }
    count = std::fread(text.data(), 1, text.size(), file.get());
  }
  text.resize(count);
  return true;
}

bool FileFacts(const std::wstring& path, WIN32_FILE_ATTRIBUTE_DATA& facts) {
  return GetFileAttributesExW(path.c_str(), GetFileExInfoStandard, &facts) != FALSE &&
         (facts.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0;
}

}  // namespace

std::wstring TracePath(const std::wstring& serviceDirectory) {
  if (const auto named = ReadEnvironment(L"TAVRIN_TIMING", kPathCapacity)) {
    return *named;
  }
  return serviceDirectory + L"\\connect-timing.log";
}

bool FileSize(const std::wstring& path, std::uint64_t& size) {
  WIN32_FILE_ATTRIBUTE_DATA facts = {};
  if (!FileFacts(path, facts)) {
    return false;
  }
  size = static_cast<std::uint64_t>(facts.nFileSizeHigh) << 32 | facts.nFileSizeLow;
  return true;
}

bool LastWrite(const std::wstring& path, FILETIME& moment) {
  WIN32_FILE_ATTRIBUTE_DATA facts = {};
  if (!FileFacts(path, facts)) {
    return false;
  }
  moment = facts.ftLastWriteTime;
  return true;
}

bool ReadFileFrom(const std::wstring& path, std::uint64_t from, std::uint64_t limit,
                  std::string& text) {
  std::uint64_t size = 0;
  if (!FileSize(path, size)) {
    return false;
  }
  const std::uint64_t count = size > from ? size - from : 0;
  text.assign(static_cast<size_t>(std::min(count, limit)), '\0');
  return ReadPart(path, from, text);
}

bool ReadFileTail(const std::wstring& path, std::uint64_t limit, FileTail& tail) {
  std::uint64_t size = 0;
  if (!FileSize(path, size)) {
    return false;
  }
  const std::uint64_t from = size > limit ? size - limit : 0;
  if (!ReadFileFrom(path, from, limit, tail.text)) {
    return false;
  }
  tail.isCut = from > 0;
  if (tail.isCut) {
    const size_t feed = tail.text.find('\n');
    tail.text.erase(0, feed == std::string::npos ? tail.text.size() : feed + 1);
  }
  return true;
}

bool ReadFileEnd(const std::wstring& path, std::uint64_t before, std::uint64_t limit,
                 std::string& text) {
  std::uint64_t size = 0;
  if (!FileSize(path, size)) {
    return false;
  }
  const std::uint64_t appendedAt = size < before ? 0 : before;
  const std::uint64_t from = size > limit ? size - limit : 0;
  return ReadFileFrom(path, std::max(appendedAt, from), limit, text);
}

}  // namespace vpn
