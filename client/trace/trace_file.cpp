#include "client/trace/trace_file.h"

#include <windows.h>
#include <share.h>

#include <cstdio>

#include "src/common/environment.h"
#include "src/common/unique_handle.h"

namespace vpn {
namespace {

// Fewer bytes when the file ends before.
bool ReadPart(std::FILE* file, std::uint64_t from, std::uint64_t count, std::string& text) {
  if (_fseeki64(file, static_cast<long long>(from), SEEK_SET) != 0) {
    return false;
  }
  text.assign(static_cast<size_t>(count), '\0');
  text.resize(std::fread(text.data(), 1, text.size(), file));
  return true;
}

}  // namespace

std::wstring TracePath(const std::wstring& serviceDirectory) {
  if (const auto named = ReadEnvironment(L"TAVRIN_TIMING", kPathCapacity)) {
    return *named;
  }
  return serviceDirectory + L"\\connect-timing.log";
}

bool FileSize(const std::wstring& path, std::uint64_t& size) {
  WIN32_FILE_ATTRIBUTE_DATA data = {};
  if (GetFileAttributesExW(path.c_str(), GetFileExInfoStandard, &data) == FALSE ||
      (data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0) {
    return false;
  }
  size = static_cast<std::uint64_t>(data.nFileSizeHigh) << 32 | data.nFileSizeLow;
  return true;
}

bool ReadFileFrom(const std::wstring& path, std::uint64_t from, std::uint64_t limit,
                  std::string& text) {
  std::uint64_t size = 0;
  if (!FileSize(path, size)) {
    return false;
  }
  const std::uint64_t count = size > from ? size - from : 0;
  const UniqueFile file(_wfsopen(path.c_str(), L"rb", _SH_DENYNO));
  return file && ReadPart(file.get(), from, count < limit ? count : limit, text);
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

}  // namespace vpn
