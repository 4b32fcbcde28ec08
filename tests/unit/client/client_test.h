// The base of the client's tests: a machine with the service installed beside the client, a local
// account, and a service whose replies the test scripts on the machine's clock.
#ifndef TAVRIN_TESTS_UNIT_CLIENT_CLIENT_TEST_H_
#define TAVRIN_TESTS_UNIT_CLIENT_CLIENT_TEST_H_

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "tests/sim/fixture.h"

namespace unit {

inline constexpr wchar_t kTrace[] = L"C:\\Program Files\\Tavrin\\connect-timing.log";
inline constexpr wchar_t kRuntime[] = L"C:\\Program Files\\Tavrin\\runtime";

inline constexpr char kUpReply[] = R"({"ok":true,"running":true,"error":""})";
inline constexpr char kDownReply[] = R"({"ok":true,"running":false,"error":""})";

// A connect of 612 ms as the service writes it, without the byte-order mark.
std::string RecordedConnect();
// Its first `count` lines.
std::string RecordedLines(size_t count);

// The service's end of the pipe. Times are virtual milliseconds from now.
class ScriptedService {
 public:
  explicit ScriptedService(sim::Machine& machine);

  // Serves somebody else until then.
  void IsBusyFor(std::uint64_t milliseconds);
  void RepliesAfter(std::uint64_t milliseconds, const std::string& payload);
  // As they are, not made a frame.
  void SendsBytesAfter(std::uint64_t milliseconds, const std::string& bytes);
  void HangsUpAfter(std::uint64_t milliseconds);
  // What has been asked so far, without the frame's head.
  std::string Request() const;

 private:
  sim::Machine& machine_;
  std::shared_ptr<sim::PipeServerEnd> server_;
};

class ClientTest : public sim::MachineTest {
 protected:
  ClientTest();

  // The whole program, with its exit code.
  int Run(const std::vector<std::wstring>& arguments);
  std::string Out() const { return machine.console.Output(); }
  std::string Err() const { return machine.console.Errors(); }
  void UseTerminal(int columns = 100);

  void PutAccount();
  void AppendTraceAfter(std::uint64_t milliseconds, const std::string& lines);
};

}  // namespace unit

#endif  // TAVRIN_TESTS_UNIT_CLIENT_CLIENT_TEST_H_
