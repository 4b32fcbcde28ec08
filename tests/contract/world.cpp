// What is the same in both worlds.
#include "tests/contract/world.h"

#include <share.h>

#include <cstdio>

namespace contract {

std::wstring ProgramPath() {
  std::wstring path(1000, L'\0');
  path.resize(GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size())));
  return path;
}

std::string Bytes(const std::wstring& path) {
  std::string bytes;
  std::FILE* const file = _wfsopen(path.c_str(), L"rb", _SH_DENYNO);
  if (file == nullptr) {
    return "(not opened)";
  }
  char chunk[4096];
  for (size_t count = 0; (count = std::fread(chunk, 1, sizeof(chunk), file)) > 0;) {
    bytes.append(chunk, count);
  }
  std::fclose(file);
  return bytes;
}

std::wstring ContractTest::Put(const std::wstring& name, const std::string& bytes) {
  const std::wstring path = world.directory() + L"\\" + name;
  std::FILE* const file = _wfsopen(path.c_str(), L"wb", _SH_DENYNO);
  EXPECT_NE(file, nullptr);
  if (file != nullptr) {
    std::fwrite(bytes.data(), 1, bytes.size(), file);
    std::fclose(file);
  }
  return path;
}

}  // namespace contract
