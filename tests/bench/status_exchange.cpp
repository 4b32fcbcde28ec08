// For status_instructions.sh, which counts what these take:
//   status_exchange status COUNT   the pipe server answers so many requests for the status
//   status_exchange log COUNT      as many lines of the log as such a request writes
//   status_exchange scan COUNT     the bytes of request and reply are scanned plainly
#include <cstdlib>
#include <string>
#include <string_view>

#include "src/control/pipe_server.h"
#include "src/runtime/process_state.h"
#include "src/runtime/service_log.h"
#include "tests/bench/rounds.h"
#include "tests/unit/background_server.h"

namespace {

constexpr char kRequest[] = R"({"op":"status"})";
constexpr char kReply[] = R"({"ok":true,"running":false,"error":""})";

}  // namespace

// The least that looking at each byte takes: is it one that is looked for? Eight at a time would be
// fewer instructions, and no longer plain.
extern "C" __attribute__((noinline)) std::size_t PlainScan(const char* bytes, std::size_t size) {
  std::size_t quotes = 0;
#pragma clang loop vectorize(disable) unroll(disable)
  for (std::size_t i = 0; i < size; ++i) {
    quotes += bytes[i] == '"' ? 1 : 0;
  }
  return quotes;
}

namespace {

bool Status(sim::Machine& machine, int count) {
  unit::BackgroundServer server(machine, [] {
    vpn::ServeControlPipe();
    return 0;
  });
  bool good = true;
  for (int i = 0; i < count; ++i) {
    good = sim::PipeClient::Exchange(machine, kRequest) == kReply && good;
  }
  vpn::WakeControlPipe();
  return server.Ends() && good;
}

bool Log(sim::Machine& machine, int count) {
  for (int i = 0; i < count; ++i) {
    vpn::WriteLog(L"ipc op=status");
  }
  return machine.files.Read(L"C:\\run\\tavrin-service.log").has_value();
}

bool Scan(int count) {
  const std::string bytes = sim::FrameHeader(sizeof kRequest - 1) + kRequest +
                            sim::FrameHeader(sizeof kReply - 1) + kReply;
  std::size_t quotes = 0;
  for (int i = 0; i < count; ++i) {
    quotes += PlainScan(bytes.data(), bytes.size());
    bench::Keep(bytes);  // or one scan would serve for all
  }
  return quotes == 12U * static_cast<std::size_t>(count);
}

}  // namespace

int main(int argc, char** argv) {
  const std::string_view mode = argc == 3 ? argv[1] : "";
  const int count = argc == 3 ? std::atoi(argv[2]) : 0;
  const sim::InstalledMachine machine;
  machine->files.PutDirectory(L"C:\\run");
  vpn::SetRuntimeDir(L"C:\\run");
  const bool good = mode == "status" ? Status(*machine, count)
                    : mode == "log"  ? Log(*machine, count)
                                     : mode == "scan" && Scan(count);
  return good ? EXIT_SUCCESS : EXIT_FAILURE;
}
