#include "tests/bench/service/exchange.h"

#include <windows.h>

#include <cstdint>
#include <cstring>
#include <stdexcept>

#include "tests/e2e/harness/pipe_client.h"
#include "tests/e2e/harness/waiting.h"

namespace bench {
namespace {

HANDLE Open(const wchar_t* pipe, DWORD pause) {
  const ULONGLONG start = GetTickCount64();
  for (;;) {
    const HANDLE handle =
        CreateFileW(pipe, GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    if (handle != INVALID_HANDLE_VALUE) return handle;
    if (GetTickCount64() - start > e2e::kPatience) throw std::runtime_error("nobody at the pipe");
    Sleep(pause);
  }
}

void ReadExact(HANDLE pipe, char* bytes, std::size_t size) {
  while (size > 0) {
    DWORD count = 0;
    if (ReadFile(pipe, bytes, static_cast<DWORD>(size), &count, nullptr) == FALSE || count == 0) {
      throw std::runtime_error("no whole reply");
    }
    bytes += count;
    size -= count;
  }
}

std::string ReadReply(HANDLE pipe) {
  char head[sizeof(std::uint32_t)] = {};
  ReadExact(pipe, head, sizeof(head));
  std::uint32_t length = 0;
  std::memcpy(&length, head, sizeof(length));
  std::string reply(length, '\0');
  ReadExact(pipe, reply.data(), reply.size());
  return reply;
}

}  // namespace

std::string Exchange(const wchar_t* pipe, const std::string& request, unsigned long pause) {
  const std::string frame = e2e::Frame(request);
  const HANDLE handle = Open(pipe, pause);
  DWORD written = 0;
  WriteFile(handle, frame.data(), static_cast<DWORD>(frame.size()), &written, nullptr);
  std::string reply = ReadReply(handle);
  CloseHandle(handle);
  return reply;
}

}  // namespace bench
