#include "tests/e2e/panel/harness/panel.h"

#include <cstdlib>
#include <stdexcept>

#include "tests/e2e/panel/harness/raw_http.h"

namespace e2e {
namespace {

std::uint16_t PortFromEnvironment(const char* name) {
  const char* const value = std::getenv(name);
  const int port = value == nullptr ? 0 : std::atoi(value);
  if (port == 0) throw std::runtime_error(std::string("no test panel: set ") + name);
  return static_cast<std::uint16_t>(port);
}

// What the platform adds by itself.
bool IsPlatformHeader(const std::string& line) {
  for (const char* name : {"Host: ", "Connection: ", "Content-Length: "}) {
    if (line.starts_with(name)) return true;
  }
  return false;
}

}  // namespace

TestPanel::TestPanel()
    : http_(PortFromEnvironment("TAVRIN_TEST_PANEL_HTTP")),
      https_(PortFromEnvironment("TAVRIN_TEST_PANEL_HTTPS")),
      closed_(PortFromEnvironment("TAVRIN_TEST_PANEL_CLOSED")),
      deaf_(PortFromEnvironment("TAVRIN_TEST_PANEL_DEAF")),
      admin_(PortFromEnvironment("TAVRIN_TEST_PANEL_ADMIN")) {
  Ask("POST", "/reset");
}

Json TestPanel::Ask(const std::string& method, const std::string& target, const Json& body) const {
  const RawAnswer answer =
      RawExchange(admin_, method, target, "", body.is_null() ? "" : body.dump());
  if (answer.status != 200) {
    throw std::runtime_error("the test panel refuses " + target + ": " + answer.body);
  }
  return Json::parse(answer.body);
}

Json TestPanel::State() const {
  return Ask("GET", "/state");
}

void TestPanel::Set(const Json& parts) const {
  Ask("POST", "/state", parts);
}

void TestPanel::SetUser(const Json& fields) const {
  Json users = State()["users"];
  for (const auto& [name, value] : fields.items()) users[0].at(name) = value;
  Set({{"users", users}});
}

void TestPanel::Behave(const Json& rule) const {
  Ask("POST", "/behave", rule);
}

void TestPanel::Answer(const std::string& path, int status, const std::string& body) const {
  Behave({{"path", path}, {"do", "answer"}, {"status", status}, {"body", body}});
}

void TestPanel::Pay(const std::string& tradeNo) const {
  Ask("POST", "/pay", {{"trade_no", tradeNo}});
}

void TestPanel::SetTls(const std::string& mode) const {
  Ask("POST", "/tls", {{"mode", mode}});
}

void TestPanel::SetPort(const std::string& name, bool open) const {
  Ask("POST", "/port", {{"name", name}, {"open", open}});
}

std::string TestPanel::Authority() const {
  return RawExchange(admin_, "GET", "/authority", "", "").body;
}

std::vector<ReceivedRequest> TestPanel::Requests() const {
  std::vector<ReceivedRequest> requests;
  for (const Json& row : Ask("GET", "/requests")) {
    requests.push_back(
        {row["listener"], row["method"], row["target"], row["headers"], row["body"]});
  }
  return requests;
}

void TestPanel::ForgetRequests() const {
  Ask("POST", "/requests/forget");
}

Lines TestPanel::Sequence() const {
  Lines lines;
  for (const ReceivedRequest& request : Requests()) {
    std::string line = request.method + " " + request.target;
    if (!request.body.empty()) line += " " + request.body;
    lines.push_back(line);
  }
  return lines;
}

Lines OwnHeaders(const ReceivedRequest& request) {
  Lines own;
  for (const std::string& line : request.headers) {
    if (!IsPlatformHeader(line)) own.push_back(line);
  }
  return own;
}

}  // namespace e2e
