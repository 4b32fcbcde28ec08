#include "src/common/files.h"

#include <windows.h>
#include <share.h>

#include <array>
#include <cstdio>
#include <utility>

#include "src/common/unique_handle.h"

namespace vpn {

bool ReadFileBytes(const std::wstring& path, std::string& text) {
  const UniqueFile file(_wfsopen(path.c_str(), L"rb", _SH_DENYNO));
  if (!file) {
    return false;
  }
  std::string content;
  std::array<char, 4096> chunk{};
  size_t count = 0;
  do {
    count = std::fread(chunk.data(), 1, chunk.size(), file.get());
    content.append(chunk.data(), count);
  } while (count == chunk.size());
  text = std::move(content);
  return true;
}

bool WriteFileBytes(const std::wstring& path, std::string_view bytes) {
  const UniqueFile file(_wfsopen(path.c_str(), L"wb", _SH_DENYNO));
  if (!file) {
    return false;
  }
  (void)std::fwrite(bytes.data(), 1, bytes.size(), file.get());
  return true;
}

}  // namespace vpn
