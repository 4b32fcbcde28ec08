// The reading of one request frame from a pipe that gives its bytes in pieces. The input's first
// byte is the number of pieces that are bounded, the next ones their bounds (0: a read that
// succeeds with nothing); a first byte with its top bit set puts two bytes behind that say how many
// filler bytes follow what the client sends.
#include "src/control/frame.h"

#include <windows.h>

#include <algorithm>
#include <vector>

#include "tests/fuzz/fuzz.h"
#include "tests/sim/pipe_client.h"

using fuzz::Require;

namespace {

struct Exchange {
  std::vector<std::uint32_t> bounds;
  std::string sent;
};

Exchange ReadInput(std::string_view input) {
  Exchange exchange;
  const auto take = [&input] {
    const unsigned byte = input.empty() ? 0u : static_cast<unsigned char>(input.front());
    input.remove_prefix(input.empty() ? 0 : 1);
    return byte;
  };
  const unsigned head = take();
  for (unsigned i = 0; i < head % 16; ++i) {
    exchange.bounds.push_back(take());
  }
  const size_t filler = head < 0x80 ? 0 : take() | take() << 8;
  exchange.sent = input;
  exchange.sent.append(head < 0x80 ? 0 : 4 + filler, 'x');
  return exchange;
}

// What the rules make of it.
struct Verdict {
  bool good = false;
  std::string text;
  size_t read = 0;  // bytes that were taken off the pipe
};

class Judge {
 public:
  explicit Judge(const Exchange& exchange) : exchange_(exchange) {}

  Verdict Run() {
    if (!Take(4)) {
      return verdict_;
    }
    std::uint32_t length = 0;
    for (size_t i = 4; i-- > 0;) {
      length = length << 8 | static_cast<unsigned char>(exchange_.sent[i]);
    }
    if (length == 0 || length > 65536) {
      return verdict_;
    }
    verdict_.good = Take(length);
    verdict_.text = verdict_.good ? exchange_.sent.substr(4, length) : "";
    return verdict_;
  }

 private:
  bool Take(size_t wanted) {
    while (wanted > 0) {
      const size_t left = exchange_.sent.size() - verdict_.read;
      size_t count = std::min(wanted, left);
      if (reads_ < exchange_.bounds.size()) {
        count = std::min<size_t>(count, exchange_.bounds[reads_]);
      }
      ++reads_;
      if (count == 0) {
        return false;
      }
      verdict_.read += count;
      wanted -= count;
    }
    return true;
  }

  const Exchange& exchange_;
  Verdict verdict_;
  size_t reads_ = 0;
};

std::string ReadRest(HANDLE pipe) {
  static std::vector<char> room(1 << 17);
  DWORD count = 0;
  const bool any =
      ReadFile(pipe, room.data(), static_cast<DWORD>(room.size()), &count, nullptr) != FALSE;
  return {room.data(), any ? count : 0};
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, size_t size) {
  static fuzz::SharedMachine shared;
  sim::Machine& machine = shared.Get([](sim::Machine&) {});
  const Exchange exchange = ReadInput(fuzz::Bytes(data, size));
  const HANDLE pipe = CreateNamedPipeW(L"\\\\.\\pipe\\TavrinService", PIPE_ACCESS_DUPLEX, 0, 8,
                                       1 << 18, 1 << 18, 0, nullptr);
  sim::PipeClient client(machine);
  Require(client.TryConnect() == 0 && client.Write(exchange.sent), "the client gets in");
  client.Close();
  for (const std::uint32_t bound : exchange.bounds) {
    machine.pipes.LimitNextTransfer(bound);
  }

  const Verdict wanted = Judge(exchange).Run();
  std::string text = "before";
  const bool good = vpn::ReadFrame(pipe, text);
  Require(good == wanted.good, "a frame is good when its length is and all of it came");
  Require(!good || text == wanted.text, "the payload is what was sent");

  for (size_t i = 0; i < exchange.bounds.size(); ++i) {
    (void)machine.pipes.TakeLimit(0);  // those that no read used
  }
  Require(ReadRest(pipe) == exchange.sent.substr(wanted.read), "nothing more was read");
  (void)CloseHandle(pipe);
  return 0;
}
