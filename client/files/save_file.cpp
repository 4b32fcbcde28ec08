#include "client/files/save_file.h"

#include <windows.h>
#include <share.h>

#include <cstdio>

#include "src/common/unique_handle.h"

namespace vpn {
namespace {

// True when all of it has reached the platform.
bool WriteAll(const std::wstring& path, std::string_view bytes) {
  UniqueFile file(_wfsopen(path.c_str(), L"wb", _SH_DENYWR));
  if (!file) {
    return false;
  }
  const bool isWritten =
      std::fwrite(bytes.data(), 1, bytes.size(), file.get()) == bytes.size() &&
      std::fflush(file.get()) == 0;
  return std::fclose(file.release()) == 0 && isWritten;
}

}  // namespace

bool SaveFile(const std::wstring& path, std::string_view bytes) {
  const std::wstring part = path + L".part";
  if (WriteAll(part, bytes) &&
      MoveFileExW(part.c_str(), path.c_str(), MOVEFILE_REPLACE_EXISTING) != FALSE) {
    return true;
  }
  (void)DeleteFileW(part.c_str());  // perhaps it could not even be made
  return false;
}

}  // namespace vpn
