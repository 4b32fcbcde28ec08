#include "src/control/frame.h"

#include "src/control/frame_internal.h"

#include <cstdint>

namespace vpn {
bool ReadExact(HANDLE pipe, void* buffer, std::size_t size) {
  char* const bytes = static_cast<char*>(buffer);
  std::size_t done = 0;
  while (done < size) {
    DWORD count = 0;
    if (ReadFile(pipe, bytes + done, static_cast<DWORD>(size - done), &count, nullptr) == FALSE ||
        count == 0) {
      return false;
    }
    done += count;
  }
  return true;
}

bool WriteExact(HANDLE pipe, const void* buffer, std::size_t size) {
  const char* const bytes = static_cast<const char*>(buffer);
  std::size_t done = 0;
  while (done < size) {
    DWORD count = 0;
    if (WriteFile(pipe, bytes + done, static_cast<DWORD>(size - done), &count, nullptr) == FALSE) {
      return false;
    }
    if (count == 0) {
      SetLastError(ERROR_WRITE_FAULT);
      return false;
    }
    done += count;
  }
  return true;
}

bool ReadFrame(HANDLE pipe, std::string& text) {
  // A length stands in memory as on the pipe: Windows runs on little-endian machines alone.
  std::uint32_t length = 0;
  if (pipe == nullptr || !ReadExact(pipe, &length, sizeof(length)) || length == 0 ||
      length > kMaxPayload) {
    return false;
  }
  text.assign(length, '\0');
  return ReadExact(pipe, text.data(), text.size());
}

bool WriteFrame(HANDLE pipe, const std::string& text) {
  if (pipe == nullptr || text.size() > kMaxPayload) {
    return false;
  }
  const auto length = static_cast<std::uint32_t>(text.size());
  if (!WriteExact(pipe, &length, sizeof(length)) || !WriteExact(pipe, text.data(), text.size())) {
    return false;
  }
  // The reply must reach the client before the server disconnects; a client that left is no fault.
  (void)FlushFileBuffers(pipe);
  return true;
}

}  // namespace vpn
