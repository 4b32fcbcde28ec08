#include "client/doctor/file_look.h"

#include <windows.h>
#include <share.h>

#include <cstdio>
#include <limits>

#include "src/common/unique_handle.h"

namespace vpn {
namespace {

constexpr size_t kStart = 2;  // bytes

FileState StateOfPath(const std::wstring& path, std::uint64_t& size) {
  WIN32_FILE_ATTRIBUTE_DATA data = {};
  if (GetFileAttributesExW(path.c_str(), GetFileExInfoStandard, &data) == FALSE) {
    const DWORD error = GetLastError();
    const bool isMissing = error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND;
    return isMissing ? FileState::kMissing : FileState::kUnreadable;
  }
  size = static_cast<std::uint64_t>(data.nFileSizeHigh) << 32 | data.nFileSizeLow;
  return (data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0 ? FileState::kDirectory
                                                                 : FileState::kReadable;
}

FileState Look(const std::wstring& path, std::uint64_t most, std::string& start) {
  std::uint64_t size = 0;
  const FileState state = StateOfPath(path, size);
  if (state != FileState::kReadable) {
    return state;
  }
  // The size alone does not say that anything can be read: another program may hold the file.
  const UniqueFile file(_wfsopen(path.c_str(), L"rb", _SH_DENYNO));
  if (!file) {
    return FileState::kUnreadable;
  }
  start.assign(kStart, '\0');
  start.resize(std::fread(start.data(), 1, start.size(), file.get()));
  if (start.empty()) {
    return size == 0 ? FileState::kEmpty : FileState::kUnreadable;
  }
  return size > most ? FileState::kHuge : FileState::kReadable;
}

}  // namespace

FileState LookAtName(const std::wstring& path) {
  std::uint64_t size = 0;
  return StateOfPath(path, size);
}

FileState LookAtFile(const std::wstring& path, std::uint64_t most) {
  std::string start;
  return Look(path, most, start);
}

FileState LookAtProgram(const std::wstring& path, std::string& start) {
  return Look(path, std::numeric_limits<std::uint64_t>::max(), start);
}

std::wstring WordsFor(FileState state) {
  switch (state) {
    case FileState::kMissing:
      return L"is not there";
    case FileState::kUnreadable:
      return L"can't be read";
    case FileState::kDirectory:
      return L"is a directory";
    case FileState::kEmpty:
      return L"is empty";
    default:
      return L"is far too large";
  }
}

Finding BadFile(const std::wstring& path, FileState state, const std::wstring& cure) {
  const std::wstring text = path + L" " + WordsFor(state);
  if (state == FileState::kUnreadable) {
    return Remark(text,
                  L"run this with administrator's rights; if it stays so, another program "
                  L"holds the file, or the disk is damaged");
  }
  return Problem(text, cure);
}

}  // namespace vpn
