#include "tests/e2e/harness/pipe_client.h"

#include <algorithm>
#include <stdexcept>

#include "tests/e2e/harness/waiting.h"

namespace e2e {
namespace {

constexpr wchar_t kPipe[] = L"\\\\.\\pipe\\TavrinService";

HANDLE OpenPipe() {
  return CreateFileW(kPipe, GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr);
}

}  // namespace

std::string LengthPrefix(std::uint32_t length) {
  std::string bytes;
  for (int shift = 0; shift < 32; shift += 8) bytes += static_cast<char>((length >> shift) & 0xFF);
  return bytes;
}

std::string Frame(std::string_view payload) {
  return LengthPrefix(static_cast<std::uint32_t>(payload.size())) + std::string(payload);
}

PipeClient::PipeClient() {
  WaitUntil("the pipe takes a client", [this] {
    pipe_ = OpenPipe();
    return pipe_ != INVALID_HANDLE_VALUE;
  });
}

void PipeClient::Close() {
  if (pipe_ != INVALID_HANDLE_VALUE) CloseHandle(pipe_);
  pipe_ = INVALID_HANDLE_VALUE;
}

void PipeClient::Write(std::string_view bytes) {
  while (!bytes.empty()) {
    DWORD written = 0;
    if (WriteFile(pipe_, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr) == 0) {
      throw std::runtime_error("pipe write err=" + std::to_string(GetLastError()));
    }
    bytes.remove_prefix(written);
  }
}

void PipeClient::WaitUntilRead() {
  if (FlushFileBuffers(pipe_) == 0) {
    throw std::runtime_error("pipe flush err=" + std::to_string(GetLastError()));
  }
}

// Asks before it reads: a blocked read could not be ended when the server hangs.
std::string PipeClient::ReadSome(std::size_t limit) {
  DWORD available = 0;
  bool open = true;
  WaitUntil("the server answers or closes the pipe", [&] {
    open = PeekNamedPipe(pipe_, nullptr, 0, nullptr, &available, nullptr) != 0;
    return !open || available > 0;
  });
  if (!open) return "";
  std::string bytes(std::min<std::size_t>(limit, available), '\0');
  DWORD count = 0;
  const auto size = static_cast<DWORD>(bytes.size());
  if (ReadFile(pipe_, bytes.data(), size, &count, nullptr) == 0) return "";
  bytes.resize(count);
  return bytes;
}

std::string PipeClient::ReadReply() {
  std::string bytes;
  std::size_t wanted = 4;
  while (bytes.size() < wanted) {
    const std::string more = ReadSome(wanted - bytes.size());
    if (more.empty()) throw std::runtime_error("the server closed the pipe without a whole reply");
    bytes += more;
    if (bytes.size() < 4 || wanted != 4) continue;
    for (std::size_t i = 0; i < 4; ++i) {
      wanted += static_cast<std::size_t>(static_cast<unsigned char>(bytes[i])) << (8 * i);
    }
  }
  return bytes.substr(4);
}

std::string PipeClient::ReadUntilClosed() {
  std::string bytes;
  for (std::string more; !(more = ReadSome(4096)).empty();) bytes += more;
  return bytes;
}

DWORD TryToConnect() {
  const HANDLE pipe = OpenPipe();
  if (pipe == INVALID_HANDLE_VALUE) return GetLastError();
  CloseHandle(pipe);
  return ERROR_SUCCESS;
}

void WaitForListening() {
  WaitUntil("the server listens", [] { return WaitNamedPipeW(kPipe, kPatience) != 0; });
}

std::string Ask(std::string_view request) {
  PipeClient client;
  client.Write(Frame(request));
  std::string reply = client.ReadReply();
  if (!client.ReadUntilClosed().empty()) throw std::runtime_error("bytes behind the reply");
  return reply;
}

}  // namespace e2e
