#include "client/report/whole_file.h"

#include <windows.h>
#include <share.h>

#include <cstdio>

#include "src/common/unique_handle.h"

namespace vpn {
namespace {

// A full disk shows at any of the three: the stream has a buffer, and so has the disk.
bool WriteAll(UniqueFile file, std::string_view bytes) {
  const bool isTaken = std::fwrite(bytes.data(), 1, bytes.size(), file.get()) == bytes.size();
  const bool isFlushed = std::fflush(file.get()) == 0;
  return std::fclose(file.release()) == 0 && isTaken && isFlushed;
}

}  // namespace

bool WriteWholeFile(const std::wstring& path, std::string_view bytes) {
  const std::wstring part = path + L".part";
  UniqueFile file(_wfsopen(part.c_str(), L"wb", _SH_DENYWR));
  if (!file) {
    return false;
  }
  if (!WriteAll(std::move(file), bytes) ||
      MoveFileExW(part.c_str(), path.c_str(), MOVEFILE_REPLACE_EXISTING) == FALSE) {
    (void)DeleteFileW(part.c_str());  // what can't be deleted either stays
    return false;
  }
  return true;
}

}  // namespace vpn
