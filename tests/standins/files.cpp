#include "tests/standins/files.h"

#include <windows.h>

namespace standins {
namespace {

constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

bool WriteWith(const std::wstring& path, DWORD access, DWORD disposition, std::string_view text) {
  const HANDLE file = CreateFileW(path.c_str(), access, kShareAll, nullptr, disposition,
                                  FILE_ATTRIBUTE_NORMAL, nullptr);
  if (file == INVALID_HANDLE_VALUE) return false;
  DWORD written = 0;
  const DWORD size = static_cast<DWORD>(text.size());
  const bool done = WriteFile(file, text.data(), size, &written, nullptr) != 0 && written == size;
  CloseHandle(file);
  return done;
}

}  // namespace

std::optional<std::string> ReadWholeFile(const std::wstring& path) {
  const HANDLE file = CreateFileW(path.c_str(), GENERIC_READ, kShareAll, nullptr, OPEN_EXISTING,
                                  FILE_ATTRIBUTE_NORMAL, nullptr);
  if (file == INVALID_HANDLE_VALUE) return std::nullopt;
  std::string content;
  char buffer[4096];
  DWORD count = 0;
  while (ReadFile(file, buffer, sizeof(buffer), &count, nullptr) != 0 && count > 0) {
    content.append(buffer, count);
  }
  CloseHandle(file);
  return content;
}

bool ReplaceWholeFile(const std::wstring& path, std::string_view content) {
  const std::wstring neighbour = path + L".new";
  return WriteWith(neighbour, GENERIC_WRITE, CREATE_ALWAYS, content) &&
         MoveFileExW(neighbour.c_str(), path.c_str(), MOVEFILE_REPLACE_EXISTING) != 0;
}

bool AppendToFile(const std::wstring& path, std::string_view text) {
  return WriteWith(path, FILE_APPEND_DATA, OPEN_ALWAYS, text);
}

}  // namespace standins
