// A client of a named pipe, on a test's own thread. It is no part of the product: its calls are
// neither logged nor counted, and faults don't touch it. Where it waits it waits in real time, for
// 20 seconds at most.
#ifndef TAVRIN_TESTS_SIM_PIPE_CLIENT_H_
#define TAVRIN_TESTS_SIM_PIPE_CLIENT_H_

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "tests/sim/machine.h"

namespace sim {

class PipeClient {
 public:
  explicit PipeClient(Machine& machine, std::wstring name = L"\\\\.\\pipe\\TavrinService")
      : machine_(machine), name_(std::move(name)) {}
  ~PipeClient() { Close(); }
  PipeClient(const PipeClient&) = delete;
  PipeClient& operator=(const PipeClient&) = delete;

  // One attempt: 0, or the Win32 code (2: no such pipe, 231: busy).
  std::uint32_t TryConnect();
  // Repeats until it is in.
  bool Connect();
  // False when the server has gone before it took everything.
  bool Write(std::string_view bytes);
  // Up to `count` bytes; fewer, when the server disconnects or closes before.
  std::string Read(size_t count);
  // Everything until the server disconnects or closes.
  std::string ReadToEnd();
  void Close();

  // One frame: four length bytes, little-endian, and the payload.
  bool SendFrame(std::string_view payload);
  std::optional<std::string> ReceiveFrame();
  // Connects, sends, receives and closes.
  static std::optional<std::string> Exchange(Machine& machine, std::string_view payload);

 private:
  Machine& machine_;
  const std::wstring name_;
  std::shared_ptr<PipeClientEnd> end_;
};

// The four bytes in front of a payload of this size.
std::string FrameHeader(std::uint32_t length);

}  // namespace sim

#endif  // TAVRIN_TESTS_SIM_PIPE_CLIENT_H_
