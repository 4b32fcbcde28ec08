#include "tests/e2e/harness/service_test.h"

#include <algorithm>
#include <regex>

#include "tests/e2e/harness/waiting.h"

namespace e2e {
namespace {

std::string WithoutReturns(std::string text) {
  std::erase(text, '\r');
  return text;
}

}  // namespace

std::string Refusal(const std::string& text, bool running) {
  return std::string("{\"ok\":false,\"running\":") + (running ? "true" : "false") +
         ",\"error\":\"" + text + "\"}";
}

ServiceTest::ServiceTest(const std::wstring& runtimeName)
    : box(runtimeName), machine(box.machine(), box.root()) {
  WriteAccount(Account());
  WriteText(box.runtime() + L"\\session.json", SessionText(Account().email));
}

// The service goes before the sandbox that its files stand in.
ServiceTest::~ServiceTest() {
  service_.reset();
}

void ServiceTest::WriteAccount(const Account& account) const {
  WriteText(box.runtime() + L"\\account.json", AccountText(account));
}

void ServiceTest::StartService(const Environment& environment) {
  Launch(box.serviceExe(), L"--console --runtime \"" + box.runtime() + L"\"", environment);
}

void ServiceTest::Launch(const std::wstring& executable, const std::wstring& arguments,
                         const Environment& environment) {
  Environment all = environment;
  all.emplace_back(L"TAVRIN_TEST_MACHINE", box.machine());
  service_.reset();
  ++launches_;
  service_ = std::make_unique<ServiceProcess>(executable, arguments, all, OutputPath());
}

std::wstring ServiceTest::OutputPath() const {
  return box.root() + L"\\output " + std::to_wstring(launches_) + L".txt";
}

void ServiceTest::ShutDown() {
  EXPECT_EQ(Ask(R"({"op":"shutdown"})"), kDown);
  EXPECT_EQ(service().WaitForExitCode(), 0U);
}

std::string ServiceTest::Output() const {
  return WithoutReturns(ReadText(OutputPath()));
}

std::string ServiceTest::Errors() const {
  return WithoutReturns(ReadText(OutputPath() + kErrorsEnding));
}

std::vector<std::string> ServiceTest::TraceLabels() const {
  static const std::regex form("(\xEF\xBB\xBF)?(.{28}) \\+ *[0-9]+ms  total +[0-9]+ms\r?");
  std::vector<std::string> labels;
  for (const std::string& line : ReadLines(box.trace())) {
    std::smatch match;
    EXPECT_TRUE(std::regex_match(line, match, form)) << line;
    if (match.size() < 3) continue;
    std::string label = match[2];
    label.erase(label.find_last_not_of(' ') + 1);
    labels.push_back(label);
  }
  return labels;
}

void ExpectEnds(HANDLE process) {
  if (process == nullptr) return;
  EXPECT_EQ(WaitForSingleObject(process, kPatience), WAIT_OBJECT_0);
  CloseHandle(process);
}

}  // namespace e2e
