// Two processes on one runtime directory, say the service and a console program beside it: both
// write to the one log, and no line of either is torn or lost.
#include <algorithm>
#include <thread>

#include "tests/e2e/harness/expect.h"
#include "tests/e2e/harness/service_test.h"
#include "tests/e2e/harness/waiting.h"

namespace e2e {
namespace {

constexpr int kClients = 2;
constexpr int kRequestsEach = 600;

// Longer than a buffer of the C runtime, and told from every other by its beginning.
std::string LongOperation(int client, int request) {
  std::string text = std::to_string(client) + "." + std::to_string(request) + ".";
  text.resize(request % 3 == 0 ? 9000 : 60, static_cast<char>('a' + client));
  return text;
}

class TwoServices : public ServiceTest {
 protected:
  std::wstring SecondOutput() const { return box.root() + L"\\second output.txt"; }
  std::unique_ptr<ServiceProcess> StartSecond() const {
    return std::make_unique<ServiceProcess>(
        box.serviceExe(), L"--console --runtime \"" + box.runtime() + L"\"",
        Environment{{L"TAVRIN_TEST_MACHINE", box.machine()}}, SecondOutput());
  }
  // Both processes serve the pipe, and a client gets whichever is free.
  static void AskFromSeveralThreads() {
    std::vector<std::thread> clients;
    for (int client = 0; client < kClients; ++client) {
      clients.emplace_back([client] {
        for (int i = 0; i < kRequestsEach; ++i) {
          EXPECT_EQ(Ask("{\"op\":\"" + LongOperation(client, i) + "\"}"),
                    Refusal("op not allowed"));
        }
      });
    }
    for (std::thread& client : clients) client.join();
  }
};

std::size_t RequestsIn(const Lines& lines) {
  return static_cast<std::size_t>(
      std::count_if(lines.begin(), lines.end(),
                    [](const std::string& line) { return line.starts_with("ipc op="); }));
}

// The echo of each process says what it has written; together they are what the file has to hold.
TEST_F(TwoServices, WriteTheirLinesWholeIntoOneLog) {
  StartService();
  const std::unique_ptr<ServiceProcess> second = StartSecond();
  WaitUntil("both are up", [this] { return ServiceLog().size() == 6; });
  AskFromSeveralThreads();
  for (int i = 0; i < 2; ++i) EXPECT_EQ(Ask(R"({"op":"shutdown"})"), kDown);
  EXPECT_EQ(service().WaitForExitCode(), 0U);
  EXPECT_EQ(second->WaitForExitCode(), 0U);
  Lines written = SplitLines(Output());
  std::string secondText = ReadText(SecondOutput());
  std::erase(secondText, '\r');
  const Lines byTheSecond = SplitLines(secondText);
  EXPECT_GT(RequestsIn(written), 100U) << "both have to take part";
  EXPECT_GT(RequestsIn(byTheSecond), 100U) << "both have to take part";
  written.insert(written.end(), byTheSecond.begin(), byTheSecond.end());
  Lines log = ServiceLog();
  std::sort(written.begin(), written.end());
  std::sort(log.begin(), log.end());
  EXPECT_EQ(RequestsIn(log), static_cast<std::size_t>(kClients * kRequestsEach + 2));
  EXPECT_TRUE(log == written) << "lines are torn or lost";
}

}  // namespace
}  // namespace e2e
