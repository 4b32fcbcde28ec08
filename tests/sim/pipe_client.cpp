#include "tests/sim/pipe_client.h"

#include <algorithm>
#include <chrono>

#include <win/errors.h>

namespace sim {
namespace {

constexpr std::chrono::seconds kPatience(20);

}  // namespace

std::uint32_t PipeClient::TryConnect() {
  Close();
  return machine_.pipes.Connect(name_, &end_);
}

bool PipeClient::Connect() {
  MachineLock lock = machine_.Lock();
  return machine_.core().changed.wait_for(lock, kPatience, [this] { return TryConnect() == 0; });
}

bool PipeClient::Write(std::string_view bytes) {
  MachineLock lock = machine_.Lock();
  std::uint32_t error = kPending;
  machine_.core().changed.wait_for(lock, kPatience, [&] {
    std::uint32_t count = 0;
    error = end_->Write(bytes.data(), static_cast<std::uint32_t>(bytes.size()), &count);
    bytes.remove_prefix(count);
    if (count > 0) {
      machine_.core().changed.notify_all();
    }
    return error != kPending;
  });
  return error == 0;
}

std::string PipeClient::Read(size_t count) {
  MachineLock lock = machine_.Lock();
  std::string bytes;
  machine_.core().changed.wait_for(lock, kPatience, [&] {
    char chunk[4096];
    std::uint32_t got = 0;
    std::uint32_t error = 0;
    const size_t before = bytes.size();
    while (error == 0 && bytes.size() < count) {
      const size_t wanted = std::min(sizeof chunk, count - bytes.size());
      error = end_->Read(chunk, static_cast<std::uint32_t>(wanted), &got);
      bytes.append(chunk, got);
    }
    if (bytes.size() > before) {
      machine_.core().changed.notify_all();
    }
    return bytes.size() == count || error != kPending;
  });
  return bytes;
}

std::string PipeClient::ReadToEnd() {
  return Read(std::string::npos);
}

void PipeClient::Close() {
  const MachineLock lock = machine_.Lock();
  if (end_) {
    end_->Close();
    end_.reset();
    machine_.core().changed.notify_all();
  }
}

std::string FrameHeader(std::uint32_t length) {
  std::string header;
  for (int shift = 0; shift < 32; shift += 8) {
    header += static_cast<char>((length >> shift) & 0xFF);
  }
  return header;
}

bool PipeClient::SendFrame(std::string_view payload) {
  return Write(FrameHeader(static_cast<std::uint32_t>(payload.size())) + std::string(payload));
}

std::optional<std::string> PipeClient::ReceiveFrame() {
  const std::string header = Read(4);
  if (header.size() < 4) {
    return std::nullopt;
  }
  std::uint32_t length = 0;
  for (size_t i = 4; i-- > 0;) {
    length = (length << 8) | static_cast<unsigned char>(header[i]);
  }
  const std::string payload = Read(length);
  return payload.size() == length ? std::optional(payload) : std::nullopt;
}

std::optional<std::string> PipeClient::Exchange(Machine& machine, std::string_view payload) {
  PipeClient client(machine);
  return client.Connect() && client.SendFrame(payload) ? client.ReceiveFrame() : std::nullopt;
}

}  // namespace sim
