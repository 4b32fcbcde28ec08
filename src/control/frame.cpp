#include "src/control/frame.h"

#include "src/control/frame_internal.h"

#include <array>
#include <cstdint>

namespace vpn {
namespace {

using LengthBytes = std::array<unsigned char, 4>;

LengthBytes EncodeLength(std::uint32_t length) {
  LengthBytes bytes{};
  for (unsigned char& byte : bytes) {
    byte = static_cast<unsigned char>(length & 0xFF);
    length >>= 8;
  }
  return bytes;
}

std::uint32_t DecodeLength(const LengthBytes& bytes) {
  return static_cast<std::uint32_t>(bytes[0]) | static_cast<std::uint32_t>(bytes[1]) << 8 |
         static_cast<std::uint32_t>(bytes[2]) << 16 | static_cast<std::uint32_t>(bytes[3]) << 24;
}

}  // namespace

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
  LengthBytes header{};
  if (pipe == nullptr || !ReadExact(pipe, header.data(), header.size())) {
    return false;
  }
  const std::uint32_t length = DecodeLength(header);
  if (length == 0 || length > kMaxPayload) {
    return false;
  }
  text.assign(length, '\0');
  return ReadExact(pipe, text.data(), text.size());
}

bool WriteFrame(HANDLE pipe, const std::string& text) {
  if (pipe == nullptr || text.size() > kMaxPayload) {
    return false;
  }
  const LengthBytes header = EncodeLength(static_cast<std::uint32_t>(text.size()));
  if (!WriteExact(pipe, header.data(), header.size()) ||
      !WriteExact(pipe, text.data(), text.size())) {
    return false;
  }
  // The reply must reach the client before the server disconnects; a client that left is no fault.
  (void)FlushFileBuffers(pipe);
  return true;
}

}  // namespace vpn
